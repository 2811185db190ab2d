#include "exchange/ExportSettings.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

namespace kestrova {

namespace {

int LineNumber(const QStringList& lines, int index, int fallback, int low, int high) {
    bool ok = false;
    const int value = TrimBlanks(lines.value(index)).toInt(&ok);
    return ok && value >= low && value <= high ? value : fallback;
}

} // namespace

ExportSettings ReadExportSettings(const FileSystem& files, const GlobalSettings& g) {
    ExportSettings settings;
    const QString path = MachineFile(g, QStringLiteral("xpt"));
    if (!files.IsFile(path))
        return settings;
    const QStringList lines = ReadAllLines(files, path);
    settings.format = ExportFormat(LineNumber(lines, 0, 0, 0, 2));
    if (lines.size() > 1 && TrimBlanks(lines.at(1)) != EndMarker)
        settings.extension = TrimBlanks(lines.at(1));
    settings.mode = LineNumber(lines, 2, settings.mode, 1, 3);
    settings.list = LineNumber(lines, 3, settings.list, -32768, 32767);
    if (lines.size() > 4 && TrimBlanks(lines.at(4)) != EndMarker)
        settings.target = TrimBlanks(lines.at(4));
    return settings;
}

void WriteExportSettings(FileSystem& files, const GlobalSettings& g, const ExportSettings& settings) {
    WriteSettingsFile(files, MachineFile(g, QStringLiteral("xpt")),
                      {QString::number(int(settings.format)), settings.extension,
                       QString::number(settings.mode), QString::number(settings.list), settings.target});
}

} // namespace kestrova
