// The Rainer floppy's operations against index bytes written out by hand from the record layout.
#include "exchange/RainerFloppy.h"

#include "DirectorySnapshot.h"
#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "Thrown.h"
#include "exchange/RainerIndex.h"
#include "filestore/SelectDirectory.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Index = QStringLiteral("A:\\INDICE--.PRG");
const QByteArray FreeRecord = QByteArray(60, '$') + QByteArray(4, '\0');

QByteArray Trailer(int variant) {
    return variant == 1 ? QByteArray::fromHex("DF01D702") : QByteArray::fromHex("A1687E5A");
}

// A used record: the name, blanks up to 50, ten zero bytes, the trailer.
QByteArray UsedRecord(int variant, const QByteArray& name) {
    return name + QByteArray(50 - name.size(), ' ') + QByteArray(10, '\0') + Trailer(variant);
}

class RainerFloppy : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }

    // A full-sized index whose records `records` hold the given names, each slot with its file.
    QByteArray WriteIndex(int variant, const QList<QPair<int, QByteArray>>& slots) {
        QByteArray index = FreeRecord.repeated(300);
        for (const auto& [slot, name] : slots) {
            const int record = variant == 1 ? slot : slot + 2;
            index.replace((record - 1) * 64, 64, UsedRecord(variant, name));
            fx.Write(QStringLiteral("A:\\P%1---.PRG").arg(slot, 3, 10, QChar(u'0')),
                     "floppy " + name + "\r\n");
        }
        fx.Write(Index, index);
        return index;
    }
    QStringList Listed() {
        ListModel list;
        FillRainerList(fx.session(), list);
        QStringList shown;
        for (int i = 0; i < list.Count(); ++i)
            shown << list.entries.at(i) + u'@' + QString::number(list.itemData.at(i));
        return shown;
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(RainerFloppy, ExportIntoSlotSevenChangesExactlyItsRecordAndImportAndDeleteReadItBack) {
    for (int variant : {1, 2}) {
        SCOPED_TRACE(variant);
        fx.Remove("A:\\");
        fx.MakeDir("A:\\");
        fx.Settings().RainerType = Int16::From(variant);
        const QByteArray before =
            WriteIndex(variant, {{1, "P1"}, {2, "P2"}, {3, "P3"}, {4, "P4"}, {5, "P5"}, {6, "P6"}});

        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(RainerExport(fx.session(), {"Cover"}), RainOutcome::Close);
        EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Export \"Cover\" ?", "1 Program Has Been Exported"}));
        QByteArray expected = before;
        const int offset = (variant == 1 ? 6 : 8) * 64;
        expected.replace(offset, 64, UsedRecord(variant, "Cover"));
        EXPECT_EQ(fx.Read(Index), expected);
        EXPECT_EQ(fx.Read("A:\\P007---.PRG"), fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"));
        EXPECT_EQ(Listed(), (QStringList{"P1@1", "P2@2", "P3@3", "P4@4", "P5@5", "P6@6", "Cover@7"}));

        SelectDirectory(fx.session(), "Kestrova");
        fx.Messages().Clear();
        EXPECT_EQ(RainerImport(fx.session(), {{"Cover", 7}}), RainOutcome::Close);
        EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Import Program \"Cover\" From Floppy Disk ?",
                                                      "1 Program Has Been Imported"}));
        EXPECT_EQ(fx.Messages().Messages().first().message.defaultButton, 1) << "Yes is the default";
        EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Kestrova\\Cover.prg"), fx.Read("A:\\P007---.PRG"));

        fx.Messages().Clear();
        EXPECT_EQ(RainerDelete(fx.session(), {{"Cover", 7}, {"P6", 6}}), RainOutcome::Close);
        EXPECT_EQ(fx.Messages().Texts(),
                  (QStringList{"Delete 2 Programs From Floppy Disk ?", "2 Programs Have Been Deleted"}));
        expected = before;
        expected.replace(offset - 64, 64, FreeRecord);
        EXPECT_EQ(fx.Read(Index), expected);
        EXPECT_FALSE(fx.OnDisk("A:\\P007---.PRG"));
        EXPECT_FALSE(fx.OnDisk("A:\\P006---.PRG"));
        SelectDirectory(fx.session(), "Parts");
        fx.Remove("C:\\Jobs\\PUNCH1\\Kestrova\\Cover.prg");
        fx.Messages().Clear();
    }
}

