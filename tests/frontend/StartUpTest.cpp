#include "Frontend/StartUp.h"

#include "InstallationFixture.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString KestrovaCfg = QStringLiteral("C:\\Kestrova\\Kestrova.cfg");

TEST(StartUpTest, AFirstStartSeedsTheInstallationAndRewritesKestrovaCfg) {
    InstallationFixture fixture;
    fixture.WriteLines(KestrovaCfg, {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup"),
                                     QStringLiteral("C:\\Jobs"), QStringLiteral("1"), QStringLiteral("Gone"),
                                     QStringLiteral("******")});
    ASSERT_EQ(LoadAtStartUp(fixture.session()), 0);
    EXPECT_TRUE(fixture.Messages().Texts().isEmpty());

    // A current directory that is gone falls back to the machine's "Kestrova", and the choice is kept.
    EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Kestrova"));
    EXPECT_EQ(fixture.ReadLines(KestrovaCfg), (QStringList{"C:\\Kestrova\\", "C:\\Kestrova\\Setup\\",
                                                           "C:\\Jobs\\", "1", "Kestrova", "******"}));

    // The delivered data files kept as the defaults, and the machine's missing files seeded.
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\PUNCH1.mch")),
              fixture.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch")));
    EXPECT_EQ(fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt")),
              (QStringList{"0", "prg", "3", "2", "C:\\", "******"}));
    EXPECT_EQ(fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Setup\\Material\\PUNCH1\\Stock.lst")),
              QStringList{"******"});
    for (const char* dir :
         {"C:\\Kestrova\\Undo", "C:\\Kestrova\\Setup\\Blocks", "C:\\Kestrova\\Setup\\RevSubs",
          "C:\\Kestrova\\Setup\\Tools\\PUNCH1", "C:\\Kestrova\\Setup\\Shapes\\PUNCH1\\Obround\\Inside"})
        EXPECT_TRUE(fixture.OnDisk(QString::fromLatin1(dir))) << dir;
}

TEST(StartUpTest, AStaleLastFileIsForgottenAtStartUp) {
    InstallationFixture fixture;
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Lastfile.lst"),
                       {QStringLiteral("Parts"), QStringLiteral("Deleted"), QStringLiteral("******")});
    ASSERT_EQ(LoadAtStartUp(fixture.session()), 0);
    EXPECT_EQ(fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Lastfile.lst")), QStringList{"******"});
}

TEST(StartUpTest, AMissingOrShortKestrovaCfgEndsTheStartWithOneMessage) {
    InstallationFixture missing;
    missing.Remove(KestrovaCfg);
    EXPECT_EQ(LoadAtStartUp(missing.session()), 1);
    ASSERT_EQ(missing.Messages().Texts().size(), 1);
    EXPECT_TRUE(missing.Messages().Texts().first().contains(QStringLiteral("File not found")));
    EXPECT_TRUE(missing.Messages().Texts().first().contains(QStringLiteral("Kestrova.cfg")));
    EXPECT_EQ(missing.Messages().Messages().first().message.title, QStringLiteral("Kestrova"));

    InstallationFixture shortCfg;
    shortCfg.WriteLines(KestrovaCfg, {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup")});
    EXPECT_EQ(LoadAtStartUp(shortCfg.session()), 1);
    ASSERT_EQ(shortCfg.Messages().Texts().size(), 1);
    EXPECT_TRUE(shortCfg.Messages().Texts().first().contains(QStringLiteral("Input past end of file")));
}

} // namespace
