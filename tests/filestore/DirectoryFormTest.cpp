// The directory and machine forms offscreen, played from the keyboard.
#include "filestore/forms/DirectoryForm.h"

#include "InstallationFixture.h"
#include "filestore/forms/MachineForm.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class DirectoryFormTest : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }
    InstallationFixture fx;
};

QStringList Entries(const QListWidget* list) {
    QStringList entries;
    for (int i = 0; i < list->count(); ++i)
        entries << list->item(i)->text();
    return entries;
}

} // namespace

TEST_F(DirectoryFormTest, EachActionShowsWhatItNeedsAndNeverOffersTheDirectoryInUse) {
    const QStringList drives{"A: [Floppy Disk]", "E: [Removable Drive]", "G: [Removable Drive]"};
    struct Case {
        int action;
        QString caption;
        QStringList entries; // empty: the list is not shown
        QString chosen;
        bool box;
    };
    const QList<Case> cases{
        {1, "Change Directory", QStringList{"Archive", "Kestrova"} + drives, "Archive", false},
        {2, "Create New Directory", {}, {}, true},
        {3, "Rename Directory", {"Archive", "Kestrova"}, {}, true},
        {4, "Delete Directory", {"Archive", "Kestrova"}, {}, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.action);
        fx.Settings().DirectoryOperation = Int16::From(c.action);
        DirectoryForm form(fx.session());
        form.show();
        EXPECT_EQ(form.windowTitle(), c.caption);
        auto* list = form.findChild<QListWidget*>("DirectoryList");
        EXPECT_EQ(list->isVisible() ? Entries(list) : QStringList(), c.entries);
        const QList<QListWidgetItem*> chosen = list->selectedItems();
        EXPECT_EQ(chosen.isEmpty() ? QString() : chosen.first()->text(), c.chosen);
        EXPECT_EQ(form.findChild<QLineEdit*>("DirectoryBox")->isVisible(), c.box);
        EXPECT_EQ(form.focusWidget(), c.entries.isEmpty()
                                          ? static_cast<QWidget*>(form.findChild<QLineEdit*>("DirectoryBox"))
                                          : list);
    }
}

TEST_F(DirectoryFormTest, OkActsAndClosesOrRefusesAndStays) {
    fx.MakeDir("C:\\Jobs\\PUNCH1\\Nested\\Inner"); // which cannot be deleted
    fx.Settings().DirectoryOperation = 2;
    {
        DirectoryForm form(fx.session());
        form.show();
        auto* box = form.findChild<QLineEdit*>("DirectoryBox");
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Invalid Directory Name !"}));
        EXPECT_TRUE(form.isVisible());
        QTest::keyClicks(box, "Sheet/Metal");
        EXPECT_EQ(box->text(), "SheetMetal") << "the name key filter is on the box";
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_FALSE(form.isVisible());
        EXPECT_TRUE(fx.Files().IsDirectory("C:\\Jobs\\PUNCH1\\SheetMetal"));
    }

    fx.Settings().DirectoryOperation = 4;
    fx.Messages().Clear();
    fx.Messages().Script({Answer::No, Answer::Yes});
    {
        DirectoryForm form(fx.session());
        form.show();
        auto* list = form.findChild<QListWidget*>("DirectoryList");
        QTest::keyClick(list, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Directory Selected !"}));
        QTest::keyClick(list, Qt::Key_End);
        QTest::keyClick(list, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Texts().last(), "Delete \"SheetMetal\" !");
        EXPECT_TRUE(form.isVisible()) << "No leaves the form open";
        EXPECT_TRUE(fx.Files().IsDirectory("C:\\Jobs\\PUNCH1\\SheetMetal"));

        // An error of the host is shown once, naming the directory, and the form stays open.
        QTest::keyClick(list, Qt::Key_Up);
        QTest::keyClick(list, Qt::Key_Return);
        const QStringList texts = fx.Messages().Texts();
        ASSERT_EQ(texts.size(), 4);
        EXPECT_EQ(texts.at(2), "Delete \"Nested\" !");
        EXPECT_TRUE(texts.at(3).contains("C:\\Jobs\\PUNCH1\\Nested")) << texts.at(3).toStdString();
        EXPECT_TRUE(form.isVisible());
        EXPECT_TRUE(fx.Files().IsDirectory("C:\\Jobs\\PUNCH1\\Nested\\Inner"));
    }

    fx.Settings().DirectoryOperation = 1;
    DirectoryForm form(fx.session());
    form.show();
    QTest::keyClick(form.findChild<QListWidget*>("DirectoryList"), Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(fx.Settings().CurrentDir, "Archive");
}

TEST_F(DirectoryFormTest, ADirectoryNameHasThirtyTwoCharactersAtMost) {
    const QString longest(32, u'd');
    const struct {
        int action;
        QStringList asked; // on the way to the new directory
        bool renamed;      // the new directory is "Kestrova" renamed
    } cases[] = {{2, {}, false}, {3, {"Rename \"Kestrova\"\nAs \"" + longest + "\" ?"}, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.action);
        fx.Settings().DirectoryOperation = Int16::From(c.action);
        DirectoryForm form(fx.session());
        form.show();
        if (c.action == 3)
            QTest::keyClick(form.findChild<QListWidget*>("DirectoryList"), Qt::Key_End);
        auto* box = form.findChild<QLineEdit*>("DirectoryBox");
        // Put there other than by keys, which the box does not filter: OK refuses it.
        box->setText(longest + u'd');
        fx.Messages().Clear();
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Invalid Directory Name !"}));
        box->clear();
        fx.Messages().Clear();
        QTest::keyClicks(box, longest + u'd');
        EXPECT_EQ(box->text(), longest);
        EXPECT_EQ(fx.Messages().Log(), QStringList{"<beep>"}) << "the key past the limit is refused";
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Texts(), c.asked);
        EXPECT_FALSE(form.isVisible());
        EXPECT_TRUE(fx.Files().IsDirectory("C:\\Jobs\\PUNCH1\\" + longest));
        EXPECT_EQ(fx.Files().IsDirectory("C:\\Jobs\\PUNCH1\\Kestrova"), !c.renamed);
        fx.Remove("C:\\Jobs\\PUNCH1\\" + longest);
    }
}

TEST_F(DirectoryFormTest, TheMachineFormStartsAtTheCurrentMachineAndHandsBackTheChoice) {
    fx.Settings().MachineNumber = 2;
    struct Case {
        Qt::Key key;
        int chosen;
    };
    for (const Case& c : {Case{Qt::Key_Return, 2}, Case{Qt::Key_Down, 3}, Case{Qt::Key_Escape, 0}}) {
        MachineForm form(fx.session());
        form.show();
        auto* list = form.findChild<QTreeWidget*>("MachineList");
        ASSERT_EQ(list->topLevelItemCount(), 3);
        EXPECT_EQ(list->topLevelItem(2)->text(0) + " " + list->topLevelItem(2)->text(1) + " " +
                      list->topLevelItem(2)->text(2),
                  "3 Laser 3030 Terminal LASER");
        EXPECT_EQ(list->currentItem(), list->topLevelItem(1));
        QTest::keyClick(list, c.key);
        if (c.key == Qt::Key_Down)
            QTest::keyClick(list, Qt::Key_Return);
        EXPECT_FALSE(form.isVisible());
        EXPECT_EQ(form.ChosenMachine(), c.chosen);
    }
}
