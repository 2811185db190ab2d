#include "filestore/DrawingRestore.h"

#include "InstallationFixture.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString Undo = QStringLiteral("C:\\Kestrova\\Undo\\");

class DrawingRestore : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.Write(Undo + "Restore.drw", "last drawing");
        fx.Write(Undo + "Restore.bak", "backup");
        fx.Write(Undo + "Restore.bmp", "picture");
        fx.Write(Undo + "Restore.dxf", "not restored");
        fx.Write(Undo + "Restore.usr", "not restored");
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(DrawingRestore, RefusesBadNamesAndAMissingDirectory) {
    struct Case {
        QString name;
        QString directory;
        QString message;
        RestoreOutcome outcome;
    };
    const QList<Case> cases{
        {"", "Parts", "Invalid Drawing Name !", RestoreOutcome::FocusName},
        {QString(33, u'a'), "Parts", "Invalid Drawing Name !", RestoreOutcome::FocusName},
        {"Auto-Reposition", "Parts", "Invalid Drawing Name !", RestoreOutcome::FocusName},
        {"..\\Elsewhere", "Parts", "Invalid Drawing Name !", RestoreOutcome::FocusName},
        {"Bracket", " ", "No Directory Selected !", RestoreOutcome::FocusList},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name.toStdString());
        fx.Messages().Clear();
        EXPECT_EQ(RestoreDrawing(fx.session(), c.name, c.directory), c.outcome);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", c.message}));
    }
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Bracket.drw"), "drawing\r\n");
}

TEST_F(DrawingRestore, BringsBackTheDrawingAndItsBCompanionsOnly) {
    ASSERT_EQ(RestoreDrawing(fx.session(), "auto-reposition", "Archive"), RestoreOutcome::Done)
        << "only the exact spelling is reserved";
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Last Modified Drawing Restored As\n\n\"auto-reposition\""}));
    const QString dir = QStringLiteral("C:\\Jobs\\PUNCH1\\Archive\\");
    EXPECT_EQ(fx.Files().List(dir, "auto-reposition.*", EntryKinds::Files),
              (QStringList{"auto-reposition.bak", "auto-reposition.bmp", "auto-reposition.drw"}));
    EXPECT_EQ(fx.Read(dir + "auto-reposition.drw"), "last drawing");
    EXPECT_EQ(fx.Settings().CurrentDir, "Archive") << "another directory becomes current";
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Lastfile.lst"),
              (QStringList{"Archive", "auto-reposition", "******"}));
}

TEST_F(DrawingRestore, AnExistingDrawingIsOverwrittenOnlyOnYes) {
    const QString drawing = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Bracket.drw");
    fx.Messages().Script({Answer::No});
    EXPECT_EQ(RestoreDrawing(fx.session(), "Bracket", "Parts"), RestoreOutcome::Stay);
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Drawing \"Bracket\"\n\nAlready Exists!  Overwrite it ?"}));
    EXPECT_EQ(fx.Read(drawing), "drawing\r\n");

    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(RestoreDrawing(fx.session(), "Bracket", "Parts"), RestoreOutcome::Done);
    EXPECT_EQ(fx.Read(drawing), "last drawing");
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg"), "%\r\nN10 G90\r\n%\r\n")
        << "the program stays";
}

TEST_F(DrawingRestore, WithoutTheDrawingNothingIsRestored) {
    fx.Remove(Undo + "Restore.drw");
    EXPECT_FALSE(RestorableDrawing(fx.session()));
    EXPECT_EQ(RestoreDrawing(fx.session(), "Fresh", "Parts"), RestoreOutcome::Done);
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Drawing Restored !"}));
    EXPECT_TRUE(fx.Files().List("C:\\Jobs\\PUNCH1\\Parts\\", "Fresh.*", EntryKinds::Files).isEmpty());
    EXPECT_EQ(fx.Settings().CurrentDir, "Parts");
}