TEST_F(RainerFloppy, ExportFindsItsSlotByNameOrTheFirstFreeOne) {
    const struct {
        const char* what;
        QList<QPair<int, QByteArray>> slots;
        QStringList removed; // slot files gone before the export
        Answer answer;
        int slot; // where Cover is expected, 0 for nowhere
        QStringList texts;
    } cases[] = {
        // clang-format off
        {"a free index takes slot 1", {}, {}, Answer::Yes, 1, {"1 Program Has Been Exported"}},
        {"a stored name in any case is overwritten once confirmed", {{1, "P1"}, {4, "COVER"}}, {}, Answer::Yes, 4,
         {"Program \"Cover\"\n\nAlready Exists!  Overwrite it ?", "1 Program Has Been Exported"}},
        {"declining the overwrite exports nothing", {{4, "COVER"}}, {}, Answer::No, 0,
         {"Program \"Cover\"\n\nAlready Exists!  Overwrite it ?", "No Programs Have Been Exported"}},
        {"a stored name whose file is gone is reused without a question", {{1, "P1"}, {4, "cover"}},
         {"A:\\P004---.PRG"}, Answer::No, 4, {"1 Program Has Been Exported"}},
        {"a free slot with a stray file is overwritten silently", {{1, "P1"}}, {}, Answer::No, 2,
         {"1 Program Has Been Exported"}},
        // clang-format on
    };
    fx.Settings().RainerType = 1;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Remove("A:\\");
        fx.MakeDir("A:\\");
        if (!c.slots.isEmpty())
            WriteIndex(1, c.slots);
        fx.Write("A:\\P002---.PRG", "stray");
        for (const QString& gone : c.removed)
            fx.Remove(gone);
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        if (c.texts.size() > 1)
            fx.Messages().Script({c.answer});
        EXPECT_EQ(RainerExport(fx.session(), {"Cover"}), RainOutcome::Close);
        EXPECT_EQ(fx.Messages().Texts().mid(1), c.texts);
        const QByteArray index = fx.Read(Index);
        ASSERT_EQ(index.size(), 19200);
        if (c.slot > 0) {
            EXPECT_EQ(index.mid((c.slot - 1) * 64, 64), UsedRecord(1, "Cover"));
            EXPECT_EQ(fx.Read(QStringLiteral("A:\\P%1---.PRG").arg(c.slot, 3, 10, QChar(u'0'))),
                      fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"));
        }
    }
    fx.Remove("A:\\");
    fx.MakeDir("A:\\");
    WriteIndex(1, {{4, "COVER"}});
    fx.Messages().Clear();
    fx.Messages().Script({Answer::Yes, Answer::No});
    (void)RainerExport(fx.session(), {"Cover"});
    EXPECT_EQ(fx.Messages().Messages().at(1).message.title, "Kestrcom")
        << "this one box has a title of its own";
}

TEST_F(RainerFloppy, AFullIndexRefusesEachProgramThatDoesNotFit) {
    fx.Settings().RainerType = 2;
    QList<QPair<int, QByteArray>> slots;
    for (int s = 1; s <= 298; ++s)
        slots.append({s, "N" + QByteArray::number(s)});
    const QByteArray before = WriteIndex(2, slots);
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(RainerExport(fx.session(), {"Cover", "X"}), RainOutcome::Close);
    EXPECT_EQ(fx.Messages().Log(),
              (QStringList{"Export 2 Programs ?", "<beep>", "Floppy Disk Index Is Full !", "<beep>",
                           "Floppy Disk Index Is Full !", "No Programs Have Been Exported"}));
    EXPECT_EQ(fx.Read(Index), before);
}

