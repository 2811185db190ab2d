// The background receive over a scripted line: what arrives is filed by the header and trailer
// rules, and under faults of the host (a full disk, a pulled drive) at each step a received
// program is afterwards whole where it was meant to go or whole in a file of its own.
#include "comms/BackgroundReceive.h"

#include "CommsInstallation.h"
#include "FaultInjector.h"
#include "comms/TransferLog.h"
#include "filestore/ProgramHistory.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Tmp = QStringLiteral("C:\\Kestrova\\Receive.tmp");
const QString Lst = QStringLiteral("C:\\Kestrova\\Receive.lst");

QString NewProgram(int n) {
    return Parts + QStringLiteral("New Program %1.prg").arg(n);
}
QString Stem(const QString& path) {
    return path.section(u'\\', -1).section(u'.', 0, 0);
}
QString InParts(const QString& program) {
    return program + " in Parts for Trumpf Punch 5000";
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

class BackgroundReceiveTest : public ::testing::Test, public ScriptedBackground {};

} // namespace

TEST(BackgroundReceive, WhatArrivesIsFiledByTheHeaderAndTrailerRules) {
    using Files = std::vector<std::pair<QString, QByteArray>>;
    const QByteArray header = "\x17PUNCH1\r\n\x18Parts\r\n\x19P100\r\nG1\r\n%";
    const struct {
        const char* what;
        Values settings = {};
        int machines = 3; // the first machines of the list
        Files before = {};
        QList<QByteArray> chunks;
        Files filed = {};        // the files' contents afterwards; no other file is added
        QStringList listed = {}; // "Receive.lst" and the receive list
        QStringList absent = {};
        QStringList kept = {}; // the history's files of a replaced program
        bool receiving = false;
    } cases[] = {
        {.what = "two programs in one chunk; the same in two loses the trailer's last character",
         .chunks = {"abc%def%", "abc%", "def%"},
         .filed = {{NewProgram(1), "abc"},
                   {NewProgram(2), "%def"},
                   {NewProgram(3), "abc"},
                   {NewProgram(4), "def"}},
         .listed = {InParts("New Program 1"), InParts("New Program 2"), InParts("New Program 3"),
                    InParts("New Program 4")}},
        {.what = "header lines name machine, directory and program; blanks trimmed, a tab kept",
         .chunks = {"\x17rainer\r\n\x18Sheets \r\n  \x19 P100\r\n  G1 X1  \r\n\r\n\tG2\r\nM30", "%"},
         .filed = {{"C:\\Jobs\\RAINER\\Sheets\\P100.prg", "G1 X1\r\n\tG2\r\nM30\r\n"}},
         .listed = {"P100 in Sheets for Rainer Combi 1250"}},
        {.what = "each header line counts only for its own marker",
         .chunks = {"G0\r\n\x17LASER\r\n\x19P7\r\nG1\r\n\x18Late\r\n%"},
         .filed = {{Parts + "P7.prg", "G0\r\nG1\r\n"}},
         .listed = {InParts("P7")}},
        {.what = "an unknown machine files for the current one",
         .chunks = {"\x17NOSUCH\r\n\x18Parts\r\n\x19P200\r\nG1\r\n%"},
         .filed = {{Parts + "P200.prg", "G1\r\n"}},
         .listed = {InParts("P200")},
         .absent = {"C:\\Jobs\\NOSUCH"}},
        {.what = "hostile header values count as absent; 32 characters are a name",
         .chunks = {"\x17..\r\n\x18..\\..\\Evil\r\n\x19/etc/passwd\r\nG1\r\n%",
                    "\r\n\x18.\r\n\x19"
                    "C:x\r\nG2\r\n%",
                    "\r\n\x18"
                    "A23456789012345678901234567890123\r\n\x19P\x01Q\r\nG3\r\n%",
                    "\x17\r\n\x18\r\n\x19"
                    "A2345678901234567890123456789012\r\nG4\r\n%"},
         .filed = {{NewProgram(1), "G1\r\n"},
                   {NewProgram(2), "G2\r\n"},
                   {NewProgram(3), "G3\r\n"},
                   {Parts + "A2345678901234567890123456789012.prg", "G4\r\n"}},
         .listed = {InParts("New Program 1"), InParts("New Program 2"), InParts("New Program 3"),
                    InParts("A2345678901234567890123456789012")}},
        {.what = "a named program is replaced; default names skip those taken; bytes kept as sent",
         .before = {{NewProgram(1), "old one"}, {NewProgram(3), "old three"}},
         .chunks = {"\r\n\r\n\x19"
                    "Cover\r\nG9\r\n%",
                    "raw\r\nbytes \r\n\r\n%", "more%"},
         .filed = {{Parts + "Cover.prg", "G9\r\n"},
                   {NewProgram(1), "old one"},
                   {NewProgram(2), "raw\r\nbytes \r\n\r\n"},
                   {NewProgram(3), "old three"},
                   {NewProgram(4), "more"}},
         .listed = {InParts("Cover") + " (replaced, 3 lines changed)", InParts("New Program 2"),
                    InParts("New Program 4")},
         .kept = {"c/Kestrova/History/00000001.prg", "c/Kestrova/History/History.lst"}},
        {.what = "filtered characters still end a program; NULs never pass the line",
         .settings = {{"Trailer", "1,127"}},
         .chunks = {QByteArray("A\0B\x7f"
                               "CD\x7f",
                               7)},
         .filed = {{NewProgram(1), "AB"}, {NewProgram(2), "CD"}},
         .listed = {InParts("New Program 1"), InParts("New Program 2")}},
        {.what = "programs under two characters are dropped silently",
         .chunks = {"%", "x%"},
         .absent = {Tmp, NewProgram(1)}},
        {.what = "two characters are a program",
         .chunks = {"%", "x%", "xy%"},
         .filed = {{NewProgram(1), "xy"}},
         .listed = {InParts("New Program 1")}},
        {.what = "the character after a trailer never starts the next one",
         .chunks = {"ab%", "%cd%", "ef%%gh%"},
         .filed =
             {{NewProgram(1), "ab"}, {NewProgram(2), "%cd"}, {NewProgram(3), "ef"}, {NewProgram(4), "%%gh"}},
         .listed = {InParts("New Program 1"), InParts("New Program 2"), InParts("New Program 3"),
                    InParts("New Program 4")}},
        {.what = "a character that breaks the match is not tried as a new start",
         .settings = {{"Trailer", "1,97,1,98"}},
         .chunks = {"xaab", "ab"},
         .filed = {{NewProgram(1), "xaaba"}},
         .listed = {InParts("New Program 1")}},
        {.what = "an empty trailer never ends a program",
         .settings = {{"Trailer", ""}},
         .chunks = {"abc%def%", "ghi"},
         .absent = {NewProgram(1)},
         .receiving = true},
        {.what = "the end sequence is matched over the trailer's length",
         .settings = {{"Trailer", "1,37,1,37"}, {"End Sequence", "1,37,1,65"}},
         .chunks = {"x%", "A", "%%"},
         .filed = {{NewProgram(1), "x%A%"}},
         .listed = {InParts("New Program 1")}},
        {.what = "one machine lists without the machine",
         .machines = 1,
         .chunks = {header},
         .filed = {{Parts + "P100.prg", "G1\r\n"}},
         .listed = {"P100 in Parts"}},
        {.what = "two machines list the machine",
         .machines = 2,
         .chunks = {header},
         .filed = {{Parts + "P100.prg", "G1\r\n"}},
         .listed = {InParts("P100")}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ScriptedBackground s;
        InstallationFixture& fx = s.fx;
        fx.WriteLines("C:\\Kestrova\\Machine.lst",
                      fx.ReadLines("C:\\Kestrova\\Machine.lst").mid(0, c.machines) << EndMarker);
        for (const auto& [path, bytes] : c.before)
            fx.Write(path, bytes);
        s.Start(c.settings);
        const QStringList before = Tree(fx.Root());
        for (const QByteArray& chunk : c.chunks)
            s.line->Feed(chunk);

        QStringList added;
        for (const auto& [path, bytes] : c.filed) {
            EXPECT_EQ(Contents(fx, path), bytes) << path.toStdString();
            added << fx.Host(path).mid(fx.Root().size() + 1);
        }
        if (!c.listed.isEmpty())
            added << QStringLiteral("c/Kestrova/Receive.lst");
        added << c.kept;
        const auto newFiles = [&](QStringList files) {
            for (const QString& f : before + QStringList{"c/Kestrova/Receive.tmp", "c/Kestrova/Transfer.log"})
                files.removeAll(f);
            files.sort();
            return files;
        };
        EXPECT_EQ(newFiles(Tree(fx.Root())), newFiles(added))
            << "nothing but the programs and the list lands";
        EXPECT_EQ(fx.OnDisk(Lst) ? fx.ReadLines(Lst) : QStringList(), c.listed);
        EXPECT_EQ(s.receive->ReceiveList().entries, c.listed);
        EXPECT_EQ(s.receive->ReceiveFrameVisible(), !c.listed.isEmpty());
        for (const QString& path : c.absent)
            EXPECT_FALSE(fx.OnDisk(path)) << path.toStdString();
        EXPECT_EQ(s.receive->Receiving(), c.receiving);
        if (c.receiving) {
            EXPECT_TRUE(fx.OnDisk(Tmp));
        }
        EXPECT_TRUE(fx.Messages().Texts().isEmpty());
    }
}

TEST_F(BackgroundReceiveTest, TheCmsPortDecidesWhetherTheBackgroundListens) {
    Start({{"Port", "1"}});
    EXPECT_TRUE(receive->Settings().Enabled);
    EXPECT_TRUE(line->PortOpen());
    EXPECT_EQ(line->Log().value(0), "CommPort=1");
    EXPECT_EQ(line->RThreshold(), 1); // the background set-up, whose order PortSetup's tests hold

    SetValues(fx, BackgroundCms, {{"Port", "0"}});
    receive->Start();
    EXPECT_FALSE(line->PortOpen());
    EXPECT_FALSE(receive->Settings().Enabled);
    fx.Remove(BackgroundCms);
    receive->Start();
    EXPECT_FALSE(line->PortOpen());
}

// Received bytes 0x80..0x9F are filtered and matched by the settings' codes of those bytes, and
// names in the header are the names the data directory then lists, shown as Windows-1252.
TEST_F(BackgroundReceiveTest, HighBytesInCodesNamesAndTextKeepTheirMeaning) {
    Start({{"Trailer", "1,153"}, {"Receive Filter", "138"}});
    line->Feed("\x17PUNCH1\r\n\x18Teile\x80\r\n\x19\x8E"
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

TEST_F(BackgroundReceiveTest, AListShorterThanFourBytesIsTreatedAsAbsent) {
    fx.Write(Lst, "ab\r");
    Start();
    EXPECT_FALSE(fx.OnDisk(Lst)); // deleted by the refresh at start
    EXPECT_FALSE(receive->ReceiveFrameVisible());
    fx.Write(Lst, "ab\r");
    line->Feed("xy%");
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{InParts("New Program 1")});
    fx.Write(Lst, "  First  \r\n\r\n Second\r\n");
    receive->RefreshReceiveList();
    EXPECT_EQ(receive->ReceiveList().entries, (QStringList{"First", "Second"}));
    EXPECT_TRUE(receive->ReceiveFrameVisible());
}

TEST_F(BackgroundReceiveTest, TheReceiveButtonForgetsTheListAndTheListIsReadOnly) {
    Start();
    int listChanges = 0;
    QObject::connect(receive.get(), &BackgroundReceive::ReceiveListChanged, [&] { ++listChanges; });
    line->Feed("xy%");
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

TEST_F(BackgroundReceiveTest, StoppingOrAHangUpInTheMiddleDiscardsTheProgram) {
    Start();
    line->Feed("half a progr");
    EXPECT_TRUE(fx.OnDisk(Tmp));
    receive->Stop();
    EXPECT_FALSE(line->PortOpen());
    EXPECT_FALSE(fx.OnDisk(Tmp));
    EXPECT_FALSE(receive->Receiving());
    receive->Start();
    line->Feed("am%");
    EXPECT_EQ(fx.Read(NewProgram(1)), "am");
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());

    // A hang-up closes the port and is told once, naming it.
    line->Feed("G1\r\nG2");
    line->HangUp();
    line->HangUp();
    EXPECT_FALSE(line->PortOpen());
    EXPECT_FALSE(fx.OnDisk(Tmp));
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""))
        << fx.Messages().Texts().first().toStdString();
    EXPECT_EQ(Tree(fx.Host("C:\\Jobs\\PUNCH1\\Parts")).filter("New Program"),
              QStringList{"New Program 1.prg"});
    EXPECT_EQ(fx.ReadLines(Lst), QStringList{InParts("New Program 1")});
}

