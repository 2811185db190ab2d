#pragma once

#include <QByteArray>
#include <QString>

namespace kestrova {

// Single-byte text as the screen shows it: Windows-1252. The five codes that page leaves
// undefined stand for themselves, so that every byte comes back as it was.
[[nodiscard]] QString ScreenTextOf(const QByteArray& bytes);
// The bytes of a text shown on screen; a character the page cannot hold becomes "?".
[[nodiscard]] QByteArray BytesOfScreenText(const QString& text);

} // namespace kestrova
