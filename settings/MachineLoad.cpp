#include "settings/MachineLoad.h"

#include "filestore/SelectDirectory.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/EnvironmentLoad.h"
#include "settings/MachineList.h"
#include "settings/MachineSeeding.h"
#include "settings/MachineType.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

void ClearMachine(GlobalSettings& g) {
    g.MachineDescription.clear();
    g.MachineFileName.clear();
    g.SettingsManagerName.clear();
    g.MachineField4.clear();
    g.Imperial = g.ImperialCopy = g.PrmEnabled = false;
    g.MachineTypeCode = 0;
    g.PunchingMachine = g.ProfilingMachine = g.CombinationMachine = false;
    g.ProfilesPath.clear();
    g.ShapesPath.clear();
}

// The machine's working directory, created where missing, and the directory to start in.
QString PrepareWorkingDirectory(FileSystem& files, const QString& w, QString directory) {
    const QString kestrova = w + QStringLiteral("\\Kestrova");
    if (!files.Exists(w)) {
        files.MakeDirectory(w);
        files.MakeDirectory(kestrova);
    } else if (files.Find(w + QStringLiteral("\\*.*"), EntryKinds::Both).isEmpty()) {
        files.MakeDirectory(kestrova);
    }
    if (!files.IsDirectory(w + u'\\' + directory)) {
        if (files.Exists(kestrova))
            directory = QStringLiteral("Kestrova");
        else if (files.Exists(w + QStringLiteral("\\Kestrova Directory")))
            directory = QStringLiteral("Kestrova Directory");
        else
            directory = files.Find(w + QStringLiteral("\\*.*"), EntryKinds::Both).value(0);
    }
    return directory;
}

void ReadMachineOptions(Session& session) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    g.Imperial = ReadFirstKeyword(files, MachineFile(g, QStringLiteral("msr"))) == QLatin1String("IMPERIAL");
    g.ImperialCopy = g.Imperial;

    {
        // Line 2 is the type code; the further lines (the machine's dimensions) belong to the packages.
        LineReader mch(files, MachineFile(g, QStringLiteral("mch")));
        (void)mch.ReadLine();
        const QString code = mch.ReadLine();
        try {
            g.MachineTypeCode = LeadingInt16(ValueOfLine(code));
        } catch (const OverflowError&) {
            throw OverflowError(mch.Path(), QStringLiteral("machine type \"%1\"").arg(ValueOfLine(code)));
        }
    }
    g.PunchingMachine = g.MachineTypeCode >= 10;
    g.ProfilingMachine = g.MachineTypeCode % 10 != 0;
    g.CombinationMachine = g.PunchingMachine && g.ProfilingMachine;

    g.PrmEnabled = ReadFirstKeyword(files, MachineFile(g, QStringLiteral("prm"))) == QLatin1String("YES");

    const QString setup = g.SetupPath;
    const QString machine = g.MachineDir;
    if (g.PunchingMachine) {
        for (const char* tree : {"Tools", "Turrets", "Profiles"}) {
            files.MakeDirectoryIfMissing(setup + QLatin1String(tree));
            files.MakeDirectoryIfMissing(setup + QLatin1String(tree) + u'\\' + machine);
        }
        g.ProfilesPath = setup + QStringLiteral("Profiles\\") + machine + u'\\';
    }
    g.ShapesPath = setup + QStringLiteral("Shapes\\") + machine + u'\\';
    files.MakeDirectoryIfMissing(setup + QStringLiteral("Shapes"));
    files.MakeDirectoryIfMissing(g.ShapesPath.chopped(1));
    for (const char* shape : {"Circle", "Single-D", "Double-D", "Obround", "Rad-Rect", "Rectangle"}) {
        const QString dir = g.ShapesPath + QLatin1String(shape);
        files.MakeDirectoryIfMissing(dir);
        files.MakeDirectoryIfMissing(dir + QStringLiteral("\\Inside"));
        files.MakeDirectoryIfMissing(dir + QStringLiteral("\\Outside"));
    }
    files.MakeDirectoryIfMissing(g.ShapesPath + QStringLiteral("Custom"));
    files.MakeDirectoryIfMissing(g.ShapesPath + QStringLiteral("Undefined"));
    // The station ("stn") and turret ("trt") tables are the packages' own; nothing here reads them.
}

} // namespace

void LoadMachine(Session& session, Int16 machineNumber, const QString& directory) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    ClearMachine(g);
    g.MachineNumber = machineNumber;

    const MachineList machines = ReadMachineList(files, g.ProgramPath + QStringLiteral("Machine.lst"));
    for (int i = 1; i < machines.table.size(); ++i) {
        const MachineRecord& record = machines.table.at(i);
        if (record.number == machineNumber) {
            g.MachineDescription = TrimBlanks(record.field1);
            g.MachineFileName = TrimBlanks(record.field2);
            g.SettingsManagerName = TrimBlanks(record.field3);
            g.MachineField4 = TrimBlanks(record.field4);
            break;
        }
    }

    g.MachineDir = TrimBlanks(g.MachineFileName);
    g.MachineDataStem = g.SetupPath + QStringLiteral("Data\\") + g.MachineDir + u'.';
    g.MaterialPath = g.SetupPath + QStringLiteral("Material\\") + g.MachineDir + u'\\';
    g.StockListFile = g.MaterialPath + QStringLiteral("Stock.lst");
    g.FinishListFile = g.SetupPath + QStringLiteral("Material\\Finish.lst");
    g.BendEquationFile = g.SetupPath + QStringLiteral("Material\\Bend.eqn");

    QString d = PrepareWorkingDirectory(files, g.RootPath + g.MachineDir, TrimBlanks(directory));

    SeedExportSettings(session);

    if (!g.CamPackagesPresent) {
        g.PrmEnabled = false;
    } else {
        files.MakeDirectoryIfMissing(g.MaterialPath.chopped(1));
        SeedStockList(session);
        ReadMachineOptions(session);
    }

    CheckNesting(session);

    SetMachineType(g, ReadFirstKeyword(files, MachineFile(g, QStringLiteral("cms"))), g.MachineDescription);

    if (HasColon(d))
        d.clear();
    SelectDirectory(session, d);
}

bool ReloadEnvironment(Session& session) {
    const Int16 before = session.settings.MachineNumber;
    LoadEnvironment(session);
    LoadMachine(session, session.settings.MachineNumber, session.settings.CurrentDir);
    return session.settings.MachineNumber != before;
}

} // namespace kestrova
