#include "comms/CommParsers.h"

#include "platform/Blanks.h"
#include "platform/ScreenText.h"
#include "settings/SettingsLine.h"

#include <cmath>
#include <limits>

namespace kestrova {

namespace {

// The character of a code as it is read from a settings file. Codes are bytes, and the
// character is the one that byte is everywhere else: 128 is the byte 0x80, the euro sign. A code
// outside 0..255 would stand for another character than the one written, and is refused.
QChar CodeCharacter(const QString& number) {
    const int code = RoundedNumber(number);
    if (code < 0 || code > 255)
        throw OverflowError(QString(), QStringLiteral("character code %1 is not 0 to 255").arg(code));
    return ScreenCharOf(quint8(code));
}

// The longest sequence a settings line may give. A count beyond it is a slip of the keyboard
// ("50000000,0"), not a leader any control waits for: it is refused instead of filling memory.
constexpr qsizetype LongestSequence = 65535;

} // namespace

int HandshakeCode(const QString& value) {
    const QString v = value.toUpper();
    int code = 0;
    if (v.contains(QLatin1String("XON")) || v.contains(QLatin1String("XOFF")))
        code += 1;
    if (v.contains(QLatin1String("RTS")) || v.contains(QLatin1String("CTS")))
        code += 2;
    return code;
}

bool HandshakeWantsDtr(const QString& value) {
    return value.toUpper().contains(QLatin1String("DTR"));
}

StartMode ParseStartMode(const QString& value) {
    const QString v = value.toUpper();
    if (v.contains(QLatin1String("AUTO")))
        return StartMode::Auto;
    if (v.contains(QLatin1String("FORCE")) || v.contains(QLatin1String("IMMEDIATE")))
        return StartMode::Immediate;
    if (v.contains(QLatin1String("EVENT")))
        return StartMode::Event;
    if (v.contains(QLatin1String("DSR")))
        return StartMode::Dsr;
    if (v.contains(QLatin1String("CTS")))
        return StartMode::Cts;
    if (v.contains(QLatin1String("ANY")))
        return StartMode::Any;
    return StartMode::Manual;
}

QString ParseStartCharacter(const QString& value) {
    const QString v = TrimBlanks(value);
    if (v.isEmpty())
        return {};
    const QChar first = v.at(0);
    if (first.unicode() >= '0' && first.unicode() <= '9')
        return QString(CodeCharacter(v));
    return QString(first);
}

QString ParseSequence(const QString& value) {
    QString rest = TrimBlanks(value);
    QString result;
    while (!rest.isEmpty() && rest.contains(u',')) {
        qsizetype comma = rest.indexOf(u',');
        const int count = RoundedNumber(rest.left(comma));
        rest = TrimBlanks(rest.mid(comma + 1));
        QString codeText;
        comma = rest.indexOf(u',');
        if (comma >= 0) {
            codeText = rest.left(comma);
            rest = TrimBlanks(rest.mid(comma + 1));
        } else {
            codeText = rest;
            rest.clear();
        }
        const QChar c = CodeCharacter(codeText);
        if (count > LongestSequence - result.size())
            throw OverflowError(QString(), QStringLiteral("the sequence \"%1\"").arg(TrimBlanks(value)));
        if (count > 0)
            result += QString(count, c);
    }
    return result;
}

QList<QChar> ParseCharacterList(const QString& value) {
    QList<QChar> list;
    const QString v = TrimBlanks(value);
    if (v.isEmpty())
        return list;
    for (const QString& item : v.split(u','))
        list << CodeCharacter(item);
    return list;
}

int RoundedNumber(const QString& value) {
    // Halves go to the even neighbour, as the settings' numbers have always been rounded.
    const double n = std::nearbyint(LeadingNumber(value));
    if (!(n >= double(std::numeric_limits<int>::min()) && n <= double(std::numeric_limits<int>::max())))
        throw OverflowError(QString(), QStringLiteral("the number \"%1\"").arg(TrimBlanks(value)));
    return int(n);
}

} // namespace kestrova
