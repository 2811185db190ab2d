#include "filestore/Listings.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "filestore/SelectDirectory.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

class Listings : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }
    InstallationFixture fx;
    ListModel list;
};

TEST_F(Listings, FileListsShowBareNamesAndJoinDrawingsWithPrograms) {
    FillFileList(fx.session(), list, "PUNCH1", "Parts", "cover", Selection::Named, 2, {});
    EXPECT_EQ(list.entries, (QStringList{"bracket-2", "Bracket", "Cover", "X"}));
    EXPECT_EQ(list.selected, 2);
    EXPECT_EQ(fx.Messages().BusyCount(), 1);
    EXPECT_EQ(fx.Messages().BusyDepth(), 0) << "the hourglass is always taken down";

    FillFileList(fx.session(), list, "PUNCH1", "Parts", "x", Selection::Named, 3, {});
    EXPECT_EQ(list.entries, (QStringList{"bracket-2", "Bracket", "Cover", "X"}))
        << "X.drw and X.prg give one line";
    EXPECT_EQ(list.selected, 3);

    FillFileList(fx.session(), list, "PUNCH1", "Parts", {}, Selection::First, 1, {});
    EXPECT_EQ(list.entries, (QStringList{"Bracket", "X"}));
    EXPECT_EQ(list.selected, 0);

    FillFileList(fx.session(), list, "PUNCH1", "Parts", {}, Selection::None, 0, " x.d* ");
    EXPECT_EQ(list.entries, (QStringList{"X", "X"})) << "one pattern: nothing is joined";
    EXPECT_EQ(list.selected, -1);
    FillFileList(fx.session(), list, "PUNCH1", "Parts", {}, Selection::None, 0, "x.inf;x.rpt");
    EXPECT_EQ(list.entries, (QStringList{"X"}));
}

TEST_F(Listings, EmptyAndMissingDirectoriesGiveEmptyListsWithNothingSelected) {
    FillFileList(fx.session(), list, "PUNCH1", "Nowhere", {}, Selection::First, 3, {});
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(list.selected, -1);
    FillFileList(fx.session(), list, "PUNCH1", "Parts", {}, Selection::First, 0, "   ");
    EXPECT_EQ(list.Count(), 0);
    FillFileList(fx.session(), list, "PUNCH1", "A:", {}, Selection::First, 2, {});
    EXPECT_EQ(list.Count(), 0) << "an empty floppy";
    fx.Write(QStringLiteral("A:\\P001---.PRG"), "%");
    FillFileList(fx.session(), list, "PUNCH1", "A:", {}, Selection::First, 2, {});
    EXPECT_EQ(list.entries, (QStringList{"P001---"}));
    EXPECT_EQ(fx.Messages().BusyDepth(), 0);
}

TEST_F(Listings, DirectoryListsLeaveOutExsubsAndTheCurrentDirectoryWhenAsked) {
    fx.MakeDir(QStringLiteral("C:\\Jobs\\PUNCH1\\exsubs2"));
    FillDirectoryList(fx.session(), list, "PUNCH1", "parts", false, true, Selection::Named);
    EXPECT_EQ(list.entries, (QStringList{"Archive", "exsubs2", "Kestrova", "Parts"}));
    EXPECT_EQ(list.selected, 3);

    FillDirectoryList(fx.session(), list, "PUNCH1", "Parts", false, false, Selection::Named);
    EXPECT_EQ(list.entries, (QStringList{"Archive", "exsubs2", "Kestrova"}));
    EXPECT_EQ(list.selected, -1);
    FillDirectoryList(fx.session(), list, "PUNCH1", "Parts", false, false, Selection::First);
    EXPECT_EQ(list.selected, 0);
}

TEST_F(Listings, DirectoryListsOfferFloppiesAndRemovableDrivesButNotTheSystemDrive) {
    fx.Files().ChangeDirectory(QStringLiteral("C:\\Jobs"));
    FillDirectoryList(fx.session(), list, "RAINER", "A:", true, true, Selection::Named);
    EXPECT_EQ(list.entries,
              (QStringList{"Kestrova", "A: [Floppy Disk]", "E: [Removable Drive]", "G: [Removable Drive]"}))
        << "F: is fixed and C: is the system's own drive";
    EXPECT_EQ(list.selected, 1);
    EXPECT_EQ(fx.Files().CurrentDirectory(), QStringLiteral("C:\\Kestrova"))
        << "the program directory is current again";

    FillDirectoryList(fx.session(), list, "RAINER", "A:", true, false, Selection::Named);
    EXPECT_EQ(list.entries, (QStringList{"Kestrova", "E: [Removable Drive]", "G: [Removable Drive]"}));
}

TEST_F(Listings, SelectDirectoryFallsBackToTheFirstUsableEntryAndRewritesKestrovaCfg) {
    const QString cfg = QStringLiteral("C:\\Kestrova\\Kestrova.cfg");
    SelectDirectory(fx.session(), " kestrova ");
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("kestrova"));
    EXPECT_EQ(fx.Settings().CurrentPath, QStringLiteral("C:\\Jobs\\PUNCH1\\kestrova\\"));
    EXPECT_EQ(fx.ReadLines(cfg).value(4), QStringLiteral("kestrova"));

    for (const char* name : {"Missing", "", ".", "..", "exsubs", "G:", "H:"}) {
        SelectDirectory(fx.session(), QLatin1String(name));
        EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("Archive")) << name;
    }

    SelectDirectory(fx.session(), "A:");
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("A:"));
    EXPECT_EQ(fx.Settings().CurrentPath, QStringLiteral("A:\\"));
    EXPECT_EQ(fx.ReadLines(cfg),
              (QStringList{"C:\\Kestrova\\", "C:\\Kestrova\\Setup\\", "C:\\Jobs\\", "1", "A:", "******"}));
    {
        // The same choice again (as every start makes it) leaves the file alone; a new one, or a
        // file that differs in a single byte, has it rewritten.
        FaultInjector faults(fx.Files());
        faults.Fail(FileStep::Open, QStringLiteral("Kestrova.cfg"), EIO, 1, true);
        SelectDirectory(fx.session(), "A:");
        EXPECT_EQ(faults.Seen(), 0);
        fx.Write(cfg, fx.Read(cfg).replace("A:", "a:"));
        EXPECT_THROW(SelectDirectory(fx.session(), "A:"), SystemError);
        EXPECT_THROW(SelectDirectory(fx.session(), "Archive"), SystemError);
        EXPECT_EQ(faults.Fired(), 2);
    }

    // Plain files of the machine directory are taken as they come.
    fx.Write(QStringLiteral("C:\\Jobs\\PUNCH1\\0-notes.txt"), "");
    SelectDirectory(fx.session(), "Missing");
    EXPECT_EQ(fx.Settings().CurrentDir, QStringLiteral("0-notes.txt"));

    fx.Remove(QStringLiteral("C:\\Jobs\\RAINER\\Kestrova"));
    fx.Settings().MachineDir = QStringLiteral("RAINER");
    SelectDirectory(fx.session(), "Parts");
    EXPECT_EQ(fx.Settings().CurrentDir, QString()) << "nothing usable at all";
    EXPECT_EQ(fx.Settings().CurrentPath, QStringLiteral("C:\\Jobs\\RAINER\\\\"));
}
