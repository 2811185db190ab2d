#include "filestore/LastFile.h"

#include "Frontend/Reload.h"
#include "InstallationFixture.h"
#include "RecordingFrame.h"
#include "filestore/SelectDirectory.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString LastFileLst = QStringLiteral("C:\\Kestrova\\Lastfile.lst");

class LastFileTest : public ::testing::Test {
protected:
    void SetUp() override { fixture.Load(); }
    InstallationFixture fixture;
};

TEST_F(LastFileTest, RememberWritesDirectoryNameAndEndMarker) {
    RememberLastFile(fixture.session(), QStringLiteral("  Parts "), QStringLiteral(" Bracket  "));
    EXPECT_EQ(fixture.Read(LastFileLst), QByteArray("Parts\r\nBracket\r\n******\r\n"));
}

TEST_F(LastFileTest, RememberLeavesTheMemoryForEmptyTextsAndDrives) {
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
    const QByteArray before = fixture.Read(LastFileLst);
    RememberLastFile(fixture.session(), QStringLiteral("A:"), QStringLiteral("Bracket"));
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("   "));
    RememberLastFile(fixture.session(), QString(), QStringLiteral("Cover"));
    EXPECT_EQ(fixture.Read(LastFileLst), before);
}

TEST_F(LastFileTest, RecallFindsTheFileByKind) {
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
    for (int kind : {1, 2, 3}) {
        QString directory, name;
        EXPECT_TRUE(RecallLastFile(fixture.session(), directory, name, kind)) << "kind " << kind;
        EXPECT_EQ(directory, QStringLiteral("Parts"));
        EXPECT_EQ(name, QStringLiteral("Bracket"));
    }
}

TEST_F(LastFileTest, AProgramIsNotRecalledAsADrawingAndTheMemoryIsEmptied) {
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Cover"));
    QString directory, name;
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 1));
    EXPECT_TRUE(name.isEmpty());
    EXPECT_EQ(fixture.ReadLines(LastFileLst), QStringList{QStringLiteral("******")});
    // Emptied: not even the program is recalled any more.
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 2));
}

TEST_F(LastFileTest, RecallReadsItemsWithTheNameCutAtAComma) {
    fixture.Write(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Left.prg"), "%\r\n");
    fixture.WriteLines(LastFileLst,
                       {QStringLiteral("Parts"), QStringLiteral("Left,Right"), QStringLiteral("******")});
    QString directory, name;
    EXPECT_TRUE(RecallLastFile(fixture.session(), directory, name, 2));
    EXPECT_EQ(name, QStringLiteral("Left"));
}

TEST_F(LastFileTest, AMissingOrEmptiedMemoryRecallsNothing) {
    QString directory, name;
    ASSERT_FALSE(fixture.OnDisk(LastFileLst));
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 3));
    EXPECT_FALSE(fixture.OnDisk(LastFileLst));

    ClearLastFile(fixture.session());
    EXPECT_EQ(fixture.Read(LastFileLst), QByteArray("******\r\n"));
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 3));

    // Cut short by hand: one line and no name.
    fixture.WriteLines(LastFileLst, {QStringLiteral("Parts")});
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 3));
    EXPECT_EQ(fixture.Read(LastFileLst), QByteArray("******\r\n"));
}

TEST_F(LastFileTest, ARemovedFileIsForgotten) {
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
    fixture.Remove(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Bracket.drw"));
    fixture.Remove(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg"));
    QString directory, name;
    EXPECT_FALSE(RecallLastFile(fixture.session(), directory, name, 3));
    EXPECT_EQ(fixture.Read(LastFileLst), QByteArray("******\r\n"));
}

} // namespace

namespace {

// Another machine: what was remembered belongs to the machine before, even where the new
// machine has a file of the same name in a directory of the same name.
TEST_F(LastFileTest, AnotherMachineForgetsTheLastFile) {
    fixture.Write(QStringLiteral("C:\\Jobs\\RAINER\\Parts\\Bracket.prg"), "G1\r\n");
    kestrova::testing::RecordingFrame frame;
    const auto changeTo = [&](const char* machine) {
        RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
        QStringList cfg = fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
        cfg[3] = QString::fromLatin1(machine);
        cfg[4] = QStringLiteral("Parts");
        fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"), cfg);
        ReloadAfterChange(fixture.session(), frame);
        return fixture.ReadLines(LastFileLst);
    };
    EXPECT_EQ(changeTo("1"), (QStringList{"Parts", "Bracket", "******"})) << "the same machine keeps it";
    EXPECT_EQ(changeTo("2"), QStringList{"******"});
}

} // namespace

// Names of the data directory with characters of bytes 0x80..0x9F are remembered as those bytes
// and found again: the current directory over a reload, the last file over a recall.
TEST_F(LastFileTest, HighCharacterNamesAreRememberedAsTheirBytesAndFoundAgain) {
    const struct {
        QString directory;
        QString name;
        QByteArray directoryBytes;
        QByteArray nameBytes;
    } cases[] = {
        {QStringLiteral("Teile\u20AC"), QStringLiteral("\u017D1"), "Teile\x80",
         "\x8E"
         "1"},
        {QStringLiteral("\u0160\u2122"), QStringLiteral("\u0178 \u00A0x"), "\x8A\x99", "\x9F \xA0x"},
    };
    for (const auto& c : cases) {
        fixture.Write(QStringLiteral("C:\\Jobs\\PUNCH1\\") + c.directory + u'\\' + c.name + ".prg", "%\r\n");
        SelectDirectory(fixture.session(), c.directory);
        EXPECT_TRUE(fixture.Read(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"))
                        .endsWith("\r\n" + c.directoryBytes + "\r\n******\r\n"));
        fixture.Load();
        EXPECT_EQ(fixture.Settings().CurrentDir, c.directory) << "the same directory after a reload";
        RememberLastFile(fixture.session(), c.directory, c.name);
        EXPECT_EQ(fixture.Read(LastFileLst), c.directoryBytes + "\r\n" + c.nameBytes + "\r\n******\r\n");
        QString directory, name;
        EXPECT_TRUE(RecallLastFile(fixture.session(), directory, name, 2));
        EXPECT_EQ(directory, c.directory);
        EXPECT_EQ(name, c.name);
    }
}
