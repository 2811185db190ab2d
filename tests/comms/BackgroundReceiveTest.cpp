#include "comms/BackgroundReceive.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "settings/SettingsFile.h"

#include <QDirIterator>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;
using kestrova::testing::ScriptedSerialLine;

namespace {

const QString Cms = QStringLiteral("C:\\Kestrova\\Kestrova.cms");
const QString Tmp = QStringLiteral("C:\\Kestrova\\Receive.tmp");
const QString Lst = QStringLiteral("C:\\Kestrova\\Receive.lst");
const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

QStringList CmsLines(const QString& port, const QString& trailer, const QString& endSequence = QString(),
                     const QString& filter = QStringLiteral("0,127")) {
    return {LabelledLine("Title", "Background receive"),
            LabelledLine("Port", port),
            LabelledLine("Baud", "9600"),
            LabelledLine("Parity", "E"),
            LabelledLine("Data Bits", "7"),
            LabelledLine("Stop Bits", "2"),
            LabelledLine("Handshake", "XON/XOFF"),
            LabelledLine("Start Mode", ""),
            LabelledLine("Start Character", ""),
            LabelledLine("Leader", ""),
            LabelledLine("Line End", "1,13,1,10"),
            LabelledLine("Trailer", trailer),
            LabelledLine("End Sequence", endSequence),
            LabelledLine("Send Filter", ""),
            LabelledLine("Receive Filter", filter),
            LabelledLine("Receive Time Out", "0")};
}

// Every file below a host directory, as paths relative to it.
QStringList Tree(const QString& hostDir) {
    QStringList files;
    QDirIterator it(hostDir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files << it.next().mid(hostDir.size() + 1);
    files.sort();
    return files;
}

class BackgroundReceiveTest : public ::testing::Test {
protected:
    void SetUp() override { kestrova::testing::TestApplication(); }

    // Loads the installation with a "Kestrova.cms" for port 2 and starts the receive.
    void Begin(const QString& trailer = QStringLiteral("1,37"), const QString& endSequence = QString(),
               const QString& filter = QStringLiteral("0,127")) {
        fx.WriteLines(Cms, CmsLines("2", trailer, endSequence, filter));
        fx.Load();
        auto line = std::make_unique<ScriptedSerialLine>();
        m_line = line.get();
        receive = std::make_unique<BackgroundReceive>(fx.session(), std::move(line));
        QObject::connect(receive.get(), &BackgroundReceive::ReceiveListChanged, [this] { ++listChanges; });
        receive->Start();
    }
    ScriptedSerialLine& line() { return *m_line; }

    InstallationFixture fx;
    std::unique_ptr<BackgroundReceive> receive;
    int listChanges = 0;

private:
    ScriptedSerialLine* m_line = nullptr;
};

} // namespace

TEST_F(BackgroundReceiveTest, StartPreparesTheBackgroundPortAndPortZeroLeavesItClosed) {
    Begin();
    EXPECT_TRUE(line().PortOpen());
    EXPECT_EQ(line().RThreshold(), 1); // the background set-up, whose order PortSetup's tests hold
    EXPECT_EQ(receive->TempPath(), Tmp);
    EXPECT_EQ(receive->ListPath(), Lst);

    fx.WriteLines(Cms, CmsLines("0", "1,37"));
    receive->Start();
    EXPECT_FALSE(line().PortOpen());
    EXPECT_FALSE(receive->Settings().Enabled);
    fx.Remove(Cms);
    receive->Start();
    EXPECT_FALSE(line().PortOpen());
}

// Received bytes 0x80..0x9F are filtered and matched by the settings' codes of those bytes, and
// names in the header are the names the data directory then lists, shown as Windows-1252.
TEST_F(BackgroundReceiveTest, HighBytesInCodesNamesAndTextKeepTheirMeaning) {
    Begin(QStringLiteral("1,153"), QString(), QStringLiteral("138"));
    line().Feed("\x17PUNCH1\r\n\x18Teile\x80\r\n\x19\x8E"
                "1\r\nG1 \x85\x8A\x9F\r\n\x99");
    const QString teile = QStringLiteral("C:\\Jobs\\PUNCH1\\Teile\u20AC\\");
    EXPECT_EQ(fx.Files().Find(QStringLiteral("C:\\Jobs\\PUNCH1\\T*"), EntryKinds::Directories),
              QStringList(QStringLiteral("Teile\u20AC")));
    EXPECT_EQ(fx.Files().Find(teile + "*.prg", EntryKinds::Files),
              QStringList(QStringLiteral("\u017D1.prg")));
    EXPECT_EQ(fx.Read(teile + QStringLiteral("\u017D1.prg")), "G1 \x85\x9F\r\n");
    EXPECT_EQ(fx.Read(Lst), "\x8E"
                            "1 in Teile\x80 for Trumpf Punch 5000\r\n");
    EXPECT_EQ(receive->ReceiveList().entries,
              QStringList(QStringLiteral("\u017D1 in Teile\u20AC for Trumpf Punch 5000")));
    EXPECT_TRUE(fx.Read(QStringLiteral("C:\\Kestrova\\Transfer.log"))
                    .contains("  \x8E"
                              "1  "));
}

TEST_F(BackgroundReceiveTest, TwoProgramsInOneChunkAndTheTrailersLastCharacter) {
    Begin();
    line().Feed("abc%def%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "abc");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "%def");
    EXPECT_FALSE(receive->Receiving());
    EXPECT_EQ(fx.ReadLines(Lst), (QStringList{"New Program 1 in Parts for Trumpf Punch 5000",
                                              "New Program 2 in Parts for Trumpf Punch 5000"}));
    EXPECT_EQ(receive->ReceiveList().entries, fx.ReadLines(Lst));
    EXPECT_TRUE(receive->ReceiveFrameVisible());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());

    // The same text in two chunks: the first trailer ends its chunk, so its character is lost.
    line().Feed("abc%");
    line().Feed("def%");
    EXPECT_EQ(fx.Read(Parts + "New Program 3.prg"), "abc");
    EXPECT_EQ(fx.Read(Parts + "New Program 4.prg"), "def");
}

TEST_F(BackgroundReceiveTest, HeaderLinesNameMachineDirectoryAndProgram) {
    Begin();
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\RAINER\\Sheets"));
    line().Feed("\x17rainer\r\n\x18Sheets \r\n  \x19 P100\r\n  G1 X1  \r\n\r\n\tG2\r\nM30");
    line().Feed("%");
    EXPECT_EQ(fx.Read("C:\\Jobs\\RAINER\\Sheets\\P100.prg"), "G1 X1\r\n\tG2\r\nM30\r\n")
        << "blanks are trimmed, a tab is part of the line";
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{"P100 in Sheets for Rainer Combi 1250"});
}

