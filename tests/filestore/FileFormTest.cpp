// The file form offscreen, played from the keyboard with the recording message service.
#include "filestore/forms/FileForm.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

class FileFormTest : public ::testing::Test {
protected:
    void SetUp() override { fx.Load(); }
    FileForm& Open(int action) {
        fx.Settings().FileOperation = Int16::From(action);
        form = std::make_unique<FileForm>(fx.session());
        form->show();
        return *form;
    }
    QListWidget* List(const char* name) { return form->findChild<QListWidget*>(name); }
    QStringList Entries(const char* name) {
        QStringList entries;
        for (int i = 0; i < List(name)->count(); ++i)
            entries << List(name)->item(i)->text();
        return entries;
    }
    // Makes an entry current with the keys an operator would press: Home, then Down.
    void Choose(const char* list, const QString& entry) {
        QListWidget* l = List(list);
        l->setFocus();
        QTest::keyClick(l, Qt::Key_Home);
        while (l->currentItem() && l->currentItem()->text() != entry && l->currentRow() < l->count() - 1)
            QTest::keyClick(l, Qt::Key_Down);
        ASSERT_TRUE(l->currentItem() && l->currentItem()->text() == entry) << entry.toStdString();
    }
    void Untick(const char* box) {
        auto* check = form->findChild<QCheckBox*>(box);
        check->setFocus();
        QTest::keyClick(check, Qt::Key_Space);
    }
    // Enter on the control that has the focus, the questions answered as given; what was said.
    QStringList Ok(std::initializer_list<Answer> answers = {}) {
        fx.Messages().Clear();
        fx.Messages().Script(answers);
        QTest::keyClick(form->focusWidget(), Qt::Key_Return);
        return fx.Messages().Log();
    }
    InstallationFixture fx;
    std::unique_ptr<FileForm> form;
};

} // namespace

TEST_F(FileFormTest, DeleteAsksForOneOrManyAndCounts) {
    Open(1);
    EXPECT_EQ(form->windowTitle(), "Delete Files");
    EXPECT_EQ(Entries("FileList"), (QStringList{"bracket-2", "Bracket", "Cover", "X"}));
    EXPECT_EQ(Ok(), (QStringList{"<beep>", "No Files Selected !"}));

    Choose("FileList", "Cover");
    EXPECT_EQ(Ok({Answer::No}), QStringList{"Delete \"Cover\" ?"});
    EXPECT_TRUE(fx.OnDisk(Parts + "Cover.prg"));
    EXPECT_EQ(Ok({Answer::Yes}), (QStringList{"Delete \"Cover\" ?", "1 File Deleted !"}));
    EXPECT_FALSE(fx.OnDisk(Parts + "Cover.prg"));
    EXPECT_EQ(Entries("FileList"), (QStringList{"bracket-2", "Bracket", "X"}));

    // Programs only: the drawings of the same names stay.
    Untick("FileCheck1");
    EXPECT_FALSE(form->findChild<QCheckBox*>("FileCheck1")->isChecked());
    List("FileList")->setFocus();
    QTest::keyClick(List("FileList"), Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(Ok({Answer::Yes}), (QStringList{"Delete 3 Files ?", "3 Files Deleted !"}));
    EXPECT_TRUE(fx.OnDisk(Parts + "Bracket.drw"));
    EXPECT_TRUE(fx.OnDisk(Parts + "X.drw"));
    EXPECT_FALSE(fx.OnDisk(Parts + "X.prg"));
    EXPECT_TRUE(fx.OnDisk(Parts + "X")) << "a program delete takes only the program members";
}

TEST_F(FileFormTest, RenameAndCopyAsCheckTheNameAndAskFirst) {
    Open(2);
    EXPECT_EQ(form->windowTitle(), "Rename File");
    EXPECT_EQ(Ok(), (QStringList{"<beep>", "No File Selected !"}));
    Choose("FileList", "Bracket");
    auto* box = form->findChild<QLineEdit*>("FileBox");
    EXPECT_EQ(box->text(), "Bracket") << "the old name is offered to change";
    box->clear();
    EXPECT_EQ(Ok(), (QStringList{"<beep>", "Invalid File Name !"}));
    EXPECT_EQ(form->focusWidget(), box);

    QTest::keyClicks(box, "Bracket (left)");
    EXPECT_EQ(Ok({Answer::Yes}),
              (QStringList{"Rename \"Bracket\"\nAs \"Bracket (left)\" ?", "1 File Renamed !"}));
    EXPECT_EQ(fx.Read(Parts + "Bracket (left).drw"), "drawing\r\n");
    EXPECT_FALSE(fx.OnDisk(Parts + "Bracket.prg"));
    EXPECT_EQ(List("FileList")->currentItem()->text(), "Bracket (left)");

    // Copy as onto an existing family: the overwrite question, and No copies nothing.
    Open(3);
    Choose("FileList", "X");
    box = form->findChild<QLineEdit*>("FileBox");
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "Cover");
    EXPECT_EQ(Ok({Answer::Yes, Answer::No}),
              (QStringList{"Copy \"X\"\nAs \"Cover\" ?", "\"Cover\" Already Exists !\n\nOverwrite It ?",
                           "No Files Copied !"}));
    EXPECT_EQ(fx.Read(Parts + "Cover.prg"), "%\r\nG00 X0 Y0\r\n%\r\n");
}

