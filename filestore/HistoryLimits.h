#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// How much the program history keeps: so many versions of each program, so many bytes in all;
// beyond either the oldest versions go first. Set in "History.cfg" in the system directory, two
// labelled lines and the end marker:
//   Versions Kept Per Program                    : 20
//   History Size Limit (MB)                      : 500
struct HistoryLimits {
    int versions = 20;
    qint64 bytes = qint64(500) << 20;
};

// The file name of the limits, in the system directory.
inline const QString HistoryLimitsName = QStringLiteral("History.cfg");

// The limits of the file; a missing file, or a value that is not a positive number, gives the
// default of that value. The size may be a fraction of a megabyte; 0 versions switch the history
// off.
[[nodiscard]] HistoryLimits ReadHistoryLimits(const FileSystem& files, const QString& path);

// The lines of the file for the limits, end marker included.
[[nodiscard]] QStringList HistoryLimitsLines(const HistoryLimits& limits);

} // namespace kestrova
