#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace kestrova {

// "Work.lkp", the name-to-number table that a lookup export keeps in its target directory: one
// line per program, the name, a comma and the number under which the program is stored, ended
// by "******". Lines without a comma or with a number below 1 are kept but never match.
struct LookupLine {
    QString text;   // the line as it stands in the file, without its line end
    QString name;   // the trimmed text before the first comma
    int number = 0; // the integer value of the text after it; 0 when there is none
    [[nodiscard]] bool Matches(const QString& wanted) const {
        return number >= 1 && name.compare(wanted, Qt::CaseInsensitive) == 0;
    }
};

// The lines of a table held in bytes, up to "******" or the end. Any bytes at all are read
// without harm: numbers too large for the system's counters never match.
[[nodiscard]] QList<LookupLine> ParseLookupTable(const QByteArray& bytes);

// The table of a directory ("C:\Out\"); empty when it has none.
[[nodiscard]] QList<LookupLine> ReadLookupTable(const FileSystem& files, const QString& directory);

// The index of the first line that matches the name, or -1.
[[nodiscard]] int FindLookupEntry(const QList<LookupLine>& lines, const QString& name);

// A table line as written: the name, ",", then the number with one blank before and one after.
[[nodiscard]] QString LookupEntryLine(const QString& name, int number);

// Rewrites the table of a directory with the entry of the name: the line at index `replace`
// becomes the entry line, or with -1 the entry line is added at the end. The new text is written
// whole to "V3Temp.lkp" in the program directory, then copied over the old table, which it
// replaces only once it is complete; if that copy fails the old table stays, the complete new
// text stays in "V3Temp.lkp", and the error says so.
void RewriteLookupTable(FileSystem& files, const QString& programPath, const QString& directory,
                        const QList<LookupLine>& lines, int replace, const QString& entryLine);

inline const QString LookupTableName = QStringLiteral("Work.lkp");
inline const QString LookupTempName = QStringLiteral("V3Temp.lkp");

} // namespace kestrova
