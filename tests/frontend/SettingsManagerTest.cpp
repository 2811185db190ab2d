#include "settings/SettingsManager.h"

#include "RecordingFrame.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString SettingsCfg = QStringLiteral("C:\\Kestrova\\Settings.cfg");

class SettingsManagerTest : public FrameTest {
protected:
    void Start(SettingsPage page) { StartSettingsManager(fx.session(), launcher, frame, page); }
};

TEST_F(SettingsManagerTest, TheManagerReadsItsPageAndMayDeleteTheRequestItself) {
    fx.WriteProgram(QStringLiteral("C:\\Kestrova\\Setman.exe"),
                    "cp Settings.cfg Seen.cfg && rm Settings.cfg");
    Start(SettingsPage::MaterialDatabase);
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Kestrova\\Seen.cfg")), QByteArray("1\r\n******\r\n"));
    EXPECT_FALSE(fx.OnDisk(SettingsCfg));
    EXPECT_EQ(frame.log, (QStringList{"disable MaterialDatabase", "enable MaterialDatabase"}));
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(SettingsManagerTest, ARequestTheManagerLeavesIsDeletedAfterIt) {
    fx.WriteProgram(QStringLiteral("C:\\Kestrova\\Setman.exe"), "cp Settings.cfg Seen.cfg");
    Start(SettingsPage::ProfileSettings);
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Kestrova\\Seen.cfg")), QByteArray("7\r\n******\r\n"));
    EXPECT_FALSE(fx.OnDisk(SettingsCfg));
    EXPECT_EQ(frame.log, (QStringList{"disable ProfileSettings", "enable ProfileSettings"}));
}

TEST_F(SettingsManagerTest, AMissingManagerIsReportedByPage) {
    fx.Remove(QStringLiteral("C:\\Kestrova\\Setman.exe"));
    Start(SettingsPage::MaterialDatabase);
    Start(SettingsPage::ProfileSettings);
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Material Database Unavailable !", "<beep>",
                                                "Settings Manager Unavailable !"}));
    EXPECT_FALSE(fx.OnDisk(SettingsCfg));
    EXPECT_TRUE(frame.log.isEmpty());
}

TEST_F(SettingsManagerTest, TheManagerIsNamedByTheMachinesRecord) {
    fx.WriteLines(
        QStringLiteral("C:\\Kestrova\\Machine.lst"),
        {QStringLiteral("1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Matman\",\"P\""), QStringLiteral("******")});
    fx.WriteProgram(QStringLiteral("C:\\Kestrova\\Matman.exe"), "cp Settings.cfg Seen.cfg");
    fx.Load();
    Start(SettingsPage::MaterialDatabase);
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Seen.cfg")));
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

} // namespace