TEST_F(FileFormTest, MoveToAnotherMachineTakesOnlyWhatMayLeaveIt) {
    Open(4);
    EXPECT_EQ(form->windowTitle(), "Move Files");
    EXPECT_TRUE(List("MachineList")->isVisible()) << "three machines to choose from";
    EXPECT_EQ(List("DirectoryList")->currentItem()->text(), "Parts") << "the current directory to start with";
    Choose("FileList", "X");

    // A destination drive that is not ready is refused as it is chosen.
    List("DirectoryList")->setFocus();
    QTest::keyClick(List("DirectoryList"), Qt::Key_End); // G:, the last entry
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Disc Not Ready !"}));
    EXPECT_EQ(List("DirectoryList")->currentItem(), nullptr);

    Choose("MachineList", "Laser 3030 Terminal");
    EXPECT_EQ(Entries("DirectoryList"),
              (QStringList{"Kestrova", "A: [Floppy Disk]", "E: [Removable Drive]", "G: [Removable Drive]"}));
    EXPECT_EQ(Ok(), (QStringList{"<beep>", "No Directory Selected !"}));
    Choose("DirectoryList", "Kestrova");
    EXPECT_EQ(Ok({Answer::Yes}), (QStringList{"Move \"X\"\nTo \"Kestrova\" ?", "1 File Moved !"}));
    EXPECT_EQ(fx.Files().List("C:\\Jobs\\LASER\\Kestrova\\", "X*", EntryKinds::Files),
              (QStringList{"X", "X.drw", "X.dxf", "X.inf", "X.nst", "X.prg", "X.rpt"}));
    EXPECT_EQ(fx.Files().List(Parts, "X*", EntryKinds::Files), (QStringList{"X.seq", "X.stp", "X.usr"}))
        << "the set-up sheet and the machine-bound files stay with the machine";

    // A drive pulled out between the choice and OK stops the batch before anything is touched.
    Choose("DirectoryList", "A: [Floppy Disk]");
    Choose("FileList", "Cover");
    fx.Remove("A:\\");
    EXPECT_EQ(Ok({Answer::Yes}),
              (QStringList{"Move \"Cover\"\nTo \"A: [Floppy Disk]\" ?", "<beep>", "Disc Not Ready !"}));
    EXPECT_TRUE(fx.OnDisk(Parts + "Cover.prg"));
}

