// A communication settings file as a person may leave it, read by the send, the receive and
// the background readers, and each of its values through the small parsers.
#include "FuzzSupport.h"
#include "comms/CommParsers.h"
#include "comms/CommSettings.h"
#include "platform/Blanks.h"
#include "platform/ScreenText.h"
#include "settings/SettingsLine.h"

using namespace kestrova;

namespace {

void CheckError(const SystemError& e, const QString& file) {
    KESTROVA_FUZZ_CHECK(e.kind() == SystemError::Kind::InputPastEnd ||
                        e.kind() == SystemError::Kind::Overflow);
    KESTROVA_FUZZ_CHECK(e.text().contains(file, Qt::CaseInsensitive));
}

void CheckValue(const QString& value) {
    const int code = HandshakeCode(value);
    KESTROVA_FUZZ_CHECK(code >= 0 && code <= 3);
    (void)ParseStartMode(value);
    try {
        KESTROVA_FUZZ_CHECK(ParseStartCharacter(value).size() <= 1);
    } catch (const OverflowError&) {
        // A code beyond the 32-bit range; the readers name the file with it.
    }
    try {
        const QList<QChar> list = ParseCharacterList(value);
        KESTROVA_FUZZ_CHECK(TrimBlanks(value).isEmpty() ? list.isEmpty()
                                                        : list.size() == value.count(u',') + 1);
        for (const QChar c : list)
            KESTROVA_FUZZ_CHECK(ByteOfScreenChar(c) >= 0);
    } catch (const OverflowError&) {
    }
    try {
        const QString sequence = ParseSequence(value);
        KESTROVA_FUZZ_CHECK(sequence.size() <= 65535);
        if (!value.contains(u','))
            KESTROVA_FUZZ_CHECK(sequence.isEmpty());
    } catch (const OverflowError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ScratchDrive drive;
    const QByteArray bytes = fuzz::Bytes(data, size);
    drive.Put(QStringLiteral("M1.cms"), bytes);
    drive.Put(QStringLiteral("Kestrova.cms"), bytes);

    try {
        const SendSettings s = ReadSendSettings(drive.Files(), QStringLiteral("C:\\M1.cms"));
        KESTROVA_FUZZ_CHECK(s.Handshaking >= 0 && s.Handshaking <= 3);
        KESTROVA_FUZZ_CHECK(s.StartCharacter.size() <= 1);
    } catch (const SystemError& e) {
        CheckError(e, QStringLiteral("M1.cms"));
    }
    try {
        const ReceiveSettings s = ReadReceiveSettings(drive.Files(), QStringLiteral("C:\\M1.cms"));
        KESTROVA_FUZZ_CHECK(s.ReceiveTimeOut >= 0 && s.ReceiveTimeOut <= 65535);
        KESTROVA_FUZZ_CHECK(s.Settings.count(u',') >= 3);
    } catch (const SystemError& e) {
        CheckError(e, QStringLiteral("M1.cms"));
    }
    try {
        const BackgroundSettings s = ReadBackgroundSettings(drive.Files(), QStringLiteral("C:\\"));
        KESTROVA_FUZZ_CHECK(s.Enabled == (s.Port >= 1));
        KESTROVA_FUZZ_CHECK(s.Handshaking >= 0 && s.Handshaking <= 3);
    } catch (const SystemError& e) {
        // The background reader never fails on a short file.
        KESTROVA_FUZZ_CHECK(e.kind() == SystemError::Kind::Overflow);
        CheckError(e, QStringLiteral("Kestrova.cms"));
    }

    // Each line's value through every parser (the value is at most one line).
    for (const QString& line : FromBytes(bytes).split(u'\n').mid(0, 32))
        CheckValue(ValueOfLine(line));
    return 0;
}