TEST(BackgroundReceive, AProgramIsFiledWholeOrKeptWholeAndTheNextOneIsFiled) {
    const QByteArray plain = "G1\r\nG2\r\n";
    const QByteArray headed = "\x17PUNCH1\r\n\x18Parts\r\n\x19Job\r\nG1\r\nG2\r\n";
    const QByteArray newDirectory = "\x17PUNCH1\r\n\x18Sheets\r\nG1\r\n";
    const QString unfiled = QStringLiteral("C:\\Kestrova\\Unfiled 1.prg");
    const struct {
        const char* what;
        FileStep step;
        const char* file;
        QByteArray program; // sent before its trailer, in two chunks
        QString filed = QStringLiteral("C:\\Kestrova\\Unfiled 1.prg"); // where it is whole afterwards
        QString next = NewProgram(1);                                  // where the next one goes
    } cases[] = {
        {"temporary file open", FileStep::Open, "Receive.tmp", plain},
        {"temporary file write", FileStep::Write, "Receive.tmp", plain},
        {"temporary file close", FileStep::Close, "Receive.tmp", plain},
        {"temporary file read", FileStep::Read, "Receive.tmp", plain},
        {"plain program open", FileStep::Open, "New Program 1.prg", plain},
        {"plain program write", FileStep::Write, "New Program 1.prg", plain},
        {"plain program close", FileStep::Close, "New Program 1.prg", plain},
        {"plain program sync", FileStep::Sync, "New Program 1.prg", plain},
        {"plain program replace", FileStep::Replace, "New Program 1.prg", plain},
        {"old program replaced", FileStep::Replace, "Job.prg", headed},
        {"old program's new text synced", FileStep::Sync, "Job.prg", headed},
        {"headed program open", FileStep::Open, "Job.prg", headed},
        {"headed program write", FileStep::Write, "Job.prg", headed},
        {"headed program close", FileStep::Close, "Job.prg", headed},
        {"new directory", FileStep::MakeDirectory, "Sheets", newDirectory},
        {"list line write", FileStep::Write, "Receive.lst", plain, NewProgram(1), NewProgram(2)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ScriptedBackground s;
        InstallationFixture& fx = s.fx;
        fx.Write(Parts + "Job.prg", "old job\r\n");
        s.Start();
        {
            FaultInjector faults(fx.Files());
            faults.Fail(c.step, QLatin1String(c.file), ENOSPC);
            s.line->Feed(c.program.left(5));
            s.line->Feed(c.program.mid(5) + "%");
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_EQ(Contents(fx, c.filed), c.program);
        EXPECT_EQ(fx.OnDisk(unfiled), c.filed == unfiled) << "filed, so not kept a second time";
        ASSERT_EQ(fx.Messages().Texts().size(), 1);
        const QString shown = fx.Messages().Texts().first();
        EXPECT_TRUE(shown.startsWith("Disk full")) << shown.toStdString();
        EXPECT_TRUE(shown.contains(QLatin1String(c.file) + u'"')) << shown.toStdString();
        if (c.filed == unfiled) {
            EXPECT_TRUE(shown.contains(u'"' + unfiled + u'"')) << shown.toStdString();
        }
        // Nothing half written where the program was meant to go, and the program it was to
        // replace is still there whole.
        EXPECT_EQ(Contents(fx, Parts + "Job.prg"), "old job\r\n");

        s.line->Feed("G9\r\n%");
        EXPECT_EQ(Contents(fx, c.next), "G9\r\n");
        EXPECT_TRUE(s.line->PortOpen());
        EXPECT_EQ(fx.Messages().Texts().size(), 1);
        // Listed: a kept program as not filed, the next as filed; a line that failed, not at all.
        const QStringList listed = fx.OnDisk(Lst) ? fx.ReadLines(Lst) : QStringList();
        EXPECT_EQ(listed.filter(Stem(c.filed)).size(), c.filed == unfiled ? 1 : 0);
        EXPECT_EQ(listed.value(listed.size() - 1), InParts(Stem(c.next)));
    }
}

// A disk that fills up in the middle of a write takes part of it and refuses the rest. The
// program goes to a file of its own (the disk has room again by then), every character once.
TEST(BackgroundReceive, ADiskThatFillsUpPartWayThroughAWriteLosesNoCharacter) {
    QByteArray program;
    for (int n = 1; n <= 20; ++n)
        program += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n * 7) + ".5 Y20.\r\n";
    const QString unfiled = QStringLiteral("C:\\Kestrova\\Unfiled 1.prg");
    ScriptedBackground s;
    s.Start();
    // The host's limit on a file's size stands for the full disk: a write across it is cut short.
    const auto oldSignal = std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit full = old;
    full.rlim_cur = 130;
    s.fx.Files().SetFaultHook([&](FileStep step, const QString& path) {
        if (step == FileStep::Open && path == unfiled)
            ::setrlimit(RLIMIT_FSIZE, &old);
        return 0;
    });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    for (qsizetype at = 0; at < program.size(); at += 50)
        s.line->Feed(program.mid(at, 50));
    s.line->Feed("%");
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldSignal);
    s.fx.Files().SetFaultHook({});

    EXPECT_EQ(Contents(s.fx, unfiled), program);
    ASSERT_EQ(s.fx.Messages().Texts().size(), 1);
    const QString shown = s.fx.Messages().Texts().first();
    EXPECT_TRUE(shown.contains("Receive.tmp\"") && shown.contains(unfiled)) << shown.toStdString();
}

