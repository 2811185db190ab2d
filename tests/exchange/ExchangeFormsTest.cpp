// The external form and the Rainer form offscreen, driven from the keyboard through the forms'
// own controls, with the recording message service.
#include "InstallationFixture.h"
#include "exchange/ImportOk.h"
#include "exchange/RainerIndex.h"
#include "exchange/forms/ExternalForm.h"
#include "exchange/forms/RainerForm.h"
#include "tests/filestore/ModalScript.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class ExchangeForms : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.MakeDir("E:\\Out\\Sub");
        fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt", {"0", "nc", "2", "1", "E:\\Out\\", "******"});
        LastImportSource().clear();
    }
    template <typename T>
    T* Child(QWidget& form, const char* name) {
        T* child = form.findChild<T*>(QString::fromLatin1(name));
        EXPECT_TRUE(child) << name;
        return child;
    }
    // A floppy of the first index variant with "Floppy1" in slot 3 and "Floppy2" in slot 5.
    void WriteFloppy() {
        fx.Settings().RainerType = 1;
        QByteArray index = FreshIndex();
        index.replace(64 * 2, 64, UsedEntry(1, "Floppy1"));
        index.replace(64 * 4, 64, UsedEntry(1, "Floppy2"));
        fx.Write("A:\\INDICE--.PRG", index);
        fx.Write("A:\\P003---.PRG", "one");
        fx.Write("A:\\P005---.PRG", "two");
    }
    InstallationFixture fx;
};

TEST_F(ExchangeForms, ExportFileAsTakesTheCurrentProgramAndAFilteredNewName) {
    fx.Settings().ImportMode = 4;
    ExternalForm form(fx.session());
    EXPECT_EQ(form.windowTitle(), "Export File");
    form.show();
    auto* files = Child<QListWidget>(form, "ExportFileList");
    auto* name = Child<QLineEdit>(form, "ExportNameBox");
    EXPECT_EQ(Child<QComboBox>(form, "ExtentionCombo")->currentText(), "nc") << "the last choice comes back";
    EXPECT_EQ(name->text(), "bracket-2");

    files->setFocus();
    QTest::keyClick(files, Qt::Key_Down);
    EXPECT_EQ(name->text(), "Bracket") << "the name follows the current entry, however it was reached";

    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "NEW/1");
    EXPECT_EQ(name->text(), "NEW1");
    EXPECT_EQ(fx.Messages().Beeps(), 1);

    fx.Messages().Script({Answer::Yes});
    QTest::keyClick(name, Qt::Key_Return);
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Export \"Bracket\"\nTo \"E:\\Out\\\" ?", "1 File Exported !"}));
    EXPECT_EQ(form.result(), QDialog::Accepted);
    EXPECT_EQ(fx.Read("E:\\Out\\NEW1.nc"), fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg"));
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt"),
              (QStringList{"0", "nc", "2", "1", "E:\\Out\\", "******"}))
        << "line 4: the single-file list was in use";
}

TEST_F(ExchangeForms, AnExportNameHasSixtyFourCharactersOrEightInTheShortFormat) {
    fx.Settings().ImportMode = 4;
    const QString question = QStringLiteral("Export \"bracket-2\"\nTo \"E:\\Out\\\" ?");
    const QStringList exported{question, "1 File Exported !"};
    const struct {
        int format;
        int limit;
        QStringList oneLonger; // what typing one character more and OK meet
    } cases[] = {
        {0, 64, {"<beep>", question}},  // the box refuses the key
        {2, 8, {"Invalid Filename !"}}, // OK refuses the name
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.limit);
        fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt",
                      {QString::number(c.format), "nc", "2", "1", "E:\\Out\\", "******"});
        ExternalForm form(fx.session());
        form.show();
        auto* name = Child<QLineEdit>(form, "ExportNameBox");
        for (const int length : {c.limit + 1, c.limit}) {
            name->setFocus();
            name->selectAll();
            fx.Messages().Clear();
            if (length == c.limit)
                fx.Messages().Script({Answer::Yes}); // else the question's default, No
            QTest::keyClicks(name, QString(length, u'e'));
            QTest::keyClick(name, Qt::Key_Return);
            EXPECT_EQ(fx.Messages().Log(), length > c.limit ? c.oneLonger : exported);
        }
        EXPECT_TRUE(fx.OnDisk("E:\\Out\\" + QString(c.limit, u'e') + ".nc"));
    }
}