TEST_F(BackgroundReceiveTest, EachHeaderLineOnlyCountsForItsOwnMarker) {
    Begin();
    // ETB in line 2 means nothing; the program name alone is found, so the lines with
    // markers are all left out.
    line().Feed("G0\r\n\x17LASER\r\n\x19P7\r\nG1\r\n\x18Late\r\n%");
    EXPECT_EQ(fx.Read(Parts + "P7.prg"), "G0\r\nG1\r\n");
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{"P7 in Parts for Trumpf Punch 5000"});
}

TEST_F(BackgroundReceiveTest, AnUnknownMachineFilesForTheCurrentOne) {
    Begin();
    line().Feed("\x17NOSUCH\r\n\x18Parts\r\n\x19P200\r\nG1\r\n%");
    EXPECT_EQ(fx.Read(Parts + "P200.prg"), "G1\r\n");
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{"P200 in Parts for Trumpf Punch 5000"});
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\NOSUCH"));
}

TEST_F(BackgroundReceiveTest, HostileHeaderValuesCountAsAbsent) {
    Begin();
    const QStringList before = Tree(fx.Root());
    line().Feed("\x17..\r\n\x18..\\..\\Evil\r\n\x19/etc/passwd\r\nG1\r\n%");
    line().Feed("\r\n\x18.\r\n\x19"
                "C:x\r\nG2\r\n%");
    line().Feed("\r\n\x18"
                "A23456789012345678901234567890123\r\n\x19P\x01Q\r\nG3\r\n%");
    line().Feed("\x17\r\n\x18\r\n\x19"
                "A2345678901234567890123456789012\r\nG4\r\n%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G1\r\n");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "G2\r\n");
    EXPECT_EQ(fx.Read(Parts + "New Program 3.prg"), "G3\r\n");
    EXPECT_EQ(fx.Read(Parts + "A2345678901234567890123456789012.prg"), "G4\r\n"); // 32 characters is fine
    QStringList added = Tree(fx.Root());
    for (const QString& f : before)
        added.removeOne(f);
    added.removeOne("c/Kestrova/Transfer.log"); // every program filed is logged there
    EXPECT_EQ(added,
              (QStringList{"c/Jobs/PUNCH1/Parts/A2345678901234567890123456789012.prg",
                           "c/Jobs/PUNCH1/Parts/New Program 1.prg", "c/Jobs/PUNCH1/Parts/New Program 2.prg",
                           "c/Jobs/PUNCH1/Parts/New Program 3.prg", "c/Kestrova/Receive.lst",
                           "c/Kestrova/Receive.tmp"}));
}

