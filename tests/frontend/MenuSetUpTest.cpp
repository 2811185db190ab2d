#include "Frontend/MenuSetUp.h"

#include "InstallationFixture.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

// What the set-up does to one entry, as the rows below write it: "+Entry" shown, "-Entry"
// hidden, "=Entry" left as the window defines it, "^Entry" enabled, "!Entry" disabled.
QString Setting(const QList<EntrySetting>& table, const QString& entry, bool enabling) {
    for (const EntrySetting& setting : table) {
        const std::optional<bool> value = enabling ? setting.enabled : setting.visible;
        if (setting.entry == entry && value)
            return (enabling ? (*value ? u'^' : u'!') : (*value ? u'+' : u'-')) + entry;
    }
    return u'=' + entry;
}

QStringList Shown(const QList<EntrySetting>& table) {
    QStringList shown;
    for (const EntrySetting& setting : table)
        if (setting.visible.value_or(false))
            shown << setting.entry;
    return shown;
}

void UseMachine(InstallationFixture& fx, const char* number) {
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"),
                  {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", number, "Kestrova", "******"});
}

void UseControl(InstallationFixture& fx, const char* control) {
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms"),
                  {LabelledLine(QStringLiteral("Control Type"), QLatin1String(control)), "******"});
}

TEST(MenuSetUpTest, TheInstalledPackagesTheMachineAndItsControlChooseTheEntries) {
    // Without the drawing or the program package only the communication and manual files stay.
    const QString dncOnly = "-DrawingPackage -CreateProgram -NestingPackage -ReverseEngineering -RestoreItem "
                            "-MaterialDatabase -StockManager -ToolLibrary -ProfileSettings -DataMenuMachine "
                            "-DataMenuDrawing -DataMenuProgram -DataFileGeneral2 -ViewItem2 =ShapeManager";
    const struct {
        const char* installation;
        std::function<void(InstallationFixture&)> change;
        QString expected;       // as Setting() writes it
        QStringList shown = {}; // every entry shown, when given
    } rows[] = {
        {"a full installation on a punch with nesting",
         [](InstallationFixture&) {},
         // Data files general 3 and program 7 are hidden whatever is installed.
         "-ProfileSettings -RainerMenu -ExecItem1 -DataFileGeneral3 -DataFileProgram7 ^MachineItem",
         {"RestoreSeparator", "RestoreItem", "DrawingPackage", "CreateProgram", "MaterialDatabase",
          "StockManager", "DataSeparator", "DataMenuMachine", "DataMenuDrawing", "DataMenuProgram",
          "ShapeManager", "DataMenuComms", "DataMenuManuals", "NestingPackage", "ViewItem2",
          "ReverseEngineering", "ToolLibrary", "DataFileGeneral1", "DataFileGeneral2"}},
        {"without the drawing package",
         [](InstallationFixture& fx) { fx.Remove("C:\\Kestrova\\Kestrdrw.exe"); },
         dncOnly,
         {"DataMenuComms", "DataMenuManuals", "DataFileGeneral1"}},
        {"without the program package",
         [](InstallationFixture& fx) { fx.Remove("C:\\Kestrova\\Kestrprg.exe"); },
         dncOnly,
         {"DataMenuComms", "DataMenuManuals", "DataFileGeneral1"}},
        {"nesting switched off and no reverse package",
         [](InstallationFixture& fx) {
             fx.WriteLines(
                 "C:\\Kestrova\\Setup\\Data\\PUNCH1.nst",
                 {LabelledLine(QStringLiteral("Nesting ? (Yes / No)"), QStringLiteral("no")), "******"});
             fx.Remove("C:\\Kestrova\\Kestrrvs.exe");
         },
         "-NestingPackage -ViewItem2 -ReverseEngineering +DrawingPackage"},
        {"nesting not installed", [](InstallationFixture& fx) { fx.Remove("C:\\Kestrova\\Nesting.cfg"); },
         "-NestingPackage"},
        {"one machine only",
         [](InstallationFixture& fx) {
             fx.WriteLines("C:\\Kestrova\\Machine.lst",
                           {"1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\"", "******"});
         },
         "!MachineItem"},
        // Type 11 punches and profiles; nesting was never switched on for this machine.
        {"a Rainer machine", [](InstallationFixture& fx) { UseMachine(fx, "2"); },
         "+RainerMenu +RainerSeparator +ToolLibrary +ProfileSettings -NestingPackage"},
        {"a profiling machine", [](InstallationFixture& fx) { UseMachine(fx, "3"); },
         "-ToolLibrary +ProfileSettings -RainerMenu"},
        {"a Westinghouse Producer control",
         [](InstallationFixture& fx) { UseControl(fx, "Westinghouse Producer II"); },
         "+ExecSeparator +ExecItem1 +ExecItem2"},
        {"another Westinghouse control", [](InstallationFixture& fx) { UseControl(fx, "Westinghouse 2000"); },
         "-ExecSeparator -ExecItem1 -ExecItem2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.installation);
        InstallationFixture fx;
        row.change(fx);
        fx.Load();
        const QList<EntrySetting> table = MenuSetUpTable(fx.Settings());
        for (const QString& expected : row.expected.split(u' '))
            EXPECT_EQ(Setting(table, expected.mid(1), expected.at(0) == u'^' || expected.at(0) == u'!'),
                      expected);
        if (!row.shown.isEmpty()) {
            EXPECT_EQ(Shown(table), row.shown);
        }
    }
}

TEST(MenuSetUpTest, LockAndUnlockCoverTheNineMenusAndTheManualsFollowTheirAvailability) {
    for (const EntrySetting& setting : LockedMenus())
        EXPECT_EQ(setting.enabled, false) << setting.entry.toStdString();
    EXPECT_EQ(LockedMenus().size(), 9);

    InstallationFixture fx;
    fx.Load();
    QList<EntrySetting> unlocked = UnlockedMenus(fx.Settings());
    ASSERT_EQ(unlocked.size(), 9);
    EXPECT_EQ(unlocked.last(), (EntrySetting{"Manuals", true, true}));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(unlocked.at(i), (EntrySetting{TopLevelMenus().at(i), std::nullopt, true}));

    fx.Remove(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"));
    fx.Load();
    EXPECT_FALSE(fx.Settings().ManualsAvailable);
    EXPECT_EQ(UnlockedMenus(fx.Settings()).last(), (EntrySetting{"Manuals", false, false}));
}

} // namespace
