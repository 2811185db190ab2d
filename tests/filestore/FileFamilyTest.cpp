#include "filestore/FileFamily.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "Thrown.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;
using kestrova::testing::ThrownText;

namespace {

const QString Work = QStringLiteral("C:\\Jobs\\PUNCH1\\Work\\");
const QString SameMachine = QStringLiteral("C:\\Jobs\\PUNCH1\\Dest\\");
const QString OtherMachine = QStringLiteral("C:\\Jobs\\LASER\\Dest\\");

// Family X with a member of every class, beside two files of other families ("X.b" and "Xy").
const QStringList EveryMember{"X",     "X.drw", "X.dxf", "X.prg", "X.inf",
                              "X.rpt", "X.stp", "X.nst", "X.usr", "X.seq"};

class FileFamily : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        Reset();
    }
    // The work directory as at the start, the destinations empty: each case of a table starts here.
    void Reset() {
        for (const QString& dir : {Work, SameMachine, OtherMachine})
            fx.Remove(dir);
        fx.Messages().Clear();
        for (const QString& file : EveryMember + QStringList{"X.b.drw", "Xy.drw"})
            fx.Write(Work + file, file.toLatin1());
        fx.MakeDir(SameMachine);
        fx.MakeDir(OtherMachine);
    }
    // The files of a directory, in name order.
    QStringList In(const QString& directory) {
        return fx.Files().List(directory, QStringLiteral("*"), EntryKinds::Files);
    }
    InstallationFixture fx;
};

QStringList Without(QStringList all, const QStringList& gone) {
    for (const QString& g : gone)
        all.removeAll(g);
    return all;
}

} // namespace

