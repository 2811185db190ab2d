#include "settings/SettingsFile.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

void WriteSettingsFile(FileSystem& files, const QString& path, const QStringList& lines) {
    WriteAllLines(files, path, QStringList(lines) << EndMarker);
}

bool SettingsFileHolds(const FileSystem& files, const QString& path, const QStringList& lines) {
    QByteArray expected;
    for (const QString& line : lines)
        expected += ToBytes(line) + "\r\n";
    expected += ToBytes(EndMarker) + "\r\n";
    try {
        return files.IsFile(path) && files.Length(path) == expected.size() &&
               ReadAllBytes(files, path) == expected;
    } catch (const SystemError&) {
        return false;
    }
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
