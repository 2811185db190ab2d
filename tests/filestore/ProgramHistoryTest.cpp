// The program history: every path that replaces, deletes or rewrites a program keeps the text it
// had; the limits drop the oldest versions; a history that cannot be written never stops the
// operation.
#include "filestore/ProgramHistory.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "editing/ProgramText.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "filestore/FileFamily.h"
#include "filestore/HistoryLimits.h"
#include "filestore/HistoryOperations.h"
#include "platform/TextFile.h"

#include <QFile>
#include <QFileInfo>
#include <functional>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QString Beta = QStringLiteral("C:\\Jobs\\PUNCH1\\Beta\\");
const QString Stick = QStringLiteral("E:\\");
const QByteArray Old = "N10 G90\r\nN20 X100 Y50\r\n";
const QByteArray New = "N10 G90\r\nN20 X120 Y50\r\nN30 M30\r\n";

class ProgramHistoryTest : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }
    // A new text for a program as the operations give it: a new file in the old one's place (a
    // write into the old file would change the kept name's text with it).
    void Replace(const QString& path, const QByteArray& bytes) {
        fx.Remove(path);
        fx.Write(path, bytes);
    }
    [[nodiscard]] ProgramHistory History() { return ProgramHistory(fx.Files(), fx.Settings().SystemPath); }
    [[nodiscard]] QList<HistoryVersion> Versions(const QString& program) {
        return History().Versions(program);
    }
    // The operations of a version list, newest first.
    [[nodiscard]] QStringList Operations(const QString& program) {
        QStringList ops;
        for (const HistoryVersion& v : Versions(program))
            ops << v.operation;
        return ops;
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(ProgramHistoryTest, EveryReplacingPathKeepsThePreviousText) {
    const QString x = Parts + "X.prg";
    struct Case {
        const char* path;
        QString program; // the program replaced, deleted or rewritten
        QString operation;
        std::function<void(Session&)> run;
        QByteArray after; // the program's bytes afterwards; empty: gone
    };
    const QList<Case> cases{
        {"family copy over", x, CopiedOverFrom(Beta),
         [](Session& s) { ASSERT_EQ(CopyFamily(s, Beta, "X", Parts, "X", 3), 1); }, New},
        {"family move over", x, MovedOverFrom(Beta),
         [](Session& s) { ASSERT_EQ(MoveFamily(s, Beta, "X", Parts, "X", 2), 1); }, New},
        {"family rename over", x, RenamedOverFrom("Y"),
         [](Session& s) { ASSERT_EQ(MoveFamily(s, Parts, "Y", Parts, "X", 2), 1); }, New},
        {"family delete", x, Deleted, [](Session& s) { DeleteFamily(s, Parts, "X", 3); }, {}},
        {"drawing deleted with its family",
         Parts + "X.drw",
         Deleted,
         [](Session& s) { DeleteFamily(s, Parts, "X", 1); },
         {}},
        {"import over", x, ImportedFrom(Stick),
         [](Session& s) { ASSERT_EQ(ImportFile(s, Stick, Parts, "X.prg"), 1); }, New},
        {"export over", Stick + "X.prg", ExportedFrom(Parts),
         [](Session& s) {
             ASSERT_EQ(ExportFile(s, Parts, "X", Stick, "X", ExportPrograms, false, false, "prg"), 1);
         },
         Old},
        {"renumber", x, Renumbered, [x](Session& s) { RenumberProgram(s, x, Int16(5), Int16(5), 0); },
         "N5 G90\r\nN10 X100 Y50\r\n"},
        {"strip numbers", x, NumbersStripped, [x](Session& s) { StripNumbers(s, x); }, "G90\r\nX100 Y50\r\n"},
        {"remove spaces", x, SpacesRemoved, [x](Session& s) { RemoveSpaces(s, x); },
         "N10G90\r\nN20X100Y50\r\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        for (const QString& dir : {Parts, Beta, Stick})
            fx.Remove(dir);
        fx.Remove("C:\\Kestrova\\History\\");
        fx.Write(x, Old);
        fx.Write(Parts + "X.drw", "old drawing");
        fx.Write(Parts + "Y.prg", New);
        fx.Write(Beta + "X.prg", New);
        fx.Write(Stick + "X.prg", c.program.startsWith(Stick) ? "stick text" : New);
        const QByteArray before = fx.Read(c.program);
        fx.Messages().Script({Answer::Yes});
        c.run(fx.session());

        const QList<HistoryVersion> versions = Versions(c.program);
        ASSERT_EQ(versions.size(), 1);
        EXPECT_EQ(versions[0].operation, c.operation);
        EXPECT_EQ(versions[0].size, before.size());
        EXPECT_EQ(History().Bytes(versions[0]), before);
        if (c.after.isEmpty())
            EXPECT_FALSE(fx.OnDisk(c.program));
        else
            EXPECT_EQ(fx.Read(c.program), c.after);
        const QStringList texts = fx.Messages().Texts();
        EXPECT_TRUE(texts.isEmpty() || texts == QStringList{OverwriteQuestion("X")})
            << texts.join('|').toStdString();
        fx.Messages().Clear();
    }
}

TEST_F(ProgramHistoryTest, KeptVersionsStayOutOfEveryListingAndSurviveTheNextReplacement) {
    const QString x = Parts + "X.prg";
    fx.Write(x, Old);
    KeepPreviousVersion(fx.session(), x, Renumbered);
    fx.Write(Parts + "Next.prg", New);
    fx.Files().MoveOver(Parts + "Next.prg", x);
    ASSERT_EQ(Versions("c:\\jobs\\punch1\\PARTS\\x.PRG").size(), 1) << "found in any letter case";
    EXPECT_EQ(History().Bytes(Versions(x)[0]), Old) << "the kept name holds the old text, not the new one";
    EXPECT_EQ(fx.Read(x), New);
    EXPECT_FALSE(fx.Files().List("C:\\Kestrova\\History\\", "*.prg", EntryKinds::Files).isEmpty());
    EXPECT_FALSE(fx.Files().List(Parts, "*", EntryKinds::Files).contains("Next.prg"));
    EXPECT_TRUE(fx.Files().List("C:\\Kestrova\\", "*.prg", EntryKinds::Files).isEmpty())
        << "the system directory lists no version: they lie in a directory of their own";
    // What the history does not keep, and what is not there, leaves no version.
    fx.Write(Parts + "X.inf", "info");
    KeepPreviousVersion(fx.session(), Parts + "X.inf", Deleted);
    KeepPreviousVersion(fx.session(), Parts + "Missing.prg", Deleted);
    EXPECT_TRUE(Versions(Parts + "X.inf").isEmpty());
    EXPECT_TRUE(Versions(Parts + "Missing.prg").isEmpty());
    // The same text is not kept twice in a row.
    KeepPreviousVersion(fx.session(), x, Renumbered);
    KeepPreviousVersion(fx.session(), x, Renumbered);
    EXPECT_EQ(Versions(x).size(), 2);
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(ProgramHistoryTest, TheTwentyFirstVersionDropsTheOldest) {
    const QString x = Parts + "X.prg";
    for (int n = 1; n <= 21; ++n) {
        Replace(x, QByteArray("text ") + QByteArray::number(n));
        KeepPreviousVersion(fx.session(), x, QStringLiteral("step %1").arg(n));
    }
    const QStringList ops = Operations(x);
    ASSERT_EQ(ops.size(), 20);
    EXPECT_EQ(ops.first(), "step 21");
    EXPECT_EQ(ops.last(), "step 2");
    EXPECT_FALSE(fx.Files().Exists("C:\\Kestrova\\History\\00000001.prg")) << "the dropped bytes are gone";
    EXPECT_EQ(History().Bytes(Versions(x).last()), "text 2");
    EXPECT_EQ(ReadAllLines(fx.Files(), History().CatalogPath()).size(), 20);
}

TEST_F(ProgramHistoryTest, TheSizeLimitDropsOldestFirstAcrossPrograms) {
    // 3 KB in all: three versions of 1 KB fit, a fourth drops the oldest of any program.
    fx.WriteLines("C:\\Kestrova\\History.cfg", HistoryLimitsLines({20, 3 * 1024}));
    EXPECT_EQ(ReadHistoryLimits(fx.Files(), "C:\\Kestrova\\History.cfg").bytes, 3 * 1024);
    const QByteArray kilobyte(1000, 'x');
    const QStringList order{"A.prg", "B.prg", "A.prg", "C.drw"};
    for (int n = 0; n < order.size(); ++n) {
        Replace(Parts + order[n], kilobyte + QByteArray::number(n));
        KeepPreviousVersion(fx.session(), Parts + order[n], QStringLiteral("step %1").arg(n));
    }
    EXPECT_EQ(Operations(Parts + "A.prg"), QStringList{"step 2"});
    EXPECT_EQ(Operations(Parts + "B.prg"), QStringList{"step 1"});
    EXPECT_EQ(Operations(Parts + "C.drw"), QStringList{"step 3"});

    // A version larger than the whole limit is still kept; everything older goes for it.
    fx.Write(Parts + "D.prg", QByteArray(8 * 1024, 'y'));
    KeepPreviousVersion(fx.session(), Parts + "D.prg", "big");
    for (const char* p : {"A.prg", "B.prg", "C.drw"})
        EXPECT_TRUE(Versions(Parts + p).isEmpty()) << p;
    EXPECT_EQ(Operations(Parts + "D.prg"), QStringList{"big"});
}

TEST_F(ProgramHistoryTest, WhatAnotherProgramKeptOrChangedMeanwhileCounts) {
    // The window and the DNC service keep into one store: each sees what the other kept since.
    const QString x = Parts + "X.prg";
    Replace(x, "first");
    KeepPreviousVersion(fx.session(), x, "here 1");
    fx.Write("C:\\Kestrova\\History\\00000002.prg", "second");
    QFile catalog(fx.Host(History().CatalogPath()));
    ASSERT_TRUE(catalog.open(QIODevice::Append));
    catalog.write("2,\"2026-11-25 08:00:00\",6,\"" + x.toLatin1() + "\",\"received on COM2\"\r\n");
    catalog.close();
    EXPECT_EQ(Operations(x), (QStringList{"received on COM2", "here 1"}));
    Replace(x, "third");
    KeepPreviousVersion(fx.session(), x, "here 3");
    EXPECT_EQ(Operations(x), (QStringList{"here 3", "received on COM2", "here 1"}));
    EXPECT_EQ(History().Bytes(Versions(x).first()), "third");

    // The limits changed by hand between two keepings hold for the second.
    fx.WriteLines("C:\\Kestrova\\History.cfg", HistoryLimitsLines({2, qint64(500) << 20}));
    Replace(x, "fourth");
    KeepPreviousVersion(fx.session(), x, "here 4");
    EXPECT_EQ(Operations(x), (QStringList{"here 4", "here 3"}));
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(ProgramHistoryTest, AStoreFailingAtAnyStepNeverStopsTheOperation) {
    const QString x = Parts + "X.prg";
    const QString version = "00000001.prg";
    struct Case {
        FileStep step;
        QString nameEnd;
        bool copied = false; // the host cannot link: the version is copied
    };
    const QList<Case> cases{
        {FileStep::MakeDirectory, "\\History"},
        {FileStep::Link, version},
        {FileStep::Open, "History.lst"},
        {FileStep::Write, "History.lst"},
        {FileStep::Close, "History.lst"},
        {FileStep::Sync, "History.lst"},
        {FileStep::Sync, version},
        {FileStep::Open, version, true},
        {FileStep::Write, version, true},
        {FileStep::Close, version, true},
        {FileStep::Sync, version, true},
        {FileStep::Replace, version, true},
        {FileStep::Read, x, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(QStringLiteral("step %1 on %2%3")
                         .arg(int(c.step))
                         .arg(c.nameEnd, c.copied ? " (copied)" : "")
                         .toStdString());
        fx.Remove("C:\\Kestrova\\History\\");
        Replace(x, Old);
        fx.Write(Beta + "X.prg", New);
        fx.Messages().Clear();
        int fired = 0;
        fx.Files().SetFaultHook([&](FileStep step, const QString& path) {
            if (c.copied && step == FileStep::Link)
                return EXDEV;
            // Only the history's own steps fail: the copy's own reading of X.prg is not one of them.
            if (step != c.step || !path.endsWith(c.nameEnd, Qt::CaseInsensitive) || fired > 0)
                return 0;
            if (c.step == FileStep::Read && path.compare(x, Qt::CaseInsensitive) != 0)
                return 0;
            ++fired;
            return ENOSPC;
        });
        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(CopyFamily(fx.session(), Beta, "X", Parts, "X", 2), 1);
        fx.Files().SetFaultHook({});
        EXPECT_EQ(fired, 1) << "the step was met";
        EXPECT_EQ(fx.Read(x), New) << "the operation went on";
        const QStringList texts = fx.Messages().Texts();
        ASSERT_EQ(texts.size(), 2) << texts.join('|').toStdString();
        EXPECT_EQ(texts[0], OverwriteQuestion("X"));
        EXPECT_TRUE(texts[1].startsWith("Disk full")) << texts[1].toStdString();
        EXPECT_TRUE(texts[1].endsWith("\nThe History Of \"" + x + "\" Could Not Be Kept !"))
            << texts[1].toStdString();
        EXPECT_TRUE(Versions(x).isEmpty()) << "nothing of a version that failed is listed";
        EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\History\\" + version));

        // Once the store works again, the next replacement is kept.
        fx.Write(Beta + "X.prg", Old);
        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(CopyFamily(fx.session(), Beta, "X", Parts, "X", 2), 1);
        ASSERT_EQ(Versions(x).size(), 1);
        EXPECT_EQ(History().Bytes(Versions(x)[0]), New);
    }
}

// Old versions that cannot be dropped leave the history beyond its limit for a while, never the
// new version unkept: the operation goes on, one message says so, and a later keeping drops them.
TEST_F(ProgramHistoryTest, OldVersionsThatCannotBeDroppedLeaveTheNewOneKept) {
    const QString x = Parts + "X.prg";
    const QString history = "C:\\Kestrova\\History\\";
    fx.WriteLines("C:\\Kestrova\\History.cfg", HistoryLimitsLines({1, qint64(500) << 20}));
    struct Case {
        FileStep step;
        QString file; // the history's file that fails
        QStringList listed;
    };
    const QList<Case> cases{
        {FileStep::Replace, history + "History.lst", {CopiedOverFrom(Beta), "first"}},
        {FileStep::Delete, history + "00000001.prg", {CopiedOverFrom(Beta)}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        fx.Remove(history);
        Replace(x, "first text");
        KeepPreviousVersion(fx.session(), x, "first");
        Replace(x, Old);
        fx.Write(Beta + "X.prg", New);
        fx.Messages().Clear();
        FaultInjector faults(fx.Files());
        faults.Fail(c.step, c.file, ENOSPC);
        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(CopyFamily(fx.session(), Beta, "X", Parts, "X", 2), 1);
        EXPECT_EQ(faults.Fired(), 1);
        EXPECT_EQ(fx.Read(x), New);
        EXPECT_EQ(fx.Messages().Texts(),
                  (QStringList{OverwriteQuestion("X"),
                               DiskFullError(c.file).text() +
                                   "\nThe Oldest Versions Of The History Could Not Be Dropped !"}));
        EXPECT_EQ(Operations(x), c.listed);
        EXPECT_EQ(History().Bytes(Versions(x).at(0)), Old);

        Replace(x, "later");
        KeepPreviousVersion(fx.session(), x, "again");
        EXPECT_EQ(Operations(x), QStringList{"again"});
        EXPECT_EQ(fx.Messages().Texts().size(), 2) << "nothing more to tell";
    }
}

TEST_F(ProgramHistoryTest, AFailingStoreIsToldOnceUntilItWorksAgain) {
    FaultInjector faults(fx.Files());
    faults.Fail(FileStep::Link, {}, EIO, 1, true);
    for (const char* name : {"A.prg", "B.prg", "C.prg"}) {
        fx.Write(Parts + name, Old);
        KeepPreviousVersion(fx.session(), Parts + name, Deleted);
    }
    EXPECT_EQ(faults.Fired(), 3);
    EXPECT_EQ(fx.Messages().Texts().size(), 1);
}

TEST_F(ProgramHistoryTest, RestoringAVersionKeepsTheTextItReplaces) {
    const QString x = Parts + "X.prg";
    fx.Write(x, Old);
    KeepPreviousVersion(fx.session(), x, Renumbered);
    Replace(x, New);
    const HistoryVersion first = Versions(x).at(0);
    RestoreVersion(fx.session(), first);
    EXPECT_EQ(fx.Read(x), Old);
    const QList<HistoryVersion> versions = Versions(x);
    ASSERT_EQ(versions.size(), 2);
    EXPECT_EQ(versions[0].operation, RestoredVersionOf(first.when));
    EXPECT_EQ(History().Bytes(versions[0]), New);
    EXPECT_EQ(History().Bytes(versions[1]), Old);
}

// A program that is a link into a shared set-up: the rewrite fills the real file, and the kept
// version must still hold the text the link showed before.
TEST_F(ProgramHistoryTest, AProgramThatIsALinkKeepsItsOldTextNotTheLink) {
    const QString x = Parts + "X.prg";
    fx.Write("C:\\Shared\\real.prg", Old);
    fx.Remove(x);
    ASSERT_TRUE(QFile::link("../../../Shared/real.prg", fx.Host(x)));
    ASSERT_EQ(fx.Read(x), Old);
    RenumberProgram(fx.session(), x, Int16(5), Int16(5), 0);
    EXPECT_TRUE(QFileInfo(fx.Host(x)).isSymLink()) << "the link stays a link";
    EXPECT_EQ(fx.Read("C:\\Shared\\real.prg"), "N5 G90\r\nN10 X100 Y50\r\n");
    const QList<HistoryVersion> versions = Versions(x);
    ASSERT_EQ(versions.size(), 1);
    EXPECT_EQ(History().Bytes(versions[0]), Old);
    EXPECT_FALSE(QFileInfo(fx.Host(versions[0].file)).isSymLink());
}