TEST_F(BackgroundReceiveTest, AProgramThatCannotBeFiledIsKeptInAFileOfItsOwn) {
    Start();
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
        {"moved by a copy",
         [&] {
             fx.Files().SetFaultHook([failed = false](FileStep step, const QString& path) mutable {
                 if (step == FileStep::Rename)
                     return EIO;
                 if (step == FileStep::Write && path.endsWith("New Program 2.prg") && !failed) {
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
        line->Feed(c.program + "%G2%");
        const QString kept = QStringLiteral("C:\\Kestrova\\Unfiled %1.prg").arg(n);
        ASSERT_TRUE(fx.OnDisk(kept));
        EXPECT_EQ(fx.Read(kept), c.program);
        ASSERT_EQ(fx.Messages().Texts().size(), 1);
        EXPECT_TRUE(fx.Messages().Texts().first().contains("\"" + kept + "\""));
        EXPECT_TRUE(fx.Messages().Texts().first().contains(c.reason));
        EXPECT_TRUE(receive->ReceiveList().entries.filter("Unfiled " + QString::number(n)).size() == 1)
            << receive->ReceiveList().entries.join('|').toStdString();
        EXPECT_TRUE(line->PortOpen());
        faults.Fail(FileStep::Write, "no such file");
    }
    for (int program = 1; program <= n; ++program)
        EXPECT_EQ(fx.Read(NewProgram(program)), "%G2");

    // Neither renamed nor copied: the program stays in "Receive.tmp", the message says so, and
    // neither the next programs nor a stop replace it or add to it; once the disk takes it, it is
    // moved, and every program is whole in a file of its own.
    fx.Messages().Clear();
    bool diskFull = true;
    fx.Files().SetFaultHook([&diskFull](FileStep step, const QString& path) {
        const bool written = path.contains("New Program") || path.contains("Unfiled");
        return diskFull && (step == FileStep::Rename || (step == FileStep::Write && written)) ? EIO : 0;
    });
    line->Feed("G9\r\n%G10%");
    ASSERT_EQ(fx.Messages().Texts().size(), 2);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"C:\\Kestrova\\Receive.tmp\""))
        << fx.Messages().Texts().first().toStdString();
    EXPECT_TRUE(fx.Messages().Texts().last().contains("\"C:\\Kestrova\\Receive 2.tmp\""))
        << fx.Messages().Texts().last().toStdString();
    EXPECT_EQ(fx.Read(Tmp), "G9\r\n");
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Receive 2.tmp"), "%G10");
    line->Feed("G11");
    receive->Stop();
    EXPECT_EQ(fx.Read(Tmp), "G9\r\n");
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Receive 2.tmp"), "%G10");
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Receive 3.tmp")) << "a cut-off program is discarded";
    diskFull = false;
    receive->Start();
    line->Feed("G12%");
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Unfiled 3.prg"), "G9\r\n");
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Unfiled 4.prg"), "%G10");
    EXPECT_EQ(fx.Read(NewProgram(3)), "G12");
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Receive 2.tmp"));
}

// A program received over one of the same name replaces it as every rewrite does: through a
// link into a shared set-up, whose real file takes the new text and keeps its mode.
TEST_F(BackgroundReceiveTest, AProgramReplacedThroughALinkKeepsTheLinkAndItsMode) {
    fx.Write("C:\\Jobs\\Shared\\LINKED.prg", "old\r\n");
    const QString real = fx.Host("C:\\Jobs\\Shared\\LINKED.prg");
    const QString link = fx.Host(Parts + "LINKED.prg");
    ASSERT_TRUE(QFile::link(real, link));
    ASSERT_TRUE(QFile::setPermissions(real, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    const QFileDevice::Permissions mode = QFile::permissions(real);
    Start();
    for (const QByteArray& program : {QByteArray("\x17PUNCH1\r\n\x18Parts\r\n\x19LINKED\r\nG1 X1\r\n%"),
                                      QByteArray("\r\n\r\n\x19LINKED\r\nG2 X2\r\n%")}) {
        line->Feed(program);
        EXPECT_TRUE(QFileInfo(link).isSymLink());
        EXPECT_EQ(QFile::permissions(real), mode);
    }
    EXPECT_EQ(fx.Read("C:\\Jobs\\Shared\\LINKED.prg"), "G2 X2\r\n");
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(BackgroundReceiveTest, AMissingOrLostDeviceIsToldOnceAndWatchedForUntilItIsBack) {
    Start({}, false); // no error passes out: the program goes on
    ScriptedSerialLine& l = *line;
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
    EXPECT_EQ(fx.Read(NewProgram(1)), "G3");

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

// The same program received again: with changes it replaces the stored one, which the history
// keeps, and the list and the log count the changed lines; the same text again is unchanged.
TEST_F(BackgroundReceiveTest, AProgramReceivedOverItsStoredTextIsToldApart) {
    Start();
    const QByteArray header = "\x17PUNCH1\r\n\x18Parts\r\n\x19P100\r\n";
    line->Feed(header + "N10 G90\r\nN20 X1\r\nN30 M30\r\n%");
    line->Feed(header + "N10 G90\r\nN20 X2\r\nN30 M30\r\n%");
    line->Feed(header + "N10 G90\r\nN20 X2\r\nN30 M30\r\n%");
    EXPECT_EQ(fx.Read(Parts + "P100.prg"), "N10 G90\r\nN20 X2\r\nN30 M30\r\n");
    EXPECT_EQ(receive->ReceiveList().entries,
              (QStringList{InParts("P100"), InParts("P100") + " (replaced, 1 line changed)",
                           InParts("P100") + " (unchanged)"}));
    const QStringList log = LastTransferLogLines(fx.session(), 3);
    ASSERT_EQ(log.size(), 3);
    EXPECT_TRUE(log[0].endsWith("bytes  received")) << log[0].toStdString();
    EXPECT_TRUE(log[1].endsWith("bytes  received (replaced, 1 line changed)")) << log[1].toStdString();
    EXPECT_TRUE(log[2].endsWith("bytes  received (unchanged)")) << log[2].toStdString();
    const ProgramHistory history(fx.Files(), fx.Settings().SystemPath);
    const QList<HistoryVersion> versions = history.Versions(Parts + "P100.prg");
    ASSERT_EQ(versions.size(), 2) << "the first text, then the second once";
    EXPECT_EQ(versions[0].operation, "received on COM2");
    EXPECT_EQ(history.Bytes(versions[1]), "N10 G90\r\nN20 X1\r\nN30 M30\r\n");
}
