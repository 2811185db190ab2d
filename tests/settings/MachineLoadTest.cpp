#include "settings/MachineLoad.h"

#include "InstallationFixture.h"
#include "Thrown.h"
#include "settings/MachineType.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::Thrown;

namespace {

const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");

} // namespace

TEST(MachineLoad, FillsTheCurrentMachineOfTheFixture) {
    InstallationFixture fx;
    fx.Load();
    const GlobalSettings& g = fx.Settings();
    EXPECT_EQ(g.MachineDescription, QStringLiteral("Trumpf Punch 5000"));
    EXPECT_EQ(g.MachineFileName, QStringLiteral("PUNCH1"));
    EXPECT_EQ(g.MachineDir, QStringLiteral("PUNCH1"));
    EXPECT_EQ(g.SettingsManagerName, QStringLiteral("Setman"));
    EXPECT_EQ(g.MachineField4, QStringLiteral("P"));
    EXPECT_EQ(g.MachineDataStem, QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1."));
    EXPECT_EQ(g.MaterialPath, QStringLiteral("C:\\Kestrova\\Setup\\Material\\PUNCH1\\"));
    EXPECT_EQ(g.StockListFile, QStringLiteral("C:\\Kestrova\\Setup\\Material\\PUNCH1\\Stock.lst"));
    EXPECT_EQ(g.FinishListFile, QStringLiteral("C:\\Kestrova\\Setup\\Material\\Finish.lst"));
    EXPECT_EQ(g.BendEquationFile, QStringLiteral("C:\\Kestrova\\Setup\\Material\\Bend.eqn"));
    EXPECT_EQ(g.CurrentDir, QStringLiteral("Parts"));
    EXPECT_EQ(g.CurrentPath, QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\"));
    EXPECT_FALSE(g.Imperial);
    EXPECT_TRUE(g.PrmEnabled);
    EXPECT_EQ(g.MachineTypeCode, 10);
    EXPECT_TRUE(g.PunchingMachine);
    EXPECT_FALSE(g.ProfilingMachine);
    EXPECT_EQ(g.NestingState, 2);
    EXPECT_FALSE(g.TerminalMode);
    EXPECT_EQ(g.RainerType, 0);

    // What the load seeds for a punching machine.
    EXPECT_EQ(fx.ReadLines(g.StockListFile), (QStringList{"******"}));
    EXPECT_EQ(fx.ReadLines(Data + "PUNCH1.xpt"), (QStringList{"0", "prg", "3", "2", "C:\\", "******"}));
    for (const char* dir :
         {"Tools\\PUNCH1", "Turrets\\PUNCH1", "Profiles\\PUNCH1", "Shapes\\PUNCH1\\Circle\\Inside",
          "Shapes\\PUNCH1\\Rad-Rect\\Outside", "Shapes\\PUNCH1\\Custom", "Shapes\\PUNCH1\\Undefined"})
        EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Setup\\") + QLatin1String(dir))) << dir;
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Nesting")));
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg")),
              (QStringList{"C:\\Kestrova\\", "C:\\Kestrova\\Setup\\", "C:\\Jobs\\", "1", "Parts", "******"}));
}

TEST(MachineLoad, EachMachineOfTheListGetsItsOwnTypeAndOptions) {
    InstallationFixture fx;
    fx.Load();
    LoadMachine(fx.session(), 2, QStringLiteral("Kestrova"));
    GlobalSettings& g = fx.Settings();
    EXPECT_EQ(g.RainerType, 2) << "a Rainer whose control type says (V2)";
    EXPECT_TRUE(g.CombinationMachine);
    EXPECT_EQ(g.NestingState, 1) << "a machine seen for the first time starts with nesting off";
    EXPECT_EQ(fx.ReadLines(Data + "RAINER.nst"),
              (QStringList{"Nesting ? (Yes / No)                         : No", "******"}));
    EXPECT_EQ(g.CurrentPath, QStringLiteral("C:\\Jobs\\RAINER\\Kestrova\\"));

    LoadMachine(fx.session(), 3, QStringLiteral("Parts"));
    EXPECT_TRUE(g.TerminalMode);
    EXPECT_TRUE(g.Imperial);
    EXPECT_TRUE(g.ImperialCopy);
    EXPECT_FALSE(g.PunchingMachine);
    EXPECT_TRUE(g.ProfilingMachine);
    EXPECT_EQ(g.ProfilesPath, QString());
    EXPECT_EQ(g.RainerType, 0);
    EXPECT_EQ(g.CurrentDir, QStringLiteral("Kestrova"))
        << "a directory the machine lacks falls back to Kestrova";
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg")).mid(3, 2),
              (QStringList{"3", "Kestrova"}))
        << "and the fallback is kept";
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Setup\\Tools\\LASER")));
}