TEST_F(FileFamily, EachKindTakesItsMembersAndKeepsMachineBoundOnesOnTheMachine) {
    enum Op { Copy, Move, Delete };
    struct Case {
        Op op;
        int kind;
        QString destination;
        QStringList arrives; // of family X at the destination (for a delete: what goes)
    };
    const QStringList all = EveryMember;
    const QList<Case> cases{
        {Delete, 1, {}, {"X.drw", "X.dxf", "X.usr", "X.seq"}},
        {Delete, 2, {}, {"X.prg", "X.inf", "X.rpt", "X.stp"}},
        {Delete, 3, {}, Without(all, {"X.nst"})},
        {Copy, 1, SameMachine, all},
        {Copy, 1, OtherMachine, {"X.drw", "X.dxf", "X.nst"}},
        {Copy, 2, SameMachine, {"X.prg", "X.inf", "X.rpt", "X.stp"}},
        {Copy, 2, OtherMachine, {"X.prg", "X.inf", "X.rpt"}},
        {Copy, 3, SameMachine, all},
        {Copy, 3, OtherMachine, Without(all, {"X.stp", "X.usr", "X.seq"})},
        {Move, 1, OtherMachine, {"X.drw", "X.dxf", "X.nst"}},
        {Move, 2, OtherMachine, {"X.prg", "X.inf", "X.rpt"}},
        {Move, 3, SameMachine, all},
        {Copy, 0, SameMachine, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(
            QStringLiteral("op %1 kind %2 to %3").arg(c.op).arg(c.kind).arg(c.destination).toStdString());
        Reset();
        const QStringList before = In(Work);
        int result = -1;
        switch (c.op) {
        case Copy:
            result = CopyFamily(fx.session(), Work, "X", c.destination, "X", c.kind);
            break;
        case Move:
            result = MoveFamily(fx.session(), Work, "X", c.destination, "X", c.kind);
            break;
        case Delete:
            DeleteFamily(fx.session(), Work, "X", c.kind);
            EXPECT_EQ(In(Work), Without(before, c.arrives));
            continue;
        }
        EXPECT_EQ(result, c.kind == 0 ? 0 : 1);
        QStringList expected = c.arrives;
        expected.sort(Qt::CaseInsensitive);
        EXPECT_EQ(In(c.destination), expected);
        EXPECT_EQ(In(Work), c.op == Move ? Without(before, c.arrives) : before)
            << "a move leaves what it did not take; X.b.drw and Xy.drw are other families";
        for (const QString& file : c.arrives)
            EXPECT_EQ(fx.Read(c.destination + file), file.toLatin1()) << file.toStdString();
        EXPECT_TRUE(fx.Messages().Texts().isEmpty()) << "nothing to overwrite: no question";
    }
}

TEST_F(FileFamily, KindOneComparesExtensionsAsSpelled) {
    fx.Remove(Work + "X.prg");
    fx.Write(Work + "X.PRG", "upper");
    ASSERT_EQ(CopyFamily(fx.session(), Work, "X", OtherMachine, "Y", 1), 1);
    EXPECT_EQ(In(OtherMachine), (QStringList{"Y.drw", "Y.dxf", "Y.nst", "Y.PRG"}))
        << "an upper-case PRG goes like a drawing member, under the new name";
    DeleteFamily(fx.session(), Work, "X", 1);
    EXPECT_FALSE(fx.OnDisk(Work + "X.PRG"));
    EXPECT_TRUE(fx.OnDisk(Work + "X.inf"));
}

TEST_F(FileFamily, NamesDifferingOnlyInCaseAreOneFamilyAndGetNoTwin) {
    const QString dir = QStringLiteral("C:\\Jobs\\PUNCH1\\Case\\");
    fx.Write(dir + "BRACKET.PRG", "new program");
    fx.Write(dir + "Bracket.inf", "new info");
    fx.Write(SameMachine + "bracket.prg", "old program");

    fx.Messages().Script({Answer::Yes});
    ASSERT_EQ(CopyFamily(fx.session(), dir, "Bracket", SameMachine, "Bracket", 3), 1);
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{"\"Bracket\" Already Exists !\n\nOverwrite It ?"}));
    const QStringList arrived = In(SameMachine);
    EXPECT_EQ(arrived.size(), 2) << arrived.join(u' ').toStdString();
    EXPECT_EQ(fx.Files().Find(SameMachine + "bracket.prg", EntryKinds::Files).size(), 1);
    EXPECT_EQ(fx.Read(SameMachine + arrived.filter(".prg", Qt::CaseInsensitive).value(0)), "new program");

    // Renaming a family to itself in another letter case would make the source its own old
    // destination: it is left alone, without a question.
    fx.Messages().Clear();
    EXPECT_EQ(MoveFamily(fx.session(), dir, "Bracket", "c:\\jobs\\punch1\\CASE\\", "BRACKET", 3), 0);
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
    EXPECT_EQ(In(dir), (QStringList{"Bracket.inf", "BRACKET.PRG"}));
    EXPECT_EQ(fx.Read(dir + "BRACKET.PRG"), "new program");
}

TEST_F(FileFamily, OverwriteIsAskedAndNoTouchesNothing) {
    struct Case {
        int kind;
        QString present; // at the destination
        bool asked;
    };
    const QList<Case> cases{{1, "Y.drw", true}, {1, "Y.prg", false}, {2, "Y.prg", true}, {2, "Y.drw", false},
                            {3, "Y.drw", true}, {3, "Y.prg", true},  {3, "Y.dxf", false}};
    for (const Case& c : cases) {
        for (const Answer answer : {Answer::No, Answer::Yes}) {
            SCOPED_TRACE(QStringLiteral("kind %1, %2, answer %3")
                             .arg(c.kind)
                             .arg(c.present)
                             .arg(int(answer))
                             .toStdString());
            Reset();
            fx.Write(SameMachine + c.present, "old");
            fx.Write(SameMachine + "Y.igs", "old drawing member");
            fx.Messages().Script({answer});
            const int result = CopyFamily(fx.session(), Work, "X", SameMachine, "Y", c.kind);
            EXPECT_EQ(fx.Messages().Texts().size(), c.asked ? 1 : 0);
            if (c.asked && answer == Answer::No) {
                EXPECT_EQ(result, 0);
                EXPECT_EQ(int(fx.Settings().LastAnswer), 7);
                QStringList untouched{c.present, "Y.igs"};
                untouched.sort(Qt::CaseInsensitive);
                EXPECT_EQ(In(SameMachine), untouched);
                continue;
            }
            EXPECT_EQ(result, 1);
            EXPECT_EQ(int(fx.Settings().LastAnswer), 6);
            EXPECT_EQ(fx.OnDisk(SameMachine + "Y.igs"), c.kind == 2) << "the old family is cleared first";
            if (c.asked) {
                EXPECT_NE(fx.Read(SameMachine + c.present), "old");
                EXPECT_EQ(fx.Messages().Messages().first().message.defaultButton, 2) << "No is the default";
            }
        }
    }
}

