#include "settings/SettingsManager.h"

#include "InstallationFixture.h"
#include "RecordingFrame.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::RecordingFrame;

namespace {

const QString SettingsCfg = QStringLiteral("C:\\Kestrova\\Settings.cfg");

class SettingsManagerTest : public ::testing::Test {
protected:
    void SetUp() override { fixture.Load(); }
    void Start(SettingsPage page) { StartSettingsManager(fixture.session(), launcher, frame, page); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    RecordingFrame frame;
};

TEST_F(SettingsManagerTest, TheManagerReadsItsPageAndMayDeleteTheRequestItself) {
    fixture.WriteProgram(QStringLiteral("C:\\Kestrova\\Setman.exe"),
                         "cp Settings.cfg Seen.cfg && rm Settings.cfg");
    Start(SettingsPage::MaterialDatabase);
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Kestrova\\Seen.cfg")), QByteArray("1\r\n******\r\n"));
    EXPECT_FALSE(fixture.OnDisk(SettingsCfg));
    EXPECT_EQ(frame.log, (QStringList{"disable MaterialDatabase", "enable MaterialDatabase"}));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

TEST_F(SettingsManagerTest, ARequestTheManagerLeavesIsDeletedAfterIt) {
    fixture.WriteProgram(QStringLiteral("C:\\Kestrova\\Setman.exe"), "cp Settings.cfg Seen.cfg");
    Start(SettingsPage::ProfileSettings);
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Kestrova\\Seen.cfg")), QByteArray("7\r\n******\r\n"));
    EXPECT_FALSE(fixture.OnDisk(SettingsCfg));
    EXPECT_EQ(frame.log, (QStringList{"disable ProfileSettings", "enable ProfileSettings"}));
}

TEST_F(SettingsManagerTest, AMissingManagerIsReportedByPage) {
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Setman.exe"));
    Start(SettingsPage::MaterialDatabase);
    Start(SettingsPage::ProfileSettings);
    EXPECT_EQ(fixture.Messages().Log(), (QStringList{"<beep>", "Material Database Unavailable !", "<beep>",
                                                     "Settings Manager Unavailable !"}));
    EXPECT_FALSE(fixture.OnDisk(SettingsCfg));
    EXPECT_TRUE(frame.log.isEmpty());
}

TEST_F(SettingsManagerTest, TheManagerIsNamedByTheMachinesRecord) {
    fixture.WriteLines(
        QStringLiteral("C:\\Kestrova\\Machine.lst"),
        {QStringLiteral("1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Matman\",\"P\""), QStringLiteral("******")});
    fixture.WriteProgram(QStringLiteral("C:\\Kestrova\\Matman.exe"), "cp Settings.cfg Seen.cfg");
    fixture.Load();
    Start(SettingsPage::MaterialDatabase);
    EXPECT_TRUE(fixture.OnDisk(QStringLiteral("C:\\Kestrova\\Seen.cfg")));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

} // namespace
