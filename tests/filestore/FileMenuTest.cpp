// The File menu's file store entries on the main window, with its forms played from the keyboard.
#include "MainWindowFixture.h"
#include "ModalScript.h"
#include "ScriptedSerialLine.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class FileMenuTest : public MainWindowFixture {
protected:
    void SetUp() override {
        Open();
        window->SetFormLines([] { return std::make_unique<ScriptedSerialLine>(); });
        window->AddMachineChangedHook([this] { ++machineChanges; });
    }
    // The machine chosen in the machine form with the keys given.
    void ChooseMachine(QList<Qt::Key> keys) {
        OnModal(&script, "MachineForm", [keys](QDialog* form) {
            for (const Qt::Key key : keys)
                QTest::keyClick(form->findChild<QTreeWidget*>("MachineList"), key);
        });
        Trigger("MachineItem");
    }
    QObject script;
    int machineChanges = 0;
};

} // namespace

TEST_F(FileMenuTest, SelectMachineMakesTheChoiceCurrentAndSetsTheWindowUpForIt) {
    fx.WriteLines("C:\\Kestrova\\Lastfile.lst", {"Parts", "Bracket", "******"});
    EXPECT_FALSE(Entry("RainerMenu")->isVisible());

    ChooseMachine({Qt::Key_Escape});
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Kestrova.cfg").value(3), "1") << "Cancel changes nothing";
    EXPECT_EQ(machineChanges, 0);

    ChooseMachine({Qt::Key_Down, Qt::Key_Return});
    const GlobalSettings& g = fx.Settings();
    EXPECT_EQ(int(g.MachineNumber), 2);
    EXPECT_EQ(g.MachineDir, "RAINER");
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Kestrova.cfg").mid(3, 2), (QStringList{"2", "Kestrova"}))
        << "the machine has no \"Parts\": its own directory is current";
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Lastfile.lst"), (QStringList{"******"}));
    EXPECT_EQ(machineChanges, 1) << "the background receive is set up again";
    EXPECT_TRUE(Entry("RainerMenu")->isVisible()) << "the menus follow the machine";
    EXPECT_EQ(Status(), " Kestrova|Rainer Combi 1250 ");
    EXPECT_TRUE(Entry("FileMenu")->isEnabled());
    EXPECT_TRUE(fx.Messages().Log().isEmpty());

    // A machine whose data cannot be loaded: one message naming the file, the machine as it was.
    fx.Remove("C:\\Kestrova\\Setup\\Data\\LASER.msr");
    ChooseMachine({Qt::Key_End, Qt::Key_Return});
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("LASER.msr"))
        << fx.Messages().Texts().first().toStdString();
    EXPECT_EQ(int(g.MachineNumber), 2);
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Kestrova.cfg").value(3), "2");
    EXPECT_EQ(Status(), " Kestrova|Rainer Combi 1250 ");
    EXPECT_TRUE(Entry("FileMenu")->isEnabled());
}

// Machine descriptions with bytes 0x80..0x9F are shown as Windows-1252 in the machine form and
// the status bar.
TEST_F(FileMenuTest, MachineDescriptionsShowHighBytesAsWindows1252) {
    fx.Write("C:\\Kestrova\\Machine.lst", "1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\"\r\n"
                                          "2,\"Rainer \x80 \x8A\x9E\x85\",\"RAINER\",\"Setman\",\"R\"\r\n"
                                          "******\r\n");
    ChooseMachine({Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(Status(), QStringLiteral(" Kestrova|Rainer \u20AC \u0160\u017E\u2026 "));
    QStringList shown;
    OnModal(&script, "MachineForm", [&shown](QDialog* form) {
        const auto* list = form->findChild<QTreeWidget*>("MachineList");
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            shown << list->topLevelItem(i)->text(1);
        QTest::keyClick(form, Qt::Key_Escape);
    });
    Trigger("MachineItem");
    EXPECT_EQ(shown, (QStringList{"Trumpf Punch 5000", QStringLiteral("Rainer \u20AC \u0160\u017E\u2026")}));
}

TEST_F(FileMenuTest, FileSearchChangesToTheFoundDirectoryAndRemembersTheFile) {
    OnModal(&script, "SearchForm", [](QDialog* form) {
        QTest::keyClicks(form->findChild<QLineEdit*>("CriteriaBox"), "sam");
        QTest::keyClick(form->findChild<QLineEdit*>("CriteriaBox"), Qt::Key_Return);
        QTest::keyClick(form->findChild<QTreeWidget*>("SearchList"), Qt::Key_Return);
    });
    Trigger("SearchItem");
    EXPECT_EQ(fx.Settings().CurrentDir, "Kestrova");
    EXPECT_EQ(Status(), " Kestrova|Trumpf Punch 5000 ");
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Lastfile.lst"), (QStringList{"Kestrova", "Sample", "******"}));
}

TEST_F(FileMenuTest, RestoreDrawingWantsADrawingInTheUndoArea) {
    Trigger("RestoreItem");
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Restorable Drawing Available !"}));

    fx.Write("C:\\Kestrova\\Undo\\Restore.drw", "undone");
    OnModal(&script, "RestoreForm", [](QDialog* form) {
        auto* name = form->findChild<QComboBox*>("NameCombo");
        QTest::keyClicks(name, "Again:1");
        QTest::keyClick(name, Qt::Key_Return);
    });
    Trigger("RestoreItem");
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Again1.drw"), "undone") << "the name box filters its keys";
    EXPECT_EQ(fx.Messages().Texts().last(), "Last Modified Drawing Restored As\n\n\"Again1\"");
}

TEST_F(FileMenuTest, TheSendFormsSearchChoosesTheFoundProgram) {
    QStringList chosen;
    OnModal(&script, "SendForm", [&](QDialog* send) {
        OnModal(&script, "SearchForm", [](QDialog* search) {
            QTest::keyClicks(search->findChild<QLineEdit*>("CriteriaBox"), "ampl");
            QTest::keyClick(search->findChild<QLineEdit*>("CriteriaBox"), Qt::Key_Return);
            QTest::keyClick(search->findChild<QTreeWidget*>("SearchList"), Qt::Key_Return);
        });
        send->findChild<QPushButton*>("SendSrch")->click();
        for (const char* list : {"DirectoryList", "FileList"})
            for (const QListWidgetItem* item : send->findChild<QListWidget*>(list)->selectedItems())
                chosen << item->text();
    });
    Trigger("CommsItem1");
    EXPECT_EQ(chosen, (QStringList{"Kestrova", "Sample"}));
}
