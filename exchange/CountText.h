#pragma once

#include <QString>

namespace kestrova {

// The count messages: "1 File Exported !", "3 Files Exported !", "No Files Exported !".
[[nodiscard]] inline QString CountText(int count, const QString& one, const QString& many,
                                       const QString& tail) {
    if (count == 1)
        return QStringLiteral("1 ") + one + u' ' + tail;
    return (count == 0 ? QStringLiteral("No") : QString::number(count)) + u' ' + many + u' ' + tail;
}

} // namespace kestrova
