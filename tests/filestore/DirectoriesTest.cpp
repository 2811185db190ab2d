#include "filestore/Directories.h"

#include "InstallationFixture.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString Machine = QStringLiteral("C:\\Jobs\\PUNCH1\\");

class Directories : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }
    QStringList DataDirectories() {
        return fx.Files().List(Machine, QStringLiteral("*"), EntryKinds::Directories);
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(Directories, RefusalsNameWhatIsWrongAndTouchNothing) {
    fx.Write(Machine + "Notes", "a plain file beside the directories");
    struct Case {
        int action;
        QString chosen;
        QString typed;
        QString message;
        DirectoryOkOutcome outcome;
    };
    const QList<Case> cases{
        {1, "", "", "No Directory Selected !", DirectoryOkOutcome::FocusList},
        {1, "G: [Removable Drive]", "", "Disc Not Ready !", DirectoryOkOutcome::FocusList},
        {2, "", "  ", "Invalid Directory Name !", DirectoryOkOutcome::FocusBox},
        {2, "", QString(33, u'a'), "Invalid Directory Name !", DirectoryOkOutcome::FocusBox},
        {2, "", "..", "Invalid Directory Name !", DirectoryOkOutcome::FocusBox},
        {2, "", "Parts\\Sub", "Invalid Directory Name !", DirectoryOkOutcome::FocusBox},
        {2, "", "archive", "Directory \"archive\" Already Exists !", DirectoryOkOutcome::FocusBox},
        {2, "", "NOTES", "Directory \"NOTES\" Already Exists !", DirectoryOkOutcome::FocusBox},
        {3, "", "New", "No Directory Selected !", DirectoryOkOutcome::FocusList},
        {3, "Archive", "", "Invalid Directory Name !", DirectoryOkOutcome::FocusBox},
        {3, "Archive", "Kestrova", "Directory \"Kestrova\" Already Exists !", DirectoryOkOutcome::FocusBox},
        {4, "", "", "No Directory Selected !", DirectoryOkOutcome::FocusList},
    };
    const QStringList before = DataDirectories();
    for (const Case& c : cases) {
        SCOPED_TRACE(QStringLiteral("%1 %2 %3").arg(c.action).arg(c.chosen, c.typed).toStdString());
        fx.Messages().Clear();
        EXPECT_EQ(DirectoryOk(fx.session(), c.action, c.chosen, c.typed), c.outcome);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", c.message}));
        EXPECT_EQ(DataDirectories(), before);
        EXPECT_EQ(fx.Settings().CurrentDir, "Parts");
    }
    EXPECT_EQ(DirectoryOk(fx.session(), 2, {}, QString(32, u'a')), DirectoryOkOutcome::Done);
}

TEST_F(Directories, ChangeCreateAndRenameDoTheirWork) {
    ASSERT_EQ(DirectoryOk(fx.session(), 1, " Archive ", {}), DirectoryOkOutcome::Done);
    EXPECT_EQ(fx.Settings().CurrentDir, "Archive");
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Kestrova.cfg").value(4), "Archive");
    ASSERT_EQ(DirectoryOk(fx.session(), 1, "A: [Floppy Disk]", {}), DirectoryOkOutcome::Done);
    EXPECT_EQ(fx.Settings().CurrentPath, "A:\\");

    ASSERT_EQ(DirectoryOk(fx.session(), 2, {}, " Sheet (2) "), DirectoryOkOutcome::Done);
    EXPECT_TRUE(fx.Files().IsDirectory(Machine + "Sheet (2)"));

    fx.Messages().Script({Answer::No});
    EXPECT_EQ(DirectoryOk(fx.session(), 3, "Sheet (2)", "Sheets"), DirectoryOkOutcome::Stay);
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Rename \"Sheet (2)\"\nAs \"Sheets\" ?"}));
    EXPECT_TRUE(fx.Files().IsDirectory(Machine + "Sheet (2)"));
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(DirectoryOk(fx.session(), 3, "Sheet (2)", "Sheets"), DirectoryOkOutcome::Done);
    EXPECT_FALSE(fx.Files().Exists(Machine + "Sheet (2)"));
    EXPECT_TRUE(fx.Files().IsDirectory(Machine + "Sheets"));
}

TEST_F(Directories, DeleteAsksAgainForADirectoryThatHoldsFiles) {
    struct Case {
        bool holdsFiles;
        QList<Answer> answers;
        bool removed;
    };
    const QList<Case> cases{
        {false, {Answer::No}, false},
        {false, {Answer::Yes}, true},
        {true, {Answer::Yes, Answer::No}, false},
        {true, {Answer::Yes, Answer::Yes}, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(
            QStringLiteral("files %1, answers %2").arg(c.holdsFiles).arg(c.answers.size()).toStdString());
        fx.Remove(Machine + "Old");
        fx.MakeDir(Machine + "Old");
        if (c.holdsFiles) {
            fx.Write(Machine + "Old\\A.drw", "a");
            fx.Write(Machine + "Old\\B", "b");
        }
        fx.Messages().Clear();
        for (const Answer a : c.answers)
            fx.Messages().Script({a});
        const DirectoryOkOutcome outcome = DirectoryOk(fx.session(), 4, "Old", {});
        EXPECT_EQ(outcome, c.removed ? DirectoryOkOutcome::Done : DirectoryOkOutcome::Stay);
        QStringList expected{"Delete \"Old\" !"};
        if (c.holdsFiles)
            expected << "<beep>"
                     << "Directory \"Old\" Is Not Empty !\n\nDelete it Anyway ?";
        EXPECT_EQ(fx.Messages().Log(), expected);
        EXPECT_EQ(fx.Files().Exists(Machine + "Old"), !c.removed);
        if (c.holdsFiles && !c.removed) {
            EXPECT_EQ(fx.Read(Machine + "Old\\A.drw"), "a") << "No keeps every file";
        }
    }

    // Subdirectories are not removed, so the directory stays, and the error says which.
    fx.MakeDir(Machine + "Nested\\Inner");
    fx.Messages().Script({Answer::Yes});
    EXPECT_THROW((void)DirectoryOk(fx.session(), 4, "Nested", {}), SystemError);
    EXPECT_TRUE(fx.Files().IsDirectory(Machine + "Nested\\Inner"));
}
