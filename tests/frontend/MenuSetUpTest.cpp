#include "Frontend/MenuSetUp.h"

#include "InstallationFixture.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

// What the set-up does to one entry; "left" when it does not touch it.
QString Visibility(const QList<EntrySetting>& table, const QString& entry) {
    for (const EntrySetting& setting : table)
        if (setting.entry == entry)
            return setting.visible ? (*setting.visible ? QStringLiteral("shown") : QStringLiteral("hidden"))
                                   : QStringLiteral("left");
    return QStringLiteral("left");
}

QStringList Shown(const QList<EntrySetting>& table) {
    QStringList shown;
    for (const EntrySetting& setting : table)
        if (setting.visible.value_or(false))
            shown << setting.entry;
    return shown;
}

class MenuSetUpTest : public ::testing::Test {
protected:
    QList<EntrySetting> Table() {
        fixture.Load();
        return MenuSetUpTable(fixture.Settings());
    }
    void UseControl(const char* machineDir, const QString& control) {
        fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Setup\\Data\\") + QLatin1String(machineDir) + ".cms",
                           {LabelledLine(QStringLiteral("Control Type"), control), QStringLiteral("******")});
    }
    void UseMachine(int number) {
        fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"),
                           {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup"),
                            QStringLiteral("C:\\Jobs"), QString::number(number), QStringLiteral("Kestrova"),
                            QStringLiteral("******")});
    }
    InstallationFixture fixture;
};

TEST_F(MenuSetUpTest, AFullInstallationOnAPunchWithNestingShowsTheWholeSuite) {
    const QList<EntrySetting> table = Table();
    EXPECT_EQ(
        Shown(table),
        (QStringList{"RestoreSeparator", "RestoreItem", "DrawingPackage", "CreateProgram", "MaterialDatabase",
                     "StockManager", "DataSeparator", "DataMenuMachine", "DataMenuDrawing", "DataMenuProgram",
                     "ShapeManager", "DataMenuComms", "DataMenuManuals", "NestingPackage", "ViewItem2",
                     "ReverseEngineering", "ToolLibrary", "DataFileGeneral1", "DataFileGeneral2"}));
    EXPECT_EQ(Visibility(table, "ProfileSettings"), "hidden");
    EXPECT_EQ(Visibility(table, "RainerMenu"), "hidden");
    EXPECT_EQ(Visibility(table, "ExecItem1"), "hidden");
    // Hidden whatever is installed.
    EXPECT_EQ(Visibility(table, "DataFileGeneral3"), "hidden");
    EXPECT_EQ(Visibility(table, "DataFileProgram7"), "hidden");
    // Several machines: the machine can be chosen.
    EXPECT_TRUE(table.contains(EntrySetting{"MachineItem", std::nullopt, true}));
}

TEST_F(MenuSetUpTest, WithoutTheDrawingOrProgramPackageOnlyTheDncMenusRemain) {
    for (const char* missing : {"Kestrdrw.exe", "Kestrprg.exe"}) {
        InstallationFixture local;
        local.Remove(QStringLiteral("C:\\Kestrova\\") + QLatin1String(missing));
        local.Load();
        const QList<EntrySetting> table = MenuSetUpTable(local.Settings());
        for (const char* entry :
             {"DrawingPackage", "CreateProgram", "NestingPackage", "ReverseEngineering", "RestoreItem",
              "MaterialDatabase", "StockManager", "ToolLibrary", "ProfileSettings", "DataMenuMachine",
              "DataMenuDrawing", "DataMenuProgram", "DataFileGeneral2", "ViewItem2"})
            EXPECT_EQ(Visibility(table, entry), "hidden") << missing << " missing, " << entry;
        // Left as the window defines it, and the communication and manual files stay editable.
        EXPECT_EQ(Visibility(table, "ShapeManager"), "left");
        EXPECT_EQ(Shown(table), (QStringList{"DataMenuComms", "DataMenuManuals", "DataFileGeneral1"}));
    }
}