TEST_F(BackgroundReceiveTest, ReplacesAProgramAndTakesTheFirstFreeDefaultName) {
    Begin();
    fx.Write(Parts + "New Program 1.prg", "old one");
    fx.Write(Parts + "New Program 3.prg", "old three");
    line().Feed("\r\n\r\n\x19"
                "Cover\r\nG9\r\n%");
    line().Feed("raw\r\nbytes \r\n\r\n%");
    line().Feed("more%");
    EXPECT_EQ(fx.Read(Parts + "Cover.prg"), "G9\r\n");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "raw\r\nbytes \r\n\r\n"); // byte for byte
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "old one");
    EXPECT_EQ(fx.Read(Parts + "New Program 4.prg"), "more");
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(BackgroundReceiveTest, FilteredCharactersStillEndAProgram) {
    Begin("1,127");
    // NULs never get past the line; the filter drops DEL from the file even as the trailer.
    line().Feed(QByteArray("A\0B\x7f"
                           "CD\x7f",
                           7));
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "AB");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "CD");
    receive->TakeReceivedText(QString::fromLatin1(QByteArray("X\0Y\x7f", 4)));
    EXPECT_EQ(fx.Read(Parts + "New Program 3.prg"), "XY");
}

TEST_F(BackgroundReceiveTest, TooShortProgramsAreDiscardedSilently) {
    Begin();
    line().Feed("%"); // an empty program
    line().Feed("x%");
    EXPECT_FALSE(fx.OnDisk(Tmp));
    EXPECT_FALSE(fx.OnDisk(Lst));
    EXPECT_FALSE(fx.OnDisk(Parts + "New Program 1.prg"));
    EXPECT_FALSE(receive->ReceiveFrameVisible());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
    line().Feed("xy%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "xy");
}

TEST_F(BackgroundReceiveTest, TheCharacterAfterATrailerNeverStartsTheNextOne) {
    Begin();
    // The match is left full after a trailer, so the next character always resets it.
    line().Feed("ab%");
    line().Feed("%cd%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "ab");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "%cd");
    line().Feed("ef%%gh%");
    EXPECT_EQ(fx.Read(Parts + "New Program 3.prg"), "ef");
    EXPECT_EQ(fx.Read(Parts + "New Program 4.prg"), "%%gh");
}

TEST_F(BackgroundReceiveTest, AMissedTrailerAndAnEmptyTrailer) {
    Begin("1,97,1,98"); // "ab"
    // The second "a" breaks the match and is not tried as a new start: "aab" ends nothing.
    line().Feed("xaab");
    EXPECT_TRUE(receive->Receiving());
    line().Feed("ab");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "xaaba");

    fx.WriteLines(Cms, CmsLines("2", ""));
    receive->Start();
    line().Feed("abc%def%");
    line().Feed("ghi");
    EXPECT_TRUE(receive->Receiving());
    EXPECT_TRUE(fx.OnDisk(Tmp));
    EXPECT_FALSE(fx.OnDisk(Parts + "New Program 2.prg"));
    EXPECT_EQ(fx.ReadLines(Lst).size(), 1);
}

TEST_F(BackgroundReceiveTest, TheEndMatchIsComparedOverTheTrailersLength) {
    Begin("1,37,1,37", "1,37,1,65"); // trailer "%%", end sequence "%A"
    line().Feed("x%");
    EXPECT_EQ(receive->TrailerMatch(), "%");
    EXPECT_EQ(receive->EndMatch(), "%");
    line().Feed("A");
    // "%A" is the whole end sequence, but the trailer's match has just been reset to nothing.
    EXPECT_EQ(receive->TrailerMatch(), "");
    EXPECT_EQ(receive->EndMatch(), "");
    EXPECT_TRUE(receive->Receiving());
    line().Feed("%%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "x%A%");
}

TEST_F(BackgroundReceiveTest, OneMachineListsWithoutTheMachine) {
    fx.WriteLines(
        "C:\\Kestrova\\Machine.lst",
        {QStringLiteral("1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\""), QStringLiteral("******")});
    Begin();
    line().Feed("\x17PUNCH1\r\n\x18Parts\r\n\x19P100\r\nG1\r\n%");
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{"P100 in Parts"});
}

TEST_F(BackgroundReceiveTest, AListShorterThanFourBytesIsTreatedAsAbsent) {
    fx.Write(Lst, "ab\r");
    Begin();
    EXPECT_FALSE(fx.OnDisk(Lst)); // deleted by the refresh at start
    EXPECT_FALSE(receive->ReceiveFrameVisible());
    fx.Write(Lst, "ab\r");
    line().Feed("xy%");
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{"New Program 1 in Parts for Trumpf Punch 5000"});
    fx.Write(Lst, "  First  \r\n\r\n Second\r\n");
    receive->RefreshReceiveList();
    EXPECT_EQ(receive->ReceiveList().entries, (QStringList{"First", "Second"}));
    EXPECT_TRUE(receive->ReceiveFrameVisible());
}

