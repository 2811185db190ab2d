// The send and receive forms offscreen, over the scripted line: they mirror the core and route
// the operator's keys to it.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "comms/forms/ReceiveForm.h"
#include "comms/forms/SendForm.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDirIterator>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

// Shows a form and moves in its directory list with the keys alone.
void ChooseDirectory(QDialog& form, const std::vector<Qt::Key>& keys) {
    form.show();
    auto* directories = form.findChild<QListWidget*>("DirectoryList");
    directories->setFocus();
    for (Qt::Key key : keys)
        QTest::keyClick(directories, key);
}

class TransferForms : public ::testing::Test {
protected:
    TransferForms() { fx.Load(); }
    SerialLineFactory Lines() {
        return [this] {
            auto made = std::make_unique<ScriptedSerialLine>();
            line = made.get();
            return made;
        };
    }
    InstallationFixture fx;
    ScriptedSerialLine* line = nullptr;
    QObject script;
};

TEST_F(TransferForms, TheSendFormShowsTheProgressAndEscAborts) {
    SendForm form(fx.session(), Lines());
    ASSERT_TRUE(form.Loaded());
    form.Engine().SetEventSlice(std::chrono::microseconds(0));
    auto* files = form.findChild<QListWidget*>("FileList");
    for (const char* name : {"Bracket", "Cover"})
        files->findItems(QString::fromLatin1(name), Qt::MatchExactly).first()->setSelected(true);
    form.show();
    auto* force = form.findChild<QPushButton*>("SendFrc");
    auto* label = form.findChild<QLabel*>("SendLabel");
    auto* bar = form.findChild<QProgressBar*>("SendProgress");

    // Waiting: the force button shows and answers Enter; Esc aborts and the form stays.
    QString waitingLabel;
    bool forceDefault = false;
    When(
        &script, [&] { return form.Engine().Phase() == SendPhase::Waiting; },
        [&] {
            waitingLabel = label->text();
            forceDefault = force->isVisible() && force->isDefault();
            form.reject();
        });
    form.findChild<QPushButton*>("SendOk")->click();
    EXPECT_EQ(waitingLabel, "Bracket\n" +
                                QString::number(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg").size()) +
                                "\nCharacters");
    EXPECT_TRUE(forceDefault);
    EXPECT_TRUE(form.isVisible());
    EXPECT_TRUE(line->Sent().isEmpty());
    EXPECT_FALSE(force->isVisible());

    // Forced: both programs go out, the bar showing while each does.
    int barShown = 0;
    auto* watch = new QTimer(&script);
    QObject::connect(watch, &QTimer::timeout, [&] {
        if (form.Engine().Phase() == SendPhase::Waiting && force->isVisible())
            force->click();
        if (bar->isVisible() && label->text() == "Cover")
            ++barShown;
    });
    watch->start(0);
    form.findChild<QPushButton*>("SendOk")->click();
    EXPECT_TRUE(line->Sent().endsWith("G00 X0 Y0\r\n%\r\n%"));
    EXPECT_GT(barShown, 0);
    EXPECT_FALSE(bar->isVisible());
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

// Every file below a host directory but the last-file memory, which a receive rewrites, and the
// transfer log, which it appends to.
QStringList FilesBelow(const QString& hostDir) {
    QStringList found;
    QDirIterator it(hostDir, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << it.next().mid(hostDir.size());
    found.removeOne(QStringLiteral("/Kestrova/Lastfile.lst"));
    found.removeOne(QStringLiteral("/Kestrova/Transfer.log")); // every transfer is logged
    found.sort();
    return found;
}

// The ways text reaches a name box besides single keys, and a program setting it past the filter.
enum class Route { Keys, CtrlV, ShiftInsert, Drop, InputMethod, Set };

// Text enters the receive form's name box as the operator would put it there: typed at the box
// (the combo box, which holds the focus), pasted with either shortcut, dropped onto the text
// field, or committed by an input method.
void Enter(QComboBox* combo, Route route, const QString& text) {
    QLineEdit* field = combo->lineEdit();
    switch (route) {
    case Route::Keys:
        QTest::keyClicks(combo, text);
        break;
    case Route::CtrlV:
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(combo, Qt::Key_V, Qt::ControlModifier);
        break;
    case Route::ShiftInsert:
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(combo, Qt::Key_Insert, Qt::ShiftModifier);
        break;
    case Route::Drop: {
        QMimeData mime;
        mime.setText(text);
        const QPointF at(field->width() - 2, field->height() / 2);
        QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(field, &enter);
        QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(field, &drop);
        break;
    }
    case Route::InputMethod: {
        QInputMethodEvent commit;
        commit.setCommitString(text);
        QApplication::sendEvent(field, &commit);
        break;
    }
    case Route::Set:
        combo->setEditText(text);
        break;
    }
}

// The receive form stores what arrives under the name its box took, or refuses a name the key
// filter would refuse however it got there.
TEST_F(TransferForms, TheReceiveNameBoxTakesOnlyWhatTheKeyFilterTakes) {
    struct Case {
        const char* typed; // by keys first
        Route route;
        const char* entered; // then by the route
        const char* stored;  // the program's name on disk; none: refused at OK
        bool beeps;
    };
    const Case cases[] = {
        {"", Route::Keys, "..\\Typed", "..Typed", true},
        {"", Route::Keys, "r*?\"<>|s", "rs", true},
        {"", Route::Keys, "t:u v/w", "tu vw", true},
        {"Pa", Route::CtrlV, "ste (1)", "Paste (1)", false},
        {"A", Route::CtrlV, "..\\Up", "A", true},
        {"B", Route::ShiftInsert, "q*?", "B", true},
        {"C", Route::Drop, "_2+&", "C_2+&", false},
        {"C", Route::Drop, "v/w", "C", true},
        {"D", Route::InputMethod, "-9", "D-9", false},
        {"D", Route::InputMethod, "t:u", "D", true},
        {"E", Route::InputMethod, "\u00e9", "E", true},
        {"", Route::Set, "..\\Up", nullptr, false},
        {"", Route::Set, "..", nullptr, false},
        {"", Route::Set, "a/b", nullptr, false},
        {"", Route::Set, "q*?", nullptr, false},
        {"", Route::Set, "t:u", nullptr, false},
        {"", Route::Set, "\u00e9t\u00e9", nullptr, false},
        {"", Route::Set, " -x\t", nullptr, false},
        {"", Route::Set, "\x0b-x", nullptr, false},
    };
    fx.Settings().ReceiveOperation = 2;
    const QString root = fx.Host("C:\\");
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.typed) + " then " + c.entered);
        const QStringList before = FilesBelow(root);
        fx.Messages().Clear();
        ReceiveForm form(fx.session(), Lines());
        ASSERT_TRUE(form.Loaded());
        EXPECT_EQ(form.windowTitle(), "Communications - Receive Program");
        form.show();
        auto* combo = form.findChild<QComboBox*>("ReceiveCombo");
        combo->setFocus();
        Enter(combo, Route::Keys, QString::fromUtf8(c.typed));
        Enter(combo, c.route, QString::fromUtf8(c.entered));
        EXPECT_EQ(combo->currentText(), QString::fromUtf8(c.stored ? c.stored : c.entered));
        EXPECT_EQ(fx.Messages().Beeps() > 0, c.beeps);

        // While it waits, the name box gives way to the abort button.
        QObject row;
        QString waiting;
        When(
            &row, [&] { return line && line->PortOpen(); },
            [&] {
                waiting = form.findChild<QLabel*>("ReceiveLabel")->text();
                EXPECT_FALSE(combo->isVisible());
                EXPECT_TRUE(form.findChild<QPushButton*>("ReceiveAbrt")->isVisible());
                if (c.stored)
                    line->Feed("G1\n%");
                else
                    form.Receive().ReceiveAbrt_Click();
            });
        fx.Messages().Clear();
        form.findChild<QPushButton*>("ReceiveOk")->click();
        if (!c.stored) {
            EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Invalid File Name !"}));
            EXPECT_TRUE(form.isVisible());
            EXPECT_EQ(line->Opens(), 0);
            EXPECT_EQ(FilesBelow(root), before);
            continue;
        }
        EXPECT_EQ(waiting, QString::fromUtf8(c.stored) + "\n\nWaiting To Receive");
        EXPECT_EQ(form.result(), QDialog::Accepted);
        const QString stored = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\") + c.stored + ".prg";
        ASSERT_TRUE(fx.OnDisk(stored));
        EXPECT_EQ(fx.Read(stored), "G1\r\n%");
        EXPECT_EQ(fx.Messages().Texts(), QStringList{u'"' + QString::fromUtf8(c.stored) + "\" Received !"});
        QStringList after = FilesBelow(root);
        after.removeOne(fx.Host(stored).mid(root.size()));
        EXPECT_EQ(after, before) << "nothing but the program lands anywhere";
        fx.Remove(stored);
    }
}

