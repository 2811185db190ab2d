#include "platform/ScreenText.h"

#include <array>

namespace kestrova {

namespace {

// Codes 0x80..0x9F of Windows-1252; the undefined ones keep their own code.
constexpr std::array<char16_t, 32> HighControls{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

QChar ScreenCharOf(quint8 byte) {
    return (byte >= 0x80 && byte <= 0x9F) ? QChar(HighControls[byte - 0x80]) : QChar(byte);
}

int ByteOfScreenChar(QChar c) {
    const char16_t code = c.unicode();
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF))
        return code;
    for (std::size_t k = 0; k < HighControls.size(); ++k)
        if (HighControls[k] == code)
            return int(0x80 + k);
    return -1;
}

QString ScreenTextOf(QByteArrayView bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (qsizetype i = 0; i < bytes.size(); ++i)
        out[i] = ScreenCharOf(quint8(bytes[i]));
    return text;
}

QByteArray BytesOfScreenText(QStringView text) {
    QByteArray bytes(text.size(), Qt::Uninitialized);
    char* out = bytes.data();
    for (qsizetype i = 0; i < text.size(); ++i) {
        const int byte = ByteOfScreenChar(text[i]);
        out[i] = byte < 0 ? '?' : char(byte);
    }
    return bytes;
}

} // namespace kestrova