TEST_F(BackgroundReceiveTest, TheReceiveButtonForgetsTheListAndTheListIsReadOnly) {
    Begin();
    line().Feed("xy%");
    const int changes = listChanges;
    ASSERT_TRUE(receive->ReceiveFrameVisible());
    const_cast<ListModel&>(receive->ReceiveList()).selected = 0;
    EXPECT_TRUE(receive->ReceiveList_GotFocus());
    EXPECT_EQ(receive->ReceiveList().selected, -1);

    receive->ReceiveButton_Click();
    EXPECT_FALSE(fx.OnDisk(Lst));
    EXPECT_FALSE(receive->ReceiveFrameVisible());
    EXPECT_EQ(receive->ReceiveList().Count(), 1); // refilled only at the next refresh
    EXPECT_GT(listChanges, changes);
    EXPECT_FALSE(receive->ReceiveList_GotFocus());
    receive->RefreshReceiveList();
    EXPECT_EQ(receive->ReceiveList().Count(), 0);
}

TEST_F(BackgroundReceiveTest, StoppingInTheMiddleDiscardsTheProgram) {
    Begin();
    line().Feed("half a progr");
    EXPECT_TRUE(fx.OnDisk(Tmp));
    receive->Stop();
    EXPECT_FALSE(line().PortOpen());
    EXPECT_FALSE(fx.OnDisk(Tmp));
    EXPECT_FALSE(receive->Receiving());
    receive->Start();
    line().Feed("am%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "am");
}

TEST_F(BackgroundReceiveTest, AHangUpClosesThePortReportsOnceAndFilesNothing) {
    Begin();
    line().Feed("G1\r\nG2");
    line().HangUp();
    line().HangUp();
    EXPECT_FALSE(line().PortOpen());
    EXPECT_FALSE(fx.OnDisk(Tmp));
    EXPECT_FALSE(fx.OnDisk(Lst));
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""))
        << fx.Messages().Texts().first().toStdString();
    EXPECT_TRUE(Tree(fx.Host("C:\\Jobs\\PUNCH1\\Parts")).filter("New Program").isEmpty());
}