TEST_F(MenuSetUpTest, NestingAndReverseFollowTheirOwnSwitches) {
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.nst"),
                       {LabelledLine(QStringLiteral("Nesting ? (Yes / No)"), QStringLiteral("no")),
                        QStringLiteral("******")});
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Kestrrvs.exe"));
    const QList<EntrySetting> table = Table();
    EXPECT_EQ(fixture.Settings().NestingState, 1);
    EXPECT_EQ(Visibility(table, "NestingPackage"), "hidden");
    EXPECT_EQ(Visibility(table, "ViewItem2"), "hidden");
    EXPECT_EQ(Visibility(table, "ReverseEngineering"), "hidden");
    EXPECT_EQ(Visibility(table, "DrawingPackage"), "shown");
}

TEST_F(MenuSetUpTest, NestingNotInstalledHidesIt) {
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Nesting.cfg"));
    const QList<EntrySetting> table = Table();
    EXPECT_EQ(fixture.Settings().NestingState, 0);
    EXPECT_EQ(Visibility(table, "NestingPackage"), "hidden");
}

TEST_F(MenuSetUpTest, OneMachineCannotBeChangedForAnother) {
    fixture.WriteLines(
        QStringLiteral("C:\\Kestrova\\Machine.lst"),
        {QStringLiteral("1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\""), QStringLiteral("******")});
    EXPECT_TRUE(Table().contains(EntrySetting{"MachineItem", std::nullopt, false}));
}

TEST_F(MenuSetUpTest, ARainerMachineOffersTheFloppyExchangeAndBothSides) {
    UseMachine(2);
    const QList<EntrySetting> table = Table();
    EXPECT_EQ(fixture.Settings().RainerType, 2);
    EXPECT_EQ(Visibility(table, "RainerMenu"), "shown");
    EXPECT_EQ(Visibility(table, "RainerSeparator"), "shown");
    // Type 11 punches and profiles.
    EXPECT_EQ(Visibility(table, "ToolLibrary"), "shown");
    EXPECT_EQ(Visibility(table, "ProfileSettings"), "shown");
    // Nesting was never switched on for this machine: its file is seeded with "No".
    EXPECT_EQ(Visibility(table, "NestingPackage"), "hidden");
}

TEST_F(MenuSetUpTest, AProfilingMachineHasNoToolLibrary) {
    UseMachine(3);
    const QList<EntrySetting> table = Table();
    EXPECT_EQ(Visibility(table, "ToolLibrary"), "hidden");
    EXPECT_EQ(Visibility(table, "ProfileSettings"), "shown");
    EXPECT_EQ(Visibility(table, "RainerMenu"), "hidden");
}

TEST_F(MenuSetUpTest, AWestinghouseProducerControlOffersExecutives) {
    UseControl("PUNCH1", QStringLiteral("Westinghouse Producer II"));
    const QList<EntrySetting> table = Table();
    for (const char* entry : {"ExecSeparator", "ExecItem1", "ExecItem2"})
        EXPECT_EQ(Visibility(table, entry), "shown") << entry;

    UseControl("PUNCH1", QStringLiteral("Westinghouse 2000"));
    for (const char* entry : {"ExecSeparator", "ExecItem1", "ExecItem2"})
        EXPECT_EQ(Visibility(Table(), entry), "hidden") << entry;
}

TEST_F(MenuSetUpTest, LockAndUnlockCoverTheNineMenusAndTheManualsFollowTheirAvailability) {
    for (const EntrySetting& setting : LockedMenus())
        EXPECT_EQ(setting.enabled, false) << setting.entry.toStdString();
    EXPECT_EQ(LockedMenus().size(), 9);

    fixture.Load();
    QList<EntrySetting> unlocked = UnlockedMenus(fixture.Settings());
    ASSERT_EQ(unlocked.size(), 9);
    EXPECT_EQ(unlocked.last(), (EntrySetting{"Manuals", true, true}));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(unlocked.at(i), (EntrySetting{TopLevelMenus().at(i), std::nullopt, true}));

    fixture.Remove(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"));
    fixture.Load();
    EXPECT_FALSE(fixture.Settings().ManualsAvailable);
    EXPECT_EQ(UnlockedMenus(fixture.Settings()).last(), (EntrySetting{"Manuals", false, false}));
}

} // namespace
