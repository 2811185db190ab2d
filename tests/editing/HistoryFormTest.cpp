// The program history form offscreen, driven from the keyboard through the form itself.
#include "editing/forms/HistoryForm.h"

#include "InstallationFixture.h"
#include "editing/forms/CompareForm.h"
#include "editing/forms/TextEditorWindow.h"
#include "filestore/HistoryOperations.h"

#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

class HistoryFormTest : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        // Three texts of X.prg: the first two kept, the third current.
        const QList<QByteArray> texts{"N10 G90\r\nN20 X1\r\nN30 M30\r\n", "N10 G90\r\nN20 X2\r\nN30 M30\r\n",
                                      "%\r\nN10 G90\r\nN20 X2\r\n"};
        for (int i = 0; i < texts.size(); ++i) {
            fx.Remove(Parts + "X.prg");
            fx.Write(Parts + "X.prg", texts[i]);
            if (i < 2)
                KeepPreviousVersion(fx.session(), Parts + "X.prg", i == 0 ? "first" : "second");
        }
    }
    // A key to the form's active window (the form itself once the compare form is gone), as the
    // operator types it.
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        if (!QApplication::focusWidget()) {
            m_form->activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(m_form));
        }
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    // An access key: it presses its button after the button's short animation, awaited here.
    void AccessKey(Qt::Key key) {
        Key(key, Qt::AltModifier);
        QTest::qWait(300);
    }
    QWidget* m_form = nullptr;
    InstallationFixture fx;
};

} // namespace

TEST_F(HistoryFormTest, VersionsCompareAndRestoreFromTheKeyboard) {
    HistoryForm form(fx.session(), "x.PRG");
    m_form = &form;
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    auto* versions = form.findChild<QListWidget*>("HistoryVersions");
    ASSERT_TRUE(versions);
    ASSERT_EQ(versions->count(), 2);
    EXPECT_TRUE(versions->item(0)->text().contains("   second   26 bytes"));
    EXPECT_TRUE(versions->item(1)->text().contains("   first   26 bytes"));
    EXPECT_EQ(QApplication::focusWidget(), versions) << "the versions have the focus to start with";

    // The newest version against the current program: "%" added at the start, M30 removed.
    AccessKey(Qt::Key_C);
    ASSERT_TRUE(form.Compare());
    EXPECT_EQ(form.Compare()->Counts(), "0 Changed, 1 Added, 1 Removed");
    EXPECT_EQ(form.Compare()->SideText(true), "+ %\n  N10 G90\n  N20 X2\n");
    EXPECT_EQ(form.Compare()->SideText(false), "\n  N10 G90\n  N20 X2\n- N30 M30");
    EXPECT_EQ(form.Compare()->CurrentRow(), 0) << "opened at the first change";
    QTest::keyClick(form.Compare(), Qt::Key_F8);
    EXPECT_EQ(form.Compare()->CurrentRow(), 3);
    QTest::keyClick(form.Compare(), Qt::Key_F8, Qt::ShiftModifier);
    EXPECT_EQ(form.Compare()->CurrentRow(), 0);
    QTest::keyClick(form.Compare(), Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_FALSE(form.Compare());

    // Two versions against each other: Shift+Down takes the older into the selection.
    EXPECT_EQ(QApplication::focusWidget(), versions);
    Key(Qt::Key_Down, Qt::ShiftModifier);
    AccessKey(Qt::Key_C);
    ASSERT_TRUE(form.Compare());
    EXPECT_EQ(form.Compare()->Counts(), "1 Changed, 0 Added, 0 Removed");
    EXPECT_EQ(form.Compare()->SideText(false), "  N10 G90\n~ N20 X1\n  N30 M30");
    form.Compare()->close();
    QApplication::processEvents();

    // Two selected cannot be restored; the first version, alone, can.
    AccessKey(Qt::Key_R);
    EXPECT_EQ(fx.Messages().Texts(), QStringList{"Select One Version To Restore !"});
    fx.Messages().Clear();
    Key(Qt::Key_Home);
    Key(Qt::Key_End);
    EXPECT_EQ(versions->selectedItems().size(), 1);
    fx.Messages().Script({Answer::Yes});
    AccessKey(Qt::Key_R);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts()[0].endsWith(" As \"" + Parts + "X.prg\" ?"))
        << fx.Messages().Texts()[0].toStdString();
    EXPECT_EQ(fx.Read(Parts + "X.prg"), "N10 G90\r\nN20 X1\r\nN30 M30\r\n");
    ASSERT_EQ(versions->count(), 3) << "the replaced current text is kept";
    EXPECT_TRUE(versions->item(0)->text().contains("restored the version of"));

    // The comparison takes the keyboard as it opens: the first Esc closes it, the next the form.
    AccessKey(Qt::Key_C);
    ASSERT_TRUE(form.Compare());
    EXPECT_EQ(QApplication::focusWidget()->window(), form.Compare());
    Key(Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_FALSE(form.Compare());
    EXPECT_TRUE(form.isVisible());
    Key(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());

    // A comparison still open goes with the form.
    form.findChild<QPushButton*>("HistoryCompare")->click();
    ASSERT_TRUE(form.Compare());
}

// A save in the built-in editor keeps the text it replaces, under the operation of the editor.
TEST_F(HistoryFormTest, ASaveInTheEditorKeepsTheTextItReplaces) {
    const QString x = Parts + "X.prg";
    const QByteArray before = fx.Read(x);
    TextEditorWindow editor(fx.Files(), fx.Messages(), x);
    editor.KeepOldTextWith(
        [this](const QString& file) { KeepPreviousVersion(fx.session(), file, SavedInEditor); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !editor.Loading(); }, 5000));
    editor.SetText("N10 G91\r\n");
    ASSERT_TRUE(editor.Save());
    EXPECT_EQ(fx.Read(x), "N10 G91\r\n");
    const ProgramHistory history(fx.Files(), fx.Settings().SystemPath);
    const QList<HistoryVersion> versions = history.Versions(x);
    ASSERT_EQ(versions.size(), 3);
    EXPECT_EQ(versions[0].operation, SavedInEditor);
    EXPECT_EQ(history.Bytes(versions[0]), before);
}
