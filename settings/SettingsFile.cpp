#include "settings/SettingsFile.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

void WriteSettingsFile(FileSystem& files, const QString& path, const QStringList& lines) {
    WriteAllLines(files, path, QStringList(lines) << EndMarker);
}

QString ReadFirstLine(const FileSystem& files, const QString& path) {
    LineReader reader(files, path);
    return reader.AtEnd() ? QString() : TrimBlanks(reader.ReadLine());
}

QString ReadFirstKeyword(const FileSystem& files, const QString& path) {
    return ValueOfLine(ReadFirstLine(files, path)).toUpper();
}

QString LabelledLine(const QString& label, const QString& value) {
    return label.leftJustified(45, u' ') + QStringLiteral(": ") + value;
}

} // namespace kestrova
