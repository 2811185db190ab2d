#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// The line that closes every file the front end writes and ends every list.
inline const QString EndMarker = QStringLiteral("******");

// Rewrites a settings file whole: the lines in order, then the end marker. A failed write
// leaves the old file as it was.
void WriteSettingsFile(FileSystem& files, const QString& path, const QStringList& lines);

// Whether the file at path is byte for byte what WriteSettingsFile would write of lines. False
// for a missing or unreadable file.
[[nodiscard]] bool SettingsFileHolds(const FileSystem& files, const QString& path, const QStringList& lines);

// Line 1 of a one-line settings file, trimmed. A file left empty by hand (the Data Files menu
// creates missing files empty) has an empty first line. A missing file is "File not found".
[[nodiscard]] QString ReadFirstLine(const FileSystem& files, const QString& path);

// The value of line 1 (after its colon), upper-cased: how the machine data files' keywords are read.
[[nodiscard]] QString ReadFirstKeyword(const FileSystem& files, const QString& path);

// A labelled line as the front end writes it: the label padded to 45 characters, ": ", the value.
[[nodiscard]] QString LabelledLine(const QString& label, const QString& value);

} // namespace kestrova