TEST_F(RainerFloppy, ImportSkipsNamesThatCouldLeaveTheDirectoryAndVanishedFilesAreCountedAndFreed) {
    fx.Settings().RainerType = 1;
    QByteArray index = WriteIndex(1, {{1, ".."}, {2, "a/b"}, {3, "C:x"}, {4, "Good"}, {5, "Gone"}});
    fx.Remove("A:\\P005---.PRG");
    EXPECT_EQ(Listed(), (QStringList{"..@1", "a/b@2", "C:x@3", "Good@4"}))
        << "a program without its file is not listed";
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\Gone.prg", "old");
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\Gone.inf", "old");
    const auto before = TreeContents(fx.Root());
    fx.Messages().Script({Answer::Yes, Answer::Yes});
    EXPECT_EQ(RainerImport(fx.session(), {{"..", 1}, {"a/b", 2}, {"C:x", 3}, {"Good", 4}, {"Gone", 5}}),
              RainOutcome::Close);
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Import 5 Programs From Floppy Disk ?", "Invalid File Name !",
                           "Invalid File Name !", "Invalid File Name !",
                           "\"Gone\" Already Exists !\n\nOverwrite It ?", "2 Programs Have Been Imported"}));
    // The program the import deleted (its floppy file had vanished) is kept in the history.
    QStringList changes = Changes(before, TreeContents(fx.Root()));
    const QString catalog = "+c/Kestrova/History/History.lst=";
    const auto line =
        std::find_if(changes.begin(), changes.end(), [&](const QString& c) { return c.startsWith(catalog); });
    ASSERT_NE(line, changes.end());
    EXPECT_TRUE(line->endsWith(R"(,3,"C:\Jobs\PUNCH1\Parts\Gone.prg","imported from A:"|)"))
        << line->toStdString();
    changes.erase(line);
    EXPECT_EQ(changes, (QStringList{"-c/Jobs/PUNCH1/Parts/Gone.inf", "-c/Jobs/PUNCH1/Parts/Gone.prg",
                                    "+c/Jobs/PUNCH1/Parts/Good.prg=floppy Good|",
                                    "+c/Kestrova/History/00000001.prg=old"}));

    // A delete frees the slot whose program file is gone.
    fx.Messages().Clear();
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(RainerDelete(fx.session(), {{"Gone", 5}}), RainOutcome::Close);
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Delete Program \"Gone\" From Floppy Disk ?", "1 Program Has Been Deleted"}));
    index.replace(4 * 64, 64, FreeRecord);
    EXPECT_EQ(fx.Read(Index), index);
}

// A name on the floppy is the name the data directory shows, and back: bytes 0x80..0x9F are
// Windows-1252 characters both ways.
TEST_F(RainerFloppy, HighByteNamesAreTheNamesTheDataDirectoryShows) {
    fx.Settings().RainerType = 1;
    const QString parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    const struct {
        QByteArray bytes;
        QString shown;
    } cases[] = {
        {"\x8E"
         "1",
         QStringLiteral("\u017D1")},
        {"\x80\x8A\x9F", QStringLiteral("\u20AC\u0160\u0178")},
        {"\x81\xA0x", QStringLiteral("\u0081\u00A0x")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.toHex().toStdString());
        fx.Remove("A:\\");
        fx.MakeDir("A:\\");
        WriteIndex(1, {{1, c.bytes}});
        EXPECT_EQ(Listed(), QStringList(c.shown + "@1"));
        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(RainerImport(fx.session(), {{c.shown, 1}}), RainOutcome::Close);
        EXPECT_EQ(fx.Files().Find(parts + c.shown + ".*", EntryKinds::Files), QStringList(c.shown + ".prg"));

        WriteIndex(1, {});
        fx.Messages().Script({Answer::Yes});
        EXPECT_EQ(RainerExport(fx.session(), {c.shown}), RainOutcome::Close);
        EXPECT_EQ(fx.Read(Index).left(64), UsedRecord(1, c.bytes));
        fx.Remove(parts + c.shown + ".prg");
    }
}

TEST_F(RainerFloppy, NothingChosenClosesImportAndDeleteButKeepsExportOpen) {
    EXPECT_EQ(RainerExport(fx.session(), {}), RainOutcome::StayOnList);
    EXPECT_EQ(RainerImport(fx.session(), {}), RainOutcome::Close);
    EXPECT_EQ(RainerDelete(fx.session(), {}), RainOutcome::Close);
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Programs Selected !", "<beep>",
                                                "No Programs Selected", "<beep>", "No Programs Selected"}));
}

TEST_F(RainerFloppy, AMissingFloppyEmptiesTheListSilentlyAndIsToldForTheMenu) {
    fx.Remove("A:\\");
    ListModel list;
    list.Add("stale");
    FillRainerList(fx.session(), list);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_TRUE(fx.Messages().Log().isEmpty()) << "the list fails silently";

    // The menu's own spelling: the operations say "Disc" (EachOperationChecksTheDriveOnceMore...).
    EXPECT_FALSE(FloppyReadyForMenu(fx.session()));
    EXPECT_EQ(fx.Messages().Log(),
              (QStringList{"<beep>", "Floppy Disk Not Ready !\n\nInsert Floppy Disk Now !", "<beep>"}));
}