TEST_F(BackgroundReceiveTest, AProgramThatCannotBeFiledIsKeptInAFileOfItsOwn) {
    Begin();
    FaultInjector faults(fx.Files());
    struct Case {
        const char* what;
        std::function<void()> fault;
        QByteArray program; // sent before the trailer
        QString reason;
    };
    const Case cases[] = {
        {"a directory that cannot be made", [&] { fx.Remove("C:\\Jobs\\RAINER"); },
         "\x17RAINER\r\n\x18Sheets\r\nG1\r\n", "Path not found"},
        {"a full disk", [&] { faults.Fail(FileStep::Write, "New Program 2.prg", ENOSPC); }, "G5\r\nG6\r\n",
         "Disk full"},
        {"Receive.tmp refuses a write", [&] { faults.Fail(FileStep::Write, "Receive.tmp", ENOSPC); },
         "G7\r\n", "Disk full"},
        {"moved by a copy",
         [&] {
             fx.Files().SetFaultHook([failed = false](FileStep step, const QString& path) mutable {
                 if (step == FileStep::Rename)
                     return EIO;
                 if (step == FileStep::Write && path.endsWith("New Program 4.prg") && !failed) {
                     failed = true;
                     return ENOSPC;
                 }
                 return 0;
             });
         },
         "G8\r\n", "Disk full"},
    };
    int n = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ++n;
        fx.Messages().Clear();
        c.fault();
        // The rest of the chunk is the next program, filed as usual.
        line().Feed(c.program + "%G2%");
        const QString kept = QStringLiteral("C:\\Kestrova\\Unfiled %1.prg").arg(n);
        ASSERT_TRUE(fx.OnDisk(kept));
        EXPECT_EQ(fx.Read(kept), c.program);
        ASSERT_EQ(fx.Messages().Texts().size(), 1);
        EXPECT_TRUE(fx.Messages().Texts().first().contains("\"" + kept + "\""));
        EXPECT_TRUE(fx.Messages().Texts().first().contains(c.reason));
        EXPECT_TRUE(receive->ReceiveList().entries.filter("Unfiled " + QString::number(n)).size() == 1)
            << receive->ReceiveList().entries.join('|').toStdString();
        EXPECT_TRUE(line().PortOpen());
        faults.Fail(FileStep::Write, "no such file");
    }
    for (int program = 1; program <= n; ++program)
        EXPECT_EQ(fx.Read(Parts + QStringLiteral("New Program %1.prg").arg(program)), "%G2");

    // Neither renamed nor copied: the program stays in "Receive.tmp", the message says so, and
    // neither the next program nor a stop replaces it; once the disk takes it, it is moved.
    fx.Messages().Clear();
    fx.Files().SetFaultHook([](FileStep step, const QString& path) {
        const bool written = path.endsWith("New Program 5.prg") || path.contains("Unfiled");
        return step == FileStep::Rename || (step == FileStep::Write && written) ? EIO : 0;
    });
    line().Feed("G9\r\n%G10");
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"C:\\Kestrova\\Receive.tmp\""))
        << fx.Messages().Texts().first().toStdString();
    receive->Stop();
    EXPECT_EQ(fx.Read(Tmp), "G9\r\n%G10");
    faults.Fail(FileStep::Write, "no such file");
    receive->Start();
    line().Feed("G11%");
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Unfiled 5.prg"), "G9\r\n%G10");
    EXPECT_EQ(fx.Read(Parts + "New Program 5.prg"), "G11");
}

TEST_F(BackgroundReceiveTest, AMissingOrLostDeviceIsToldOnceAndWatchedForUntilItIsBack) {
    fx.WriteLines(Cms, CmsLines("2", "1,37"));
    fx.Load();
    auto owned = std::make_unique<ScriptedSerialLine>();
    ScriptedSerialLine& l = *owned;
    l.SetDevicePresent(false);
    receive = std::make_unique<BackgroundReceive>(fx.session(), std::move(owned));
    receive->Start(); // no error passes out: the program goes on
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
    EXPECT_EQ(receive->LineState(), BackgroundLineState::WaitingForDevice);
    EXPECT_TRUE(l.Watching());

    l.SetDevicePresent(true);
    EXPECT_EQ(receive->LineState(), BackgroundLineState::Listening);
    EXPECT_TRUE(l.PortOpen());
    EXPECT_FALSE(l.Watching());

    // Pulled out in the middle of a program, and put back: one message, then listening again.
    l.Feed("G1\r\nG2");
    l.Unplug();
    EXPECT_EQ(receive->LineState(), BackgroundLineState::WaitingForDevice);
    EXPECT_EQ(fx.Messages().Texts().size(), 2);
    l.SetDevicePresent(true); // back, but dead at once (its node not yet gone): not told again
    l.Unplug();
    EXPECT_EQ(fx.Messages().Texts().size(), 2);
    l.SetDevicePresent(true);
    EXPECT_EQ(receive->LineState(), BackgroundLineState::Listening);
    l.Feed("G3%");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G3");

    // Stopping, even with a temporary file that cannot be deleted, says so once at most.
    l.Feed("G4");
    {
        FaultInjector faults(fx.Files());
        faults.Fail(FileStep::Delete, "Receive.tmp", EIO, 1, true);
        fx.Messages().Clear();
        l.Unplug();
        EXPECT_EQ(fx.Messages().Texts().size(), 1);
        EXPECT_EQ(receive->LineState(), BackgroundLineState::WaitingForDevice);
    }
    receive->Stop();
    EXPECT_EQ(receive->LineState(), BackgroundLineState::Off);
    EXPECT_FALSE(l.Watching());
}