TEST_F(TransferForms, DirectoryListsFollowTheirCurrentItemHoweverItIsChosen) {
    // Parts is current; the others are Archive and Kestrova (EXSUBS is never listed).
    struct Case {
        std::vector<Qt::Key> keys;
        QString directory;
        QStringList programs; // the send form's list for it
    };
    const Case cases[] = {
        {{Qt::Key_Up}, "Kestrova", {"Sample"}},
        {{Qt::Key_Home}, "Archive", {}},
        {{Qt::Key_Home, Qt::Key_Down}, "Kestrova", {"Sample"}},
        {{Qt::Key_End}, "Parts", {"bracket-2", "Bracket", "Cover", "X"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.directory.toStdString());
        {
            SendForm form(fx.session(), Lines());
            ChooseDirectory(form, c.keys);
            EXPECT_EQ(fx.Settings().CommsDirectory, c.directory);
            auto* files = form.findChild<QListWidget*>("FileList");
            QStringList shown;
            for (int row = 0; row < files->count(); ++row)
                shown << files->item(row)->text();
            EXPECT_EQ(shown, c.programs);
        }
        fx.Settings().ReceiveOperation = 2;
        ReceiveForm form(fx.session(), Lines());
        ChooseDirectory(form, c.keys);
        form.findChild<QComboBox*>("ReceiveCombo")->setEditText("P10");
        When(
            &script, [&] { return line->PortOpen(); }, [&] { line->Feed("G1%"); });
        form.findChild<QPushButton*>("ReceiveOk")->click();
        EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\" + c.directory + "\\P10.prg"), "G1%");
        fx.Remove("C:\\Jobs\\PUNCH1\\" + c.directory + "\\P10.prg");
    }
}

} // namespace
