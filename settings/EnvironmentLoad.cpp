#include "settings/EnvironmentLoad.h"

#include "platform/Blanks.h"
#include "platform/PdfReader.h"
#include "platform/SystemPath.h"
#include "settings/KestrovaCfg.h"
#include "settings/MachineList.h"
#include "settings/SettingsFile.h"

namespace kestrova {

namespace {

// The first run keeps the delivered data files as the defaults that "Restore Defaults" brings back.
void SeedDefaultDataFiles(Session& session) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    const QString data = g.SetupPath + QStringLiteral("Data\\");
    const QString defaults = data + QStringLiteral("Default");
    if (files.Exists(defaults))
        return;
    files.MakeDirectory(defaults);
    for (const QString& name : files.List(data, QStringLiteral("*.*"), EntryKinds::Files))
        files.Copy(data + name, defaults + u'\\' + name);
}

void FindManuals(Session& session, const QStringList& pdfSearchDirs) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    const QString acrobatCfg = g.ProgramPath + QStringLiteral("Acrobat.cfg");
    g.AcrobatPath.clear();
    if (files.Exists(acrobatCfg)) {
        const QString line = FromHostNotation(ReadFirstLine(files, acrobatCfg));
        if (line != EndMarker && line.size() > 6)
            g.AcrobatPath = line;
    } else {
        g.AcrobatPath = FindPdfReader(files, pdfSearchDirs);
        WriteSettingsFile(files, acrobatCfg, {g.AcrobatPath});
    }
    if (!g.AcrobatPath.isEmpty() && !files.IsFile(g.AcrobatPath))
        g.AcrobatPath.clear();

    const QString manualsCfg = g.ProgramPath + QStringLiteral("Manuals.cfg");
    g.ManualsPath = g.ProgramPath + QStringLiteral("Manuals\\");
    if (files.Exists(manualsCfg)) {
        QString line = FromHostNotation(ReadFirstLine(files, manualsCfg));
        if (line != EndMarker && line.size() > 1) {
            if (!line.endsWith(u'\\'))
                line += u'\\';
            g.ManualsPath = line;
        }
    } else {
        WriteSettingsFile(files, manualsCfg, {g.ManualsPath});
    }
    if (!g.ManualsPath.isEmpty()) {
        files.MakeDirectoryIfMissing(g.ManualsPath.chopped(1));
        if (files.List(g.ManualsPath, QStringLiteral("*.pdf"), EntryKinds::Files).isEmpty())
            g.ManualsPath.clear();
    }
    g.ManualsAvailable = !g.ManualsPath.isEmpty() && !g.AcrobatPath.isEmpty() &&
                         files.Exists(g.ManualsPath + QStringLiteral("Frontend.pdf"));
}

} // namespace

void LoadEnvironment(Session& session, const QStringList& pdfSearchDirs) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    ReadKestrovaCfg(session);
    g.ProgramPath = g.SystemPath;
    g.RevSubsPath = g.SetupPath + QStringLiteral("RevSubs\\");
    g.ProgramDrive = TrimBlanks(g.ProgramPath.left(3));

    g.CamPackagesPresent = files.Exists(g.ProgramPath + QStringLiteral("Kestrdrw.exe")) &&
                           files.Exists(g.ProgramPath + QStringLiteral("Kestrprg.exe"));

    g.LogoPicturePath.clear();
    const QString logoCfg = g.ProgramPath + QStringLiteral("Kestrlogo.cfg");
    if (files.Exists(logoCfg))
        g.LogoPicturePath = FromHostNotation(ReadFirstLine(files, logoCfg));

    g.ReversePresent = files.Exists(g.ProgramPath + QStringLiteral("Kestrrvs.exe")) && g.CamPackagesPresent;

    const MachineList machines = ReadMachineList(files, g.ProgramPath + QStringLiteral("Machine.lst"));
    g.MachineTable = machines.table;
    g.MachineCount = machines.count;
    if (g.ReversePresent) {
        const MachineList reverse = ReadMachineList(files, g.ProgramPath + QStringLiteral("Reverse.lst"));
        g.ReverseTable = reverse.table;
        g.ReverseCount = reverse.count;
    } else {
        g.ReverseTable = {MachineRecord{}};
        g.ReverseCount = 0;
    }

    SeedDefaultDataFiles(session);

    if (g.CamPackagesPresent) {
        files.MakeDirectoryIfMissing(g.SetupPath + QStringLiteral("Blocks"));
        files.MakeDirectoryIfMissing(g.SetupPath + QStringLiteral("Material"));
        if (g.ReversePresent)
            files.MakeDirectoryIfMissing(g.SetupPath + QStringLiteral("RevSubs"));
        files.MakeDirectoryIfMissing(g.SystemPath + QStringLiteral("Undo"));
    }

    g.RestoreStem = g.SystemPath + QStringLiteral("Undo\\Restore.");

    FindManuals(session, pdfSearchDirs);
}

} // namespace kestrova