TEST_F(ExchangeForms, ExportFilesGoesToTheCurrentFolderInTheChosenFormat) {
    fx.Settings().ImportMode = 3;
    ExternalForm form(fx.session());
    EXPECT_EQ(form.windowTitle(), "Export Files");
    form.show();
    auto* files = Child<QListWidget>(form, "ExportFileList");
    auto* folders = Child<QListWidget>(form, "ExportFolderList");
    EXPECT_EQ(folders->currentItem()->text().trimmed(), "Out");

    Child<QCheckBox>(form, "FileCheck2")->click();
    EXPECT_EQ(files->count(), 0) << "no kind chosen, nothing listed";
    Child<QCheckBox>(form, "FileCheck2")->click();
    files->setFocus();
    QTest::keyClick(files, Qt::Key_A, Qt::ControlModifier);
    Child<QRadioButton>(form, "FormatOption1")->click();
    folders->setFocus();
    QTest::keyClick(folders, Qt::Key_Down);
    EXPECT_EQ(folders->currentItem()->text().trimmed(), "Sub");

    fx.Messages().Script({Answer::Yes});
    Child<QPushButton>(form, "ExportOk")->click();
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Export 4 Files\nTo \"E:\\Out\\Sub\\\" ?", "4 Files Exported !"}));
    EXPECT_EQ(fx.ReadLines("E:\\Out\\Sub\\Work.lkp"),
              (QStringList{"bracket-2, 1 ", "Bracket, 2 ", "Cover, 3 ", "X, 4 ", "******"}));
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt"),
              (QStringList{"1", "nc", "2", "2", "E:\\Out\\Sub\\", "******"}));
}

TEST_F(ExchangeForms, ImportFilesListsTheSourceByPatternAndImportsTheSelection) {
    fx.Write("E:\\In\\A.prg", "a");
    fx.Write("E:\\In\\B.PRG", "b");
    fx.Write("E:\\In\\C.dxf", "c");
    LastImportSource() = "E:\\In\\";
    fx.Settings().ImportMode = 1;
    ExternalForm form(fx.session());
    EXPECT_EQ(form.windowTitle(), "Import Files");
    form.show();
    auto* files = Child<QListWidget>(form, "ImportFileList");
    auto* pattern = Child<QComboBox>(form, "ImportPatternCombo");
    EXPECT_EQ(pattern->itemText(0), "*.*             All Files ");
    EXPECT_EQ(files->count(), 3);
    EXPECT_EQ(Child<QComboBox>(form, "ImportDirectoryList")->currentText(), "Parts");

    pattern->setFocus();
    pattern->lineEdit()->selectAll();
    QTest::keyClicks(pattern->lineEdit(), "*.prg:");
    EXPECT_EQ(pattern->currentText(), "*.prg") << "the pattern box filters its keys";
    EXPECT_EQ(files->count(), 2);
    Child<QPushButton>(form, "SelectAll")->click();

    fx.Messages().Script({Answer::Yes});
    Child<QPushButton>(form, "ImportOk")->click();
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Import 2 Files\nTo \"Parts\" ?", "2 Files Imported !"}));
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\A.prg"), "a");
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\B.prg"), "b");
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(ExchangeForms, TheRainerFormImportsTheCurrentEntryAndKeepsExportOpenWithoutAChoice) {
    WriteFloppy();

    fx.Settings().RainerOperation = 2;
    {
        RainerForm form(fx.session());
        form.show();
        auto* list = Child<QListWidget>(form, "ProgramList");
        ASSERT_EQ(list->count(), 2);
        QTest::keyClick(list, Qt::Key_End);
        QTest::keyClick(list, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Texts(), (QStringList{"Import Program \"Floppy2\" From Floppy Disk ?",
                                                      "1 Program Has Been Imported"}));
        EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Floppy2.prg"), "two");
        EXPECT_FALSE(form.isVisible());
        EXPECT_EQ(fx.Settings().RainerOperation, 0);
    }

    fx.Messages().Clear();
    fx.Settings().RainerOperation = 1;
    RainerForm form(fx.session());
    form.show();
    Child<QListWidget>(form, "ProgramList")->clearSelection();
    Child<QPushButton>(form, "RainOk")->click();
    EXPECT_EQ(fx.Messages().Texts(), QStringList{"No Programs Selected !"});
    EXPECT_TRUE(form.isVisible());
    Child<QPushButton>(form, "RainCncl")->click();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(fx.Settings().RainerOperation, 0);
}

