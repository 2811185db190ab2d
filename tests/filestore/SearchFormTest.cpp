// The search picker offscreen, played from the keyboard.
#include "filestore/forms/SearchForm.h"

#include "InstallationFixture.h"
#include "ModalScript.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class SearchFormTest : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.Write("C:\\Jobs\\PUNCH1\\Kestrova\\Xab.drw", "d");
        fx.Write("C:\\Jobs\\LASER\\Kestrova\\Xlaser.prg", "%");
    }
    QStringList Rows(const SearchForm& form) {
        QStringList rows;
        auto* list = form.findChild<QTreeWidget*>("SearchList");
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            rows << list->topLevelItem(i)->text(0) + " in " + list->topLevelItem(i)->text(1);
        return rows;
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(SearchFormTest, RefusalsKeepTheCriteriaAndTheChosenRowIsHandedBack) {
    fx.Settings().SearchMode = 3;
    fx.Settings().SearchResult = {-1, "stale", "stale", "stale"};
    SearchForm form(fx.session());
    form.show();
    EXPECT_EQ(fx.Settings().SearchResult.flag, 0) << "the result is reset when the form opens";
    auto* box = form.findChild<QLineEdit*>("CriteriaBox");
    auto* criteria = form.findChild<QWidget*>("CriteriaFrame");
    auto* results = form.findChild<QWidget*>("SearchFrame");
    EXPECT_TRUE(form.findChild<QWidget*>("CheckFrame")->isVisible()) << "mode 3 lets the operator choose";
    ASSERT_EQ(form.focusWidget(), box);

    struct Step {
        QString typed;
        bool drawings;
        bool programs;
        QString message;
    };
    const QList<Step> refusals{
        {QString(33, u'x'), true, true, "Invalid Search Text"},
        {"x", false, false, "Drawings And / Or Programs Must Be Selected"},
        {"zz", true, true, "No Occurrences Of \" zz \" Found "},
        {"", false, true, "No Programs Found "},
    };
    fx.Remove("C:\\Jobs\\PUNCH1\\Parts");
    fx.Remove("C:\\Jobs\\PUNCH1\\Kestrova\\Sample.prg");
    for (const Step& s : refusals) {
        SCOPED_TRACE(s.message.toStdString());
        fx.Messages().Clear();
        box->clear();
        form.findChild<QCheckBox*>("FileCheck1")->setChecked(s.drawings);
        form.findChild<QCheckBox*>("FileCheck2")->setChecked(s.programs);
        box->setFocus();
        QTest::keyClicks(box, s.typed);
        QTest::keyClick(box, Qt::Key_Return);
        EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", s.message}));
        EXPECT_TRUE(criteria->isVisible());
        EXPECT_FALSE(results->isVisible());
        EXPECT_EQ(form.focusWidget(), box);
    }

    fx.Write("C:\\Jobs\\PUNCH1\\Archive\\xab.prg", "%");
    fx.Messages().Clear();
    box->clear();
    form.findChild<QCheckBox*>("FileCheck1")->setChecked(true);
    QTest::keyClicks(box, "AB");
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
    ASSERT_TRUE(results->isVisible());
    EXPECT_FALSE(criteria->isVisible());
    EXPECT_EQ(Rows(form), (QStringList{"xab in Archive", "Xab in Kestrova"}));
    EXPECT_EQ(form.findChild<QLabel*>("SearchLabel1")->text(), "\" AB \"");
    EXPECT_EQ(form.findChild<QLabel*>("SearchLabel2")->text(), " All Files ");
    auto* list = form.findChild<QTreeWidget*>("SearchList");
    EXPECT_EQ(form.focusWidget(), list);
    EXPECT_EQ(list->currentItem(), list->topLevelItem(0));

    QTest::keyClick(list, Qt::Key_End);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(form.result(), QDialog::Accepted);
    const SearchResultRecord& found = fx.Settings().SearchResult;
    EXPECT_EQ(found.flag, -1);
    EXPECT_EQ(found.machineDir, "PUNCH1");
    EXPECT_EQ(found.name, "Xab");
    EXPECT_EQ(found.directory, "Kestrova");
}

TEST_F(SearchFormTest, TheModeSetsTheKindsAndTheMachineSearched) {
    struct Case {
        int mode;
        QString label; // "" when the check boxes show instead
        QStringList rows;
    };
    fx.Settings().CommsMachineDir = "LASER";
    const QList<Case> cases{
        {1, "Drawings", {"Xab in Kestrova", "X in Parts"}},
        {2, "Programs", {"X in Parts"}},
        {22, "Programs", {"Xlaser in Kestrova"}},
        {3, "", {"Xab in Kestrova", "X in Parts"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mode);
        fx.Settings().SearchMode = Int16::From(c.mode);
        SearchForm form(fx.session());
        form.show();
        auto* label = form.findChild<QLabel*>("CriteriaLabel");
        EXPECT_EQ(label->isVisible() ? label->text() : QString(), c.label);
        EXPECT_EQ(form.findChild<QWidget*>("CheckFrame")->isVisible(), c.label.isEmpty());
        QTest::keyClicks(form.findChild<QLineEdit*>("CriteriaBox"), "x");
        QTest::keyClick(form.findChild<QLineEdit*>("CriteriaBox"), Qt::Key_Return);
        EXPECT_EQ(Rows(form), c.rows);
    }
}

TEST_F(SearchFormTest, ThePickerSaysWhetherAFileWasPicked) {
    QObject script;
    // Esc on the result page: nothing picked.
    OnModal(&script, "SearchForm", [](QDialog* form) {
        QTest::keyClicks(form->findChild<QLineEdit*>("CriteriaBox"), "bracket");
        form->findChild<QPushButton*>("CriteriaOk")->click();
        QTest::keyClick(form->findChild<QTreeWidget*>("SearchList"), Qt::Key_Escape);
    });
    EXPECT_FALSE(PickFileBySearch(fx.session(), nullptr, 2));
    EXPECT_EQ(fx.Settings().SearchResult.flag, 0);
    EXPECT_EQ(fx.Settings().SearchMode, 2);

    OnModal(&script, "SearchForm", [](QDialog* form) {
        QTest::keyClicks(form->findChild<QLineEdit*>("CriteriaBox"), "cov");
        QTest::keyClick(form->findChild<QLineEdit*>("CriteriaBox"), Qt::Key_Return);
        auto* list = form->findChild<QTreeWidget*>("SearchList");
        QApplication::processEvents(); // the result page laid out
        const QRect row = list->visualItemRect(list->topLevelItem(0));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row.center());
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row.center());
    });
    EXPECT_TRUE(PickFileBySearch(fx.session(), nullptr, 2));
    EXPECT_EQ(fx.Settings().SearchResult.name, "Cover");
    EXPECT_EQ(fx.Settings().SearchResult.directory, "Parts");
}
