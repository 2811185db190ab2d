#include "filestore/LastFile.h"

#include "Frontend/Reload.h"
#include "Frontend/StartUp.h"
#include "RecordingFrame.h"
#include "filestore/SelectDirectory.h"

#include <gtest/gtest.h>

using namespace kestrova;

namespace {

const QString LastFileLst = QStringLiteral("C:\\Kestrova\\Lastfile.lst");

using LastFileTest = kestrova::testing::FrameTest;

TEST_F(LastFileTest, RememberKeepsTheTrimmedTextsButNeverADriveOrAnEmptyText) {
    RememberLastFile(fx.session(), QStringLiteral("  Parts "), QStringLiteral(" Bracket  "));
    EXPECT_EQ(fx.Read(LastFileLst), QByteArray("Parts\r\nBracket\r\n******\r\n"));
    RememberLastFile(fx.session(), QStringLiteral("A:"), QStringLiteral("Bracket"));
    RememberLastFile(fx.session(), QStringLiteral("Parts"), QStringLiteral("   "));
    RememberLastFile(fx.session(), QString(), QStringLiteral("Cover"));
    EXPECT_EQ(fx.Read(LastFileLst), QByteArray("Parts\r\nBracket\r\n******\r\n"));
    ClearLastFile(fx.session());
    EXPECT_EQ(fx.Read(LastFileLst), QByteArray("******\r\n"));
}

TEST_F(LastFileTest, RecallFindsAFileOfTheKindAskedOrEmptiesTheMemory) {
    const QStringList bracket{"Parts", "Bracket", "******"};
    const struct {
        const char* memory;
        QStringList lines; // of "Lastfile.lst"; none: never written
        int kind;          // 1 a drawing, 2 a program, 3 either
        QString recalled;  // empty: nothing recalled, and the memory emptied
    } rows[] = {
        {"a drawing and a program, as a drawing", bracket, 1, "Bracket"},
        {"a drawing and a program, as a program", bracket, 2, "Bracket"},
        {"a drawing and a program, as either", bracket, 3, "Bracket"},
        {"a program only, as a drawing", {"Parts", "Cover", "******"}, 1, ""},
        {"a name cut at a comma", {"Parts", "Cover,Right", "******"}, 2, "Cover"},
        {"never written", {}, 3, ""},
        {"emptied", {"******"}, 3, ""},
        {"cut short by hand", {"Parts"}, 3, ""},
        {"a file removed since", {"Parts", "Removed", "******"}, 3, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.memory);
        fx.Remove(LastFileLst);
        if (!row.lines.isEmpty())
            fx.WriteLines(LastFileLst, row.lines);
        QString directory, name;
        EXPECT_EQ(RecallLastFile(fx.session(), directory, name, row.kind), !row.recalled.isEmpty());
        EXPECT_EQ(name, row.recalled);
        if (!row.recalled.isEmpty()) {
            EXPECT_EQ(directory, QStringLiteral("Parts"));
        }
        if (row.lines.isEmpty())
            EXPECT_FALSE(fx.OnDisk(LastFileLst)) << "a recall does not write a memory never written";
        else
            EXPECT_EQ(fx.ReadLines(LastFileLst), row.recalled.isEmpty() ? QStringList{"******"} : row.lines);
    }
}

TEST_F(LastFileTest, TheFileHereIsTheRememberedProgramOrDrawingOfTheCurrentDirectoryOnly) {
    SelectDirectory(fx.session(), QStringLiteral("Parts"));
    const struct {
        QStringList lines;
        QString here;
    } rows[] = {
        {{"parts", "bracket", "******"}, "bracket.prg"}, // a program and a drawing: the program
        {{"Parts", "Drawing", "******"}, "Drawing.drw"},
        {{"Sheets", "Bracket", "******"}, ""}, // another data directory
        {{"******"}, ""},
    };
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\Drawing.drw", "drawing");
    fx.Write("C:\\Jobs\\PUNCH1\\Sheets\\Bracket.prg", "%");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.lines.join(u',').toStdString());
        fx.WriteLines(LastFileLst, row.lines);
        EXPECT_EQ(LastFileHere(fx.session()), row.here);
    }
}

TEST_F(LastFileTest, AStaleMemoryIsForgottenAtStartUp) {
    fx.WriteLines(LastFileLst,
                  {QStringLiteral("Parts"), QStringLiteral("Deleted"), QStringLiteral("******")});
    ASSERT_EQ(LoadAtStartUp(fx.session()), 0);
    EXPECT_EQ(fx.ReadLines(LastFileLst), QStringList{"******"});
}

// Another machine: what was remembered belongs to the machine before, even where the new
// machine has a file of the same name in a directory of the same name.
TEST_F(LastFileTest, AnotherMachineForgetsTheLastFile) {
    fx.Write(QStringLiteral("C:\\Jobs\\RAINER\\Parts\\Bracket.prg"), "G1\r\n");
    const auto changeTo = [&](const char* machine) {
        RememberLastFile(fx.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
        QStringList cfg = fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
        cfg[3] = QString::fromLatin1(machine);
        cfg[4] = QStringLiteral("Parts");
        fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"), cfg);
        ReloadAfterChange(fx.session(), frame);
        return fx.ReadLines(LastFileLst);
    };
    EXPECT_EQ(changeTo("1"), (QStringList{"Parts", "Bracket", "******"})) << "the same machine keeps it";
    EXPECT_EQ(changeTo("2"), QStringList{"******"});
}

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
        fx.Write(QStringLiteral("C:\\Jobs\\PUNCH1\\") + c.directory + u'\\' + c.name + ".prg", "%\r\n");
        SelectDirectory(fx.session(), c.directory);
        EXPECT_TRUE(fx.Read(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"))
                        .endsWith("\r\n" + c.directoryBytes + "\r\n******\r\n"));
        fx.Load();
        EXPECT_EQ(fx.Settings().CurrentDir, c.directory) << "the same directory after a reload";
        RememberLastFile(fx.session(), c.directory, c.name);
        EXPECT_EQ(fx.Read(LastFileLst), c.directoryBytes + "\r\n" + c.nameBytes + "\r\n******\r\n");
        QString directory, name;
        EXPECT_TRUE(RecallLastFile(fx.session(), directory, name, 2));
        EXPECT_EQ(directory, c.directory);
        EXPECT_EQ(name, c.name);
    }
}

} // namespace
