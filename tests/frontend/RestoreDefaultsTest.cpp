#include "settings/RestoreDefaults.h"

#include "RecordingFrame.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");

class RestoreDefaultsTest : public FrameTest {
protected:
    // Loads (which keeps the delivered files as the defaults), then changes every machine file.
    void LoadAndChange() {
        fx.Load();
        fx.Write(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\Kestrova.cms"), "delivered\r\n");
        for (const char* ext : {"cms", "mch", "msr", "trt", "wrd", "nst", "xpt"})
            fx.Write(Data + "PUNCH1." + ext, "changed\r\n");
        fx.Write(QStringLiteral("C:\\Kestrova\\Kestrova.cms"), "changed\r\n");
        fx.Write(Data + "RAINER.mch", "changed\r\n");
    }
    [[nodiscard]] bool Restored(const QString& file) {
        return fx.Read(file) ==
               fx.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\") + file.section(u'\\', -1));
    }
    [[nodiscard]] bool Changed(const QString& file) { return fx.Read(file) == "changed\r\n"; }
};

TEST_F(RestoreDefaultsTest, OkPutsBackTheMachinesFilesButNotItsNestingAndExportSettings) {
    LoadAndChange();
    fx.Messages().Script({Answer::Ok});
    RestoreDefaults(fx.session(), frame);

    ASSERT_EQ(fx.Messages().Messages().size(), 1);
    const Message& warning = fx.Messages().Messages().first().message;
    EXPECT_EQ(warning.text,
              QStringLiteral("Any Changes To The Data Files For\nTrumpf Punch 5000\nWill be Lost ! "));
    EXPECT_EQ(warning.buttons, Buttons::OkCancel);
    EXPECT_EQ(warning.icon, Icon::Exclamation);
    EXPECT_EQ(warning.defaultButton, 2);
    EXPECT_EQ(warning.title, QStringLiteral("Kestrova"));

    for (const char* ext : {"cms", "mch", "msr", "trt", "wrd"})
        EXPECT_TRUE(Restored(Data + "PUNCH1." + ext)) << ext;
    EXPECT_TRUE(Restored(QStringLiteral("C:\\Kestrova\\Kestrova.cms")));
    EXPECT_TRUE(Changed(Data + "PUNCH1.nst"));
    EXPECT_TRUE(Changed(Data + "PUNCH1.xpt"));
    EXPECT_TRUE(Changed(Data + "RAINER.mch")); // only the current machine
    EXPECT_EQ(frame.log, (QStringList{"lock", "unlock"}));
    EXPECT_EQ(fx.Messages().BusyCount(), 1);
    EXPECT_EQ(fx.Messages().BusyDepth(), 0);
    EXPECT_EQ(fx.Settings().LastAnswer, int(Answer::Ok));
}

TEST_F(RestoreDefaultsTest, CancelChangesNothing) {
    LoadAndChange();
    fx.Messages().Script({Answer::Cancel});
    RestoreDefaults(fx.session(), frame);
    for (const char* ext : {"cms", "mch", "msr"})
        EXPECT_TRUE(Changed(Data + "PUNCH1." + ext)) << ext;
    EXPECT_TRUE(Changed(QStringLiteral("C:\\Kestrova\\Kestrova.cms")));
    EXPECT_TRUE(frame.log.isEmpty());
    EXPECT_EQ(fx.Messages().BusyCount(), 0);
}

TEST_F(RestoreDefaultsTest, WithoutTheCamPackagesOnlyTheCommunicationFilesComeBack) {
    fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrprg.exe"));
    LoadAndChange();
    fx.Messages().Script({Answer::Ok});
    RestoreDefaults(fx.session(), frame);
    EXPECT_TRUE(Restored(Data + "PUNCH1.cms"));
    EXPECT_TRUE(Restored(QStringLiteral("C:\\Kestrova\\Kestrova.cms")));
    for (const char* ext : {"mch", "msr", "trt", "wrd"})
        EXPECT_TRUE(Changed(Data + "PUNCH1." + ext)) << ext;
}

TEST_F(RestoreDefaultsTest, AMissingDefaultLeavesTheMachinesFile) {
    LoadAndChange();
    fx.Remove(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\PUNCH1.mch"));
    fx.Remove(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\Kestrova.cms"));
    fx.Messages().Script({Answer::Ok});
    RestoreDefaults(fx.session(), frame);
    EXPECT_TRUE(Changed(Data + "PUNCH1.mch"));
    EXPECT_TRUE(Changed(QStringLiteral("C:\\Kestrova\\Kestrova.cms")));
    EXPECT_TRUE(Restored(Data + "PUNCH1.msr"));
}

} // namespace
