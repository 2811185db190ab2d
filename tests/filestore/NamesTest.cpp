#include "filestore/Names.h"

#include "InstallationFixture.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

TEST(Names, GetExtensionLooksOnlyAtTheLastThreeCharacters) {
    EXPECT_EQ(GetExtension(QStringLiteral("part.lkp")), QStringLiteral("lkp"));
    EXPECT_EQ(GetExtension(QStringLiteral(" a.b ")), QStringLiteral("b"));
    EXPECT_EQ(GetExtension(QStringLiteral("a.b.c")), QStringLiteral("c"));
    EXPECT_EQ(GetExtension(QStringLiteral("page.html")), QString());
    EXPECT_EQ(GetExtension(QStringLiteral(".x")), QString()) << "a dot in the first place is never taken";
    EXPECT_EQ(GetExtension(QStringLiteral("..")), QString());
    EXPECT_EQ(GetExtension(QStringLiteral("ab.")), QString());
    EXPECT_EQ(GetExtension(QStringLiteral("X")), QString());
    EXPECT_EQ(GetExtension(QStringLiteral("Restore.b12")), QStringLiteral("b12"));
}

TEST(Names, StripExtensionLastComponentAndNumbers) {
    EXPECT_EQ(StripExtension(QStringLiteral("a.b.c")), QStringLiteral("a.b"));
    EXPECT_EQ(StripExtension(QStringLiteral(" Bracket .drw ")), QStringLiteral("Bracket"));
    EXPECT_EQ(StripExtension(QStringLiteral("X")), QStringLiteral("X"));
    EXPECT_EQ(StripExtension(QStringLiteral("   ")), QString());
    EXPECT_EQ(LastComponent(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts")), QStringLiteral("Parts"));
    EXPECT_EQ(LastComponent(QStringLiteral("/srv/jobs")), QStringLiteral("jobs"));
    EXPECT_EQ(LastComponent(QStringLiteral("A:")), QString());
    EXPECT_EQ(LastComponent(QStringLiteral("Parts")), QStringLiteral("Parts"));
    EXPECT_EQ(NumberText(42), QStringLiteral("42"));
    EXPECT_EQ(NumberText(-7), QStringLiteral("-7"));
}

TEST(Names, PathJoinAndDrives) {
    InstallationFixture fx;
    fx.Load();
    const GlobalSettings& g = fx.Settings();
    EXPECT_EQ(PathJoin(g, QStringLiteral("PUNCH1"), QStringLiteral(" Parts ")),
              QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\"));
    EXPECT_EQ(PathJoin(g, QStringLiteral("PUNCH1"), QStringLiteral("A:")), QStringLiteral("A:\\"));
    EXPECT_EQ(PathJoin(g, QStringLiteral("RAINER"), QStringLiteral("e: [Removable Drive]")),
              QStringLiteral("e:\\"));
    EXPECT_TRUE(DriveExists(fx.Files(), QStringLiteral("A: [Floppy Disk]")));
    EXPECT_TRUE(DriveExists(fx.Files(), QStringLiteral("e:")));
    EXPECT_FALSE(DriveExists(fx.Files(), QStringLiteral("G:"))) << "mapped but not ready";
    EXPECT_FALSE(DriveExists(fx.Files(), QStringLiteral("H:")));
    EXPECT_FALSE(DriveExists(fx.Files(), QStringLiteral("  ")));
}

TEST(Names, AStoredNameNeverLeavesItsDirectory) {
    const QString dir = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    const struct {
        const char* name;
        const char* stored; // nullptr: refused
    } cases[] = {
        {"P9", "C:\\Jobs\\PUNCH1\\Parts\\P9.prg"},
        {"..P9", "C:\\Jobs\\PUNCH1\\Parts\\..P9.prg"},
        {"a b.c", "C:\\Jobs\\PUNCH1\\Parts\\a b.c.prg"},
        {"", nullptr},
        {".", nullptr},
        {"..", nullptr},
        {"..\\Up", nullptr},
        {"../Up", nullptr},
        {"sub\\P9", nullptr},
        {"D:P9", nullptr},
        {"P\t9", nullptr},
        {"P\x7f", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::optional<QString> stored =
            FileInDirectory(dir, QString::fromLatin1(c.name), QStringLiteral("prg"));
        EXPECT_EQ(stored.value_or(QStringLiteral("<refused>")),
                  c.stored ? QString::fromLatin1(c.stored) : QStringLiteral("<refused>"));
        EXPECT_EQ(AcceptableOutsideName(QString::fromLatin1(c.name)), c.stored != nullptr);
    }
    EXPECT_EQ(FileInDirectory(dir, QStringLiteral("Sub"), QString()), dir + QStringLiteral("Sub"));
    EXPECT_TRUE(StaysInDirectory(QString(33, u'x')));
    EXPECT_FALSE(AcceptableOutsideName(QString(33, u'x'))) << "a name from outside has 32 at most";
}