TEST_F(RainerFloppy, FormatAsksOnlyWhenThereAreProgramsAndWritesAFreshIndex) {
    const struct {
        const char* what;
        QStringList files;
        QList<Answer> answers;
        QStringList texts;
        QStringList left;
    } cases[] = {
        // clang-format off
        {"an empty floppy", {}, {}, {}, {"INDICE--.PRG"}},
        {"programs, confirmed", {"P001---.PRG", "p002---.prg", "NOTES.TXT"}, {Answer::Yes},
         {"Formating Will Delete All Programs On Floppy Disk !\n\nDo You Want to Continue ?"},
         {"INDICE--.PRG", "NOTES.TXT"}},
        {"programs, declined", {"P001---.PRG"}, {Answer::No},
         {"Formating Will Delete All Programs On Floppy Disk !\n\nDo You Want to Continue ?"}, {"P001---.PRG"}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Remove("A:\\");
        fx.MakeDir("A:\\");
        for (const QString& f : c.files)
            fx.Write("A:\\" + f, "x");
        fx.Messages().Clear();
        for (Answer a : c.answers)
            fx.Messages().Script({a});
        FormatRainerFloppy(fx.session());
        EXPECT_EQ(fx.Messages().Texts(), c.texts);
        EXPECT_EQ(QDir(fx.Host("A:\\")).entryList(QDir::Files, QDir::Name), c.left);
        if (c.left.contains("INDICE--.PRG")) {
            EXPECT_EQ(fx.Read(Index), FreeRecord.repeated(300));
        }
    }
}

TEST_F(RainerFloppy, AFaultWritingTheFloppyKeepsTheOldIndexOrTheWholeNewOne) {
    // Each operation that writes the index, with a fault at each step it makes on a floppy file:
    // the index is afterwards the old one or the whole new one, the error names the file and the
    // reason, and the same operation goes through once the disk is well again.
    enum class Op { ExportFresh, Export, Delete, Format };
    const struct {
        Op op;
        FileStep step;
        const char* file;
    } cases[] = {
        {Op::ExportFresh, FileStep::Open, "INDICE--.PRG"},
        {Op::ExportFresh, FileStep::Write, "INDICE--.PRG"},
        {Op::ExportFresh, FileStep::Close, "INDICE--.PRG"},
        {Op::ExportFresh, FileStep::Sync, "INDICE--.PRG"},
        {Op::ExportFresh, FileStep::Replace, "INDICE--.PRG"},
        {Op::Export, FileStep::Read, "INDICE--.PRG"},
        {Op::Export, FileStep::Open, "P002---.PRG"},
        {Op::Export, FileStep::Replace, "P002---.PRG"},
        {Op::Export, FileStep::Open, "INDICE--.PRG"},
        {Op::Export, FileStep::Write, "INDICE--.PRG"},
        {Op::Delete, FileStep::Delete, "P001---.PRG"},
        {Op::Delete, FileStep::Open, "INDICE--.PRG"},
        {Op::Delete, FileStep::Write, "INDICE--.PRG"},
        {Op::Format, FileStep::Delete, "P001---.PRG"},
        {Op::Format, FileStep::Open, "INDICE--.PRG"},
        {Op::Format, FileStep::Write, "INDICE--.PRG"},
        {Op::Format, FileStep::Sync, "INDICE--.PRG"},
        {Op::Format, FileStep::Replace, "INDICE--.PRG"},
    };
    fx.Settings().RainerType = 1;
    const auto run = [this](Op op) {
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        switch (op) {
        case Op::ExportFresh:
        case Op::Export:
            (void)RainerExport(fx.session(), {"Cover"});
            break;
        case Op::Delete:
            (void)RainerDelete(fx.session(), {{"PART1", 1}});
            break;
        case Op::Format:
            FormatRainerFloppy(fx.session());
            break;
        }
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << int(c.op) << " step " << int(c.step) << " on " << c.file);
        fx.Remove("A:\\");
        fx.MakeDir("A:\\");
        QByteArray before;
        if (c.op != Op::ExportFresh)
            before = WriteIndex(1, {{1, "PART1"}});
        // What the index is once the operation has gone through.
        QByteArray done = before;
        switch (c.op) {
        case Op::ExportFresh:
            done = UsedRecord(1, "Cover") + FreeRecord.repeated(299);
            break;
        case Op::Export:
            done.replace(64, 64, UsedRecord(1, "Cover"));
            break;
        case Op::Delete:
        case Op::Format:
            done = FreeRecord.repeated(300);
            break;
        }
        {
            FaultInjector faults(fx.Files());
            faults.Fail(c.step, QLatin1String(c.file), EIO);
            const auto error = Thrown<SystemError>([&] { run(c.op); });
            ASSERT_TRUE(error) << "the fault went unnoticed";
            EXPECT_EQ(error->subject(), "A:\\" + QLatin1String(c.file));
            EXPECT_TRUE(error->text().startsWith("Device I/O error")) << error->text().toStdString();
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_EQ(fx.Messages().BusyDepth(), 0);
        if (before.isEmpty()) {
            EXPECT_FALSE(fx.OnDisk(Index));
        } else {
            EXPECT_EQ(fx.Read(Index), before);
        }
        EXPECT_EQ(QDir(fx.Host("A:\\")).entryList(QDir::Hidden | QDir::Files).filter("kestrova-new"),
                  QStringList());

        run(c.op);
        EXPECT_EQ(fx.Read(Index), done);
    }
}

TEST_F(RainerFloppy, EachOperationChecksTheDriveOnceMoreAfterItsQuestion) {
    const struct {
        const char* question;
        int defaultButton;
        const char* report;
        std::function<RainOutcome()> run;
    } operations[] = {
        {"Export \"Cover\" ?", 2, "1 Program Has Been Exported",
         [this] { return RainerExport(fx.session(), {"Cover"}); }},
        {"Export 2 Programs ?", 2, "2 Programs Have Been Exported",
         [this] {
             return RainerExport(fx.session(), {"Cover", "X"});
         }},
        {"Import Program \"P1\" From Floppy Disk ?", 1, "1 Program Has Been Imported",
         [this] {
             return RainerImport(fx.session(), {{"P1", 1}});
         }},
        {"Delete Program \"P1\" From Floppy Disk ?", 1, "1 Program Has Been Deleted",
         [this] {
             return RainerDelete(fx.session(), {{"P1", 1}});
         }},
    };
    enum class Floppy { OutAndDeclined, StaysOut, PutInAtTheMessage };
    fx.Settings().RainerType = 1;
    for (const auto& op : operations) {
        for (const Floppy floppy : {Floppy::OutAndDeclined, Floppy::StaysOut, Floppy::PutInAtTheMessage}) {
            SCOPED_TRACE(::testing::Message() << op.question << " floppy " << int(floppy));
            fx.Remove("A:\\");
            fx.Messages().Clear();
            fx.Messages().Script({floppy == Floppy::OutAndDeclined ? Answer::No : Answer::Yes});
            fx.Messages().WhileShowing([this, floppy](const Message& m) {
                if (floppy == Floppy::PutInAtTheMessage && m.text == "Floppy Disc Not Ready !")
                    WriteIndex(1, {{1, "P1"}});
            });
            EXPECT_EQ(op.run(), RainOutcome::Close);
            QStringList expected{op.question};
            if (floppy != Floppy::OutAndDeclined)
                expected << "<beep>"
                         << "Floppy Disc Not Ready !";
            if (floppy == Floppy::PutInAtTheMessage)
                expected << op.report;
            EXPECT_EQ(fx.Messages().Log(), expected);
            EXPECT_EQ(fx.Messages().Messages().first().message.defaultButton, op.defaultButton);
            EXPECT_EQ(fx.OnDisk("A:\\"), floppy == Floppy::PutInAtTheMessage);
        }
    }
    fx.Messages().WhileShowing({});
}

TEST_F(RainerFloppy, FormatStopsWhenTheFloppyIsTakenOutDuringTheQuestion) {
    fx.Write("A:\\P001---.PRG", "program");
    fx.Messages().Script({Answer::Yes});
    fx.Messages().WhileShowing([this](const Message&) { fx.Remove("A:\\"); });
    FormatRainerFloppy(fx.session());
    fx.Messages().WhileShowing({});
    EXPECT_EQ(
        fx.Messages().Log(),
        QStringList{"Formating Will Delete All Programs On Floppy Disk !\n\nDo You Want to Continue ?"});
    EXPECT_FALSE(fx.OnDisk("A:\\"));
}