TEST_F(FileFormTest, AFailedCopyStopsTheBatchWithOneMessage) {
    Open(5);
    Untick("FileCheck1"); // programs only
    List("FileList")->setFocus();
    QTest::keyClick(List("FileList"), Qt::Key_A, Qt::ControlModifier);
    Choose("DirectoryList", "Archive");
    // Ctrl+A chose every program; choosing the directory left the file selection as it was.
    EXPECT_EQ(List("FileList")->selectedItems().size(), 4);
    FaultInjector faults(fx.Files());
    faults.Fail(FileStep::Write, "Cover.prg", ENOSPC);
    const QStringList texts = Ok({Answer::Yes});
    ASSERT_EQ(texts.size(), 2) << texts.join(" | ").toStdString();
    EXPECT_EQ(texts.at(0), "Copy 4 Files\nTo \"Archive\" ?");
    EXPECT_TRUE(texts.at(1).contains("Disk full") && texts.at(1).contains("Cover.prg"))
        << texts.at(1).toStdString();
    const QString archive = QStringLiteral("C:\\Jobs\\PUNCH1\\Archive\\");
    EXPECT_TRUE(fx.OnDisk(archive + "Bracket.prg")) << "families before the failure are copied";
    EXPECT_FALSE(fx.Files().Exists(archive + "Cover.prg"));
    EXPECT_FALSE(fx.Files().Exists(archive + "X.prg")) << "the batch stops at the failure";
    EXPECT_TRUE(fx.OnDisk(Parts + "Cover.prg"));
}

TEST_F(FileFormTest, ChoosingAMachineAnyWayMovesOnToItsDirectories) {
    enum class Way { Arrow, Typing, Click, ClickOnTheChosenOne };
    const QStringList drives{"A: [Floppy Disk]", "E: [Removable Drive]", "G: [Removable Drive]"};
    const QStringList laser = QStringList{"Kestrova"} + drives;
    const struct {
        Way way;
        QString machine;
        QStringList directories;
    } cases[] = {
        {Way::Arrow, "Laser 3030 Terminal", laser},
        {Way::Typing, "Laser 3030 Terminal", laser},
        {Way::Click, "Laser 3030 Terminal", laser},
        {Way::ClickOnTheChosenOne, "Trumpf Punch 5000", QStringList{"Archive", "Kestrova", "Parts"} + drives},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.way));
        Open(5);
        QListWidget* machines = List("MachineList");
        machines->setFocus();
        QApplication::processEvents(); // the list laid out
        switch (c.way) {
        case Way::Arrow:
            QTest::keyClick(machines, Qt::Key_End);
            break;
        case Way::Typing:
            QTest::keyClick(machines, Qt::Key_L);
            break;
        case Way::Click:
        case Way::ClickOnTheChosenOne:
            QTest::mouseClick(
                machines->viewport(), Qt::LeftButton, {},
                machines->visualItemRect(machines->findItems(c.machine, Qt::MatchExactly).value(0)).center());
            break;
        }
        ASSERT_TRUE(machines->currentItem());
        EXPECT_EQ(machines->currentItem()->text(), c.machine);
        EXPECT_EQ(Entries("DirectoryList"), c.directories);
        EXPECT_EQ(form->focusWidget(), List("DirectoryList"));
    }
}

TEST_F(FileFormTest, CopyOrMoveToADriveGoesToItsRootWithoutTheMachineBoundFiles) {
    const QStringList leaving{"X", "X.drw", "X.dxf", "X.inf", "X.nst", "X.prg", "X.rpt"};
    const QStringList staying{"X.seq", "X.stp", "X.usr"};
    for (const int action : {5, 4}) {
        SCOPED_TRACE(action);
        fx.Remove("E:\\");
        fx.MakeDir("E:\\");
        Open(action);
        Choose("FileList", "X");
        Choose("DirectoryList", "E: [Removable Drive]");
        const bool move = action == 4;
        EXPECT_EQ(Ok({Answer::Yes}),
                  (QStringList{QString(move ? "Move" : "Copy") + " \"X\"\nTo \"E: [Removable Drive]\" ?",
                               move ? "1 File Moved !" : "1 File Copied !"}));
        EXPECT_EQ(fx.Files().List("E:\\", "*", EntryKinds::Both), leaving);
        EXPECT_EQ(fx.Files().List(Parts, "X*", EntryKinds::Files), move ? staying : leaving + staying);
    }
}