TEST_F(FileFamily, AFailedCopyKeepsTheSourceWholeAndNamesTheFile) {
    struct Case {
        FileStep step;
        QString file;
        int error;
        bool move;
    };
    const QList<Case> cases{
        {FileStep::Write, "X.rpt", ENOSPC, true},  {FileStep::Close, "X.seq", EIO, true},
        {FileStep::Read, "X.usr", ENOENT, true},   {FileStep::Replace, "X.drw", EROFS, true},
        {FileStep::Write, "X.nst", ENOSPC, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        Reset();
        const QStringList before = In(Work);
        QString error;
        {
            FaultInjector faults(fx.Files());
            faults.Fail(c.step, c.file, c.error);
            error = ThrownText<SystemError>([&] {
                (void)(c.move ? MoveFamily(fx.session(), Work, "X", SameMachine, "X", 3)
                              : CopyFamily(fx.session(), Work, "X", SameMachine, "X", 3));
            });
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_TRUE(error.contains(c.file)) << error.toStdString();
        EXPECT_EQ(In(Work), before) << "nothing left the source";
        for (const QString& file : EveryMember)
            EXPECT_EQ(fx.Read(Work + file), file.toLatin1());
        EXPECT_TRUE(In(SameMachine).isEmpty()) << "a family arrives whole or not at all";
    }
}

TEST_F(FileFamily, LetterCaseNeitherMovesADestinationOffTheMachineNorAMemberOffItsClass) {
    enum Op { Copy, Delete };
    struct Case {
        const char* what;
        QStringList upper;  // members written with their extension in upper case
        QString machineDir; // "" the machine's own
        Op op;
        int kind;
        QString destination;
        QStringList result; // of family X at the destination, as found there (for a delete: what goes)
    };
    const QString sameInLowerCase = QStringLiteral("c:\\jobs\\punch1\\dest\\");
    const QList<Case> cases{
        // clang-format off
        {"the destination in lower case", {}, {}, Copy, 2, sameInLowerCase,
         {"X.inf", "X.prg", "X.rpt", "X.stp"}},
        {"a machine directory in lower case, part of a longer name", {}, "unch", Copy, 2, SameMachine,
         {"X.inf", "X.prg", "X.rpt", "X.stp"}},
        {"an upper-case set-up sheet stays with kind 2", {"X.STP"}, {}, Copy, 2, OtherMachine,
         {"X.inf", "X.prg", "X.rpt"}},
        {"upper-case machine-bound members stay with kind 3", {"X.STP", "X.USR", "X.SEQ"}, {}, Copy, 3,
         OtherMachine, {"X", "X.drw", "X.dxf", "X.inf", "X.nst", "X.prg", "X.rpt"}},
        {"a kind 2 delete takes program members in any case", {"X.PRG", "X.INF"}, {}, Delete, 2, {},
         {"X.INF", "X.PRG", "X.rpt", "X.stp"}},
        // clang-format on
    };
    const QString ownMachine = fx.Settings().MachineDir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Reset();
        for (const QString& member : c.upper) {
            fx.Remove(Work + "X." + member.mid(2).toLower());
            fx.Write(Work + member, member.toLatin1());
        }
        fx.Settings().MachineDir = c.machineDir.isEmpty() ? ownMachine : c.machineDir;
        const QStringList before = In(Work);
        if (c.op == Delete) {
            DeleteFamily(fx.session(), Work, "X", c.kind);
            EXPECT_EQ(In(Work), Without(before, c.result));
            continue;
        }
        EXPECT_EQ(CopyFamily(fx.session(), Work, "X", c.destination, "X", c.kind), 1);
        EXPECT_EQ(fx.Files().List(c.destination, QStringLiteral("*"), EntryKinds::Files), c.result);
    }
    fx.Settings().MachineDir = ownMachine;
}
