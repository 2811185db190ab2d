// A labelled settings line as a person may leave it, and the numbers read from such values.
#include "FuzzSupport.h"
#include "platform/Blanks.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

#include <cmath>

using namespace kestrova;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString line = FromBytes(fuzz::Bytes(data, size));

    const QString value = ValueOfLine(line);
    const qsizetype colon = line.indexOf(u':');
    KESTROVA_FUZZ_CHECK(HasColon(line) == (colon >= 0));
    if (colon < 0)
        KESTROVA_FUZZ_CHECK(value == TrimBlanks(line));
    else
        KESTROVA_FUZZ_CHECK(value == TrimBlanks(line.mid(colon + 1)));
    KESTROVA_FUZZ_CHECK(value == TrimBlanks(value));

    // What the front end writes, it reads back: the value of a labelled line is its value.
    const QString label = line.left(colon < 0 ? line.size() : colon);
    KESTROVA_FUZZ_CHECK(ValueOfLine(LabelledLine(label, value)) == value);

    const double number = LeadingNumber(value);
    KESTROVA_FUZZ_CHECK(std::isfinite(number));
    if (!value.isEmpty() && value.at(0).unicode() >= 'A')
        KESTROVA_FUZZ_CHECK(number == 0.0); // text that does not start with a number
    try {
        const Int16 n = LeadingInt16(value);
        KESTROVA_FUZZ_CHECK(double(int(n)) == std::trunc(number));
    } catch (const OverflowError& e) {
        KESTROVA_FUZZ_CHECK(std::fabs(std::trunc(number)) > 32767.0);
        KESTROVA_FUZZ_CHECK(e.text().startsWith(QStringLiteral("Overflow")));
    }
    return 0;
}
