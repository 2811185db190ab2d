#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QChar>
#include <QString>

namespace kestrova {

// Single-byte text as the screen shows it: Windows-1252. The five codes that page leaves
// undefined stand for themselves, so that every byte comes back as it was. Every text the
// system reads from a file or a serial line, or writes to one, goes through this one page:
// a byte read one way and written another would change on the way.
[[nodiscard]] QString ScreenTextOf(QByteArrayView bytes);
// The bytes of a text shown on screen; a character the page cannot hold becomes "?".
[[nodiscard]] QByteArray BytesOfScreenText(QStringView text);

// The character one byte shows as: a character code of the communication settings (0..255)
// stands for the byte of that code.
[[nodiscard]] QChar ScreenCharOf(quint8 byte);
// The byte a character stands for; -1 when the page has none.
[[nodiscard]] int ByteOfScreenChar(QChar c);

} // namespace kestrova