TEST_F(FileFormTest, TheMachineIsAskedForOnlyWhenThereIsAChoice) {
    Open(5);
    Choose("FileList", "Cover");
    Choose("DirectoryList", "Archive");
    QListWidget* machines = List("MachineList");
    machines->setFocus();
    QTest::keyClick(machines, Qt::Key_Space, Qt::ControlModifier);
    ASSERT_TRUE(machines->selectedItems().isEmpty());
    EXPECT_EQ(Ok(), (QStringList{"<beep>", "No Machine Selected !"}));
    EXPECT_EQ(form->focusWidget(), machines);
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\PUNCH1\\Archive\\Cover.prg"));

    // With one machine there is nothing to choose: the files go within it.
    fx.WriteLines("C:\\Kestrova\\Machine.lst",
                  {"1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\"", "******"});
    fx.Load();
    Open(5);
    EXPECT_TRUE(List("MachineList")->isHidden());
    Choose("FileList", "Cover");
    Choose("DirectoryList", "Archive");
    EXPECT_EQ(Ok({Answer::Yes}), (QStringList{"Copy \"Cover\"\nTo \"Archive\" ?", "1 File Copied !"}));
    EXPECT_TRUE(fx.OnDisk("C:\\Jobs\\PUNCH1\\Archive\\Cover.prg"));
}

TEST_F(FileFormTest, ADoubleClickedFileIsDeletedOrGetsItsNameOrDestinationNext) {
    const struct {
        int action;
        const char* focus; // "" the delete question instead
    } cases[] = {{1, ""}, {2, "FileBox"}, {3, "FileBox"}, {4, "DirectoryList"}, {5, "DirectoryList"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.action);
        Open(c.action);
        QListWidget* files = List("FileList");
        QApplication::processEvents(); // the list laid out
        const QPoint cover =
            files->visualItemRect(files->findItems("Cover", Qt::MatchExactly).value(0)).center();
        fx.Messages().Clear();
        fx.Messages().Script({Answer::No});
        QTest::mouseClick(files->viewport(), Qt::LeftButton, {}, cover);
        QTest::mouseDClick(files->viewport(), Qt::LeftButton, {}, cover);
        EXPECT_EQ(fx.Messages().Texts(), *c.focus ? QStringList() : QStringList{"Delete \"Cover\" ?"});
        EXPECT_EQ(form->focusWidget()->objectName(), QLatin1String(*c.focus ? c.focus : "FileList"));
        ASSERT_EQ(files->selectedItems().size(), 1);
        EXPECT_EQ(files->selectedItems().first()->text(), "Cover");
    }
}

TEST_F(FileFormTest, ANewFileNameHasThirtyTwoCharactersAtMost) {
    const QString longest(32, u'n');
    for (const int action : {2, 3}) {
        SCOPED_TRACE(action);
        fx.Write(Parts + longest + "n.prg", "too long a name");
        Open(action);
        auto* box = form->findChild<QLineEdit*>("FileBox");
        // A family named elsewhere with a name too long: offered, but refused.
        Choose("FileList", longest + "n");
        EXPECT_EQ(box->text(), longest + "n");
        EXPECT_EQ(Ok(), (QStringList{"<beep>", "Invalid File Name !"}));

        Choose("FileList", "Cover");
        box->setFocus();
        box->selectAll();
        fx.Messages().Clear();
        QTest::keyClicks(box, longest + "n");
        EXPECT_EQ(box->text(), longest);
        EXPECT_EQ(fx.Messages().Log(), QStringList{"<beep>"}) << "the key past the limit is refused";
        EXPECT_EQ(Ok({Answer::Yes}).value(1), action == 2 ? "1 File Renamed !" : "1 File Copied !");
        EXPECT_TRUE(fx.OnDisk(Parts + longest + ".prg"));
        fx.Remove(Parts + longest + ".prg");
        fx.Write(Parts + "Cover.prg", "cover");
    }
}