TEST(MachineLoad, AMachineNumberNoRecordCarriesLeavesTheMachineEmpty) {
    InstallationFixture fx;
    fx.Load();
    for (const char* ext : {"msr", "mch", "prm", "cms"})
        fx.WriteLines(Data + "." + QLatin1String(ext), {"Value : 11", "Value : 11"});
    LoadMachine(fx.session(), 9, QStringLiteral("Parts"));
    EXPECT_EQ(fx.Settings().MachineDescription, QString());
    EXPECT_EQ(fx.Settings().MachineDir, QString());
    EXPECT_EQ(fx.Settings().MachineDataStem, QStringLiteral("C:\\Kestrova\\Setup\\Data\\."));
    EXPECT_EQ(fx.Settings().MachineNumber, 9);
}

TEST(MachineLoad, ANewMachineGetsItsWorkingDirectoryTree) {
    InstallationFixture fx;
    fx.Remove(QStringLiteral("C:\\Jobs\\LASER"));
    fx.Load();
    LoadMachine(fx.session(), 3, QStringLiteral("Parts"));
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Jobs\\LASER\\Kestrova")));
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("Kestrova"));

    // An empty working directory gets "Kestrova"; without it, "Kestrova Directory" or the first entry.
    fx.Remove(QStringLiteral("C:\\Jobs\\LASER\\Kestrova"));
    LoadMachine(fx.session(), 3, QStringLiteral("Parts"));
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Jobs\\LASER\\Kestrova")));
    fx.Remove(QStringLiteral("C:\\Jobs\\LASER\\Kestrova"));
    fx.MakeDir(QStringLiteral("C:\\Jobs\\LASER\\Zeta"));
    fx.MakeDir(QStringLiteral("C:\\Jobs\\LASER\\Kestrova Directory"));
    LoadMachine(fx.session(), 3, QStringLiteral("Parts"));
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("Kestrova Directory"));
    fx.Remove(QStringLiteral("C:\\Jobs\\LASER\\Kestrova Directory"));
    fx.MakeDir(QStringLiteral("C:\\Jobs\\LASER\\EXSUBS"));
    LoadMachine(fx.session(), 3, QStringLiteral("Parts"));
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("Zeta")) << "EXSUBS is never the current directory";
}

TEST(MachineLoad, TheNestingFileDecidesWhetherNestingIsOn) {
    InstallationFixture fx;
    fx.Load();
    const auto stateWith = [&](const QByteArray& nst) {
        fx.Write(Data + "PUNCH1.nst", nst);
        LoadMachine(fx.session(), 1, QStringLiteral("Parts"));
        return int(fx.Settings().NestingState);
    };
    EXPECT_EQ(stateWith("Nesting ? (Yes / No)                         : yes\r\n"), 2);
    EXPECT_EQ(stateWith("Nesting ? (Yes / No)                         :NO\r\n"), 1);
    EXPECT_EQ(stateWith("No\r\n"), 1);
    EXPECT_EQ(stateWith(""), 1);
    EXPECT_EQ(fx.ReadLines(Data + "PUNCH1.nst"),
              (QStringList{"Nesting ? (Yes / No)                         : No", "******"}))
        << "an empty nesting file is written anew with nesting off";

    fx.Write(Data + "PUNCH1.nst", "Nesting : Yes\r\n");
    fx.Remove(QStringLiteral("C:\\Kestrova\\Nesting.key"));
    LoadMachine(fx.session(), 1, QStringLiteral("Parts"));
    EXPECT_EQ(fx.Settings().NestingState, 1) << "installed, but the file that switches it on is missing";
    fx.Remove(QStringLiteral("C:\\Kestrova\\Nesting.cfg"));
    LoadMachine(fx.session(), 1, QStringLiteral("Parts"));
    EXPECT_EQ(fx.Settings().NestingState, 0);
}

