#include "settings/KestrovaCfg.h"

#include "platform/Blanks.h"
#include "platform/SystemPath.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

QString DirectoryValue(const QString& line) {
    QString value = FromHostNotation(TrimBlanks(line));
    if (!value.endsWith(u'\\'))
        value += u'\\';
    return value;
}

} // namespace

void ReadKestrovaCfg(Session& session) {
    GlobalSettings& g = session.settings;
    LineReader reader(session.files, QStringLiteral("Kestrova.cfg"));
    g.SystemPath = DirectoryValue(reader.ReadLine());
    g.SetupPath = DirectoryValue(reader.ReadLine());
    g.RootPath = DirectoryValue(reader.ReadLine());
    const QString number = TrimBlanks(reader.ReadLine());
    try {
        g.MachineNumber = LeadingInt16(number);
    } catch (const OverflowError&) {
        throw OverflowError(reader.Path(), QStringLiteral("machine number \"%1\"").arg(number));
    }
    if (g.MachineNumber < 1)
        g.MachineNumber = 1;
    g.CurrentDir = TrimBlanks(reader.ReadLine());
    if (HasColon(g.CurrentDir))
        g.CurrentDir.clear();
}

void WriteKestrovaCfg(Session& session) {
    const GlobalSettings& g = session.settings;
    const QString path = g.ProgramPath + QStringLiteral("Kestrova.cfg");
    const QStringList lines{g.SystemPath, g.SetupPath, g.RootPath, QString::number(g.MachineNumber),
                            g.CurrentDir};
    // Every start selects the current directory again, which the file already names: a rewrite
    // that changes no byte would only hold the window back for a flush to the disk.
    if (SettingsFileHolds(session.files, path, lines))
        return;
    WriteSettingsFile(session.files, path, lines);
}

} // namespace kestrova
