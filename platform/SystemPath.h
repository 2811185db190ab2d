#pragma once

#include <QChar>
#include <QString>
#include <QStringList>

namespace kestrova {

// A path in the system's own notation, taken apart: a drive letter and the names below its root.
struct SystemPath {
    QChar drive;            // upper case; null when the text named no drive
    bool rooted = false;    // the names start at the drive's root
    QStringList components; // "." dropped; ".." kept only where it climbs above the start

    // Splits "C:\A\B", "\A", "A\B", "C:A"; "/" counts as a separator too.
    [[nodiscard]] static SystemPath Parse(const QString& text);
    // "C:\A\B" for a rooted path with a drive.
    [[nodiscard]] QString Text() const;
};

// A settings value written as a host absolute path ("/srv/kestrova") names the same place on
// drive Z: ("Z:\srv\kestrova"); any other value is returned as it is.
[[nodiscard]] QString FromHostNotation(const QString& value);

} // namespace kestrova