TEST(MachineLoad, ExportSettingsAreSeededFromTheTemplateWhenThereIsOne) {
    InstallationFixture fx;
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Export.cfg"), {"1", "nc", "8", "1", "E:\\", "******"});
    fx.Load();
    EXPECT_EQ(fx.Read(Data + "PUNCH1.xpt"), fx.Read(QStringLiteral("C:\\Kestrova\\Export.cfg")));
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Export.cfg"), {"changed"});
    LoadMachine(fx.session(), 1, QStringLiteral("Parts"));
    EXPECT_EQ(fx.ReadLines(Data + "PUNCH1.xpt").value(1), QStringLiteral("nc")) << "an existing file is kept";
}

TEST(MachineLoad, AMissingMachineDataFileNamesItself) {
    InstallationFixture fx;
    fx.Remove(Data + "PUNCH1.mch");
    const auto missing = Thrown<FileNotFoundError>([&] { fx.Load(); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->subject(), QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch"));
}

TEST(MachineLoad, WithoutTheCamPackagesOnlyTheControlTypeIsRead) {
    InstallationFixture fx;
    fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrdrw.exe"));
    fx.Remove(Data + "PUNCH1.mch"); // not needed without the packages
    fx.Load();
    EXPECT_FALSE(fx.Settings().PrmEnabled);
    EXPECT_FALSE(fx.Settings().PunchingMachine);
    EXPECT_EQ(fx.Settings().NestingState, 1);
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Setup\\Material\\PUNCH1")));
}

TEST(MachineType, PlainSubstringTestsOnControlTypeAndDescription) {
    GlobalSettings g;
    SetMachineType(g, QStringLiteral("Intermotion 1 and 5"), QStringLiteral("Punch"));
    EXPECT_EQ(g.IntermotionType, 5) << "the last digit tested wins";
    SetMachineType(g, QStringLiteral("INTERMOTION 5, 2"), QStringLiteral("Punch"));
    EXPECT_EQ(g.IntermotionType, 5);
    SetMachineType(g, QStringLiteral("imotion"), QStringLiteral("Punch"));
    EXPECT_EQ(g.IntermotionType, 6);
    SetMachineType(g, QStringLiteral("Fanuc"), QStringLiteral("Rhodes Quartz MK1"));
    EXPECT_EQ(g.IntermotionType, 6);
    EXPECT_EQ(g.RhodesModel, 1);
    SetMachineType(g, QStringLiteral("Fanuc"), QStringLiteral("rhodes quartz"));
    EXPECT_EQ(g.RhodesModel, 2);
    SetMachineType(g, QStringLiteral("Raskin 85 Start"), QString());
    EXPECT_TRUE(g.RaskinRt85) << "START holds the letters RT";
    SetMachineType(g, QStringLiteral("Raskin 85"), QString());
    EXPECT_FALSE(g.RaskinRt85);
    SetMachineType(g, QStringLiteral("Westinghouse Producer II"), QStringLiteral("Rainer"));
    EXPECT_TRUE(g.WestinghouseProducer);
    EXPECT_EQ(g.RainerType, 1);
    SetMachineType(g, QString(), QStringLiteral("Trumf Bosch TC500 LVD RS IBH Behren Pullmax Vipros GE550"));
    EXPECT_TRUE(g.TrumfBoschTc && g.LvdRs && g.IbhBehren && g.PullmaxMachine && g.ViprosMachine &&
                g.Ge550Control);
    SetMachineType(g, QStringLiteral("Kestrova"), QStringLiteral("Terminal"));
    EXPECT_FALSE(g.TerminalMode) << "both words belong to the control type";
}

TEST(MachineLoad, ReloadSaysWhenTheMachineChanged) {
    InstallationFixture fx;
    fx.Load();
    EXPECT_FALSE(ReloadEnvironment(fx.session()));
    // A package chose another machine and directory and rewrote "Kestrova.cfg".
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"),
                  {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", "3", "Kestrova", "******"});
    EXPECT_TRUE(ReloadEnvironment(fx.session()));
    EXPECT_EQ(fx.Settings().MachineDescription, QStringLiteral("Laser 3030 Terminal"));
    EXPECT_EQ(fx.Settings().CurrentPath, QStringLiteral("C:\\Jobs\\LASER\\Kestrova\\"));
    EXPECT_TRUE(fx.Settings().TerminalMode);
}