// Each operation shows what it needs, OK is the default, the list starts on its first program
// and a double-click acts as OK.
TEST_F(ExchangeForms, TheRainerFormShowsWhatEachOperationNeedsAndADoubleClickActsAsOk) {
    WriteFloppy();
    const struct {
        int operation;
        const char* caption;
        const char* listLabel;
        bool directory, search;
        const char* first;
        const char* clicked;
        const char* question;
    } cases[] = {
        // clang-format off
        {1, "Rainer - Export", "Export Programs", true, true, "bracket-2", "Cover", "Export \"Cover\" ?"},
        {2, "Rainer - Import", "Import Programs", true, false, "Floppy1", "Floppy2",
         "Import Program \"Floppy2\" From Floppy Disk ?"},
        {3, "Rainer - Delete", "Delete Programs", false, false, "Floppy1", "Floppy2",
         "Delete Program \"Floppy2\" From Floppy Disk ?"},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.operation);
        fx.Settings().RainerOperation = Int16::From(c.operation);
        RainerForm form(fx.session());
        form.show();
        EXPECT_EQ(form.windowTitle(), c.caption);
        EXPECT_EQ(Child<QLabel>(form, "ListLabel")->text(), c.listLabel);
        EXPECT_EQ(Child<QWidget>(form, "DirectoryFrame")->isVisible(), c.directory);
        EXPECT_EQ(Child<QWidget>(form, "Search")->isVisible(), c.search);
        EXPECT_TRUE(Child<QPushButton>(form, "RainOk")->isDefault());
        auto* list = Child<QListWidget>(form, "ProgramList");
        ASSERT_EQ(list->selectedItems().size(), 1);
        EXPECT_EQ(list->selectedItems().first()->text(), c.first);
        EXPECT_EQ(list->currentItem()->text(), c.first);
        fx.Messages().Clear();
        fx.Messages().Script({Answer::No});
        const auto clicked = list->findItems(c.clicked, Qt::MatchExactly);
        ASSERT_EQ(clicked.size(), 1);
        QApplication::processEvents(); // the list laid out
        const QPoint entry = list->visualItemRect(clicked.first()).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, entry);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, entry);
        EXPECT_EQ(fx.Messages().Texts(), QStringList{c.question});
        EXPECT_FALSE(form.isVisible()) << "declined, the operation ends";
    }
}

TEST_F(ExchangeForms, AFloppyProgramsNameHasFiftyCharactersAtMost) {
    fx.Settings().RainerType = 1;
    const QString longest(50, u'r');
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\" + longest + ".prg", "fifty");
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\" + longest + "r.prg", "fifty-one");
    const struct {
        QString name;
        QStringList texts;
    } cases[] = {
        {longest + u'r',
         {"Export \"" + longest + "r\" ?", "Invalid File Name !", "No Programs Have Been Exported"}},
        {longest, {"Export \"" + longest + "\" ?", "1 Program Has Been Exported"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name.size());
        fx.Settings().RainerOperation = 1;
        RainerForm form(fx.session());
        form.show();
        auto* list = Child<QListWidget>(form, "ProgramList");
        list->setCurrentItem(list->findItems(c.name, Qt::MatchExactly).value(0));
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        QTest::keyClick(list, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Texts(), c.texts);
    }
    EXPECT_EQ(fx.Read("A:\\INDICE--.PRG").left(50), longest.toLatin1());
    EXPECT_EQ(fx.Read("A:\\P001---.PRG"), "fifty");
}

TEST_F(ExchangeForms, TheRainerExportSearchMakesTheFoundProgramsDirectoryCurrent) {
    fx.Settings().RainerOperation = 1;
    RainerForm form(fx.session());
    form.show();
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form)) << "the access key needs the active window";
    QObject script;
    OnModal(&script, "SearchForm", [](QDialog* search) {
        auto* criteria = search->findChild<QLineEdit*>("CriteriaBox");
        QTest::keyClicks(criteria, "sam");
        QTest::keyClick(criteria, Qt::Key_Return);
        QTest::keyClick(search->findChild<QWidget*>("SearchList"), Qt::Key_Return);
    });
    // An access key presses its button after the button's short animation.
    QTest::keyClick(Child<QListWidget>(form, "ProgramList"), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return fx.Settings().CurrentDir != "Parts"; }, 2000));
    EXPECT_EQ(fx.Settings().CurrentDir, "Kestrova");
    EXPECT_EQ(Child<QComboBox>(form, "DirectoryList")->currentText(), "Kestrova");
    auto* list = Child<QListWidget>(form, "ProgramList");
    ASSERT_TRUE(list->currentItem());
    EXPECT_EQ(list->currentItem()->text(), "Sample");
    EXPECT_TRUE(list->currentItem()->isSelected());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty()) << fx.Messages().Texts().join('|').toStdString();
}

} // namespace
