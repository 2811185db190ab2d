#include "settings/MachineSeeding.h"

#include "platform/SystemPath.h"
#include "settings/SettingsFile.h"

namespace kestrova {

QString NestingOffLine() {
    return LabelledLine(QStringLiteral("Nesting ? (Yes / No)"), QStringLiteral("No"));
}

void CheckNesting(Session& session) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    g.NestingState = 0;
    const QString nestingCfg = g.ProgramPath + QStringLiteral("Nesting.cfg");
    if (files.Exists(nestingCfg)) {
        g.NestingState = 1;
        if (files.Exists(g.ProgramPath + QStringLiteral("Kestrnst.exe")) && g.CamPackagesPresent) {
            const QString required = FromHostNotation(ReadFirstLine(files, nestingCfg));
            if (required != EndMarker && !required.isEmpty() && files.Exists(required))
                g.NestingState = 2;
        }
    }
    if (g.NestingState == 2) {
        const QString nst = MachineFile(g, QStringLiteral("nst"));
        if (!files.IsFile(nst) || files.Length(nst) < 1) {
            // A machine seen for the first time starts with nesting off.
            WriteSettingsFile(files, nst, {NestingOffLine()});
            g.NestingState = 1;
        } else if (ReadFirstKeyword(files, nst) == QLatin1String("NO")) {
            g.NestingState = 1;
        }
    }
    if (g.NestingState > 1 && !files.Exists(g.SystemPath + QStringLiteral("Nesting")))
        files.MakeDirectory(g.SystemPath + QStringLiteral("Nesting"));
}

void SeedExportSettings(Session& session) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    const QString xpt = MachineFile(g, QStringLiteral("xpt"));
    if (files.Exists(xpt))
        return;
    const QString exportCfg = g.ProgramPath + QStringLiteral("Export.cfg");
    if (files.Exists(exportCfg))
        files.Copy(exportCfg, xpt);
    else
        WriteSettingsFile(files, xpt,
                          {QStringLiteral("0"), QStringLiteral("prg"), QStringLiteral("3"),
                           QStringLiteral("2"), g.SystemPath.left(3)});
}

void SeedStockList(Session& session) {
    const GlobalSettings& g = session.settings;
    if (!session.files.Exists(g.StockListFile))
        WriteSettingsFile(session.files, g.StockListFile, {});
}

} // namespace kestrova
