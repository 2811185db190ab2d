// The send and receive forms offscreen, over the scripted line: they mirror the core and route
// the operator's keys to it.
#include "EventScript.h"
#include "comms/forms/ReceiveForm.h"
#include "comms/forms/SendForm.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

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

TEST_F(TransferForms, TheReceiveFormStoresWhatArrives) {
    fx.Settings().ReceiveOperation = 2;
    ReceiveForm form(fx.session(), Lines());
    ASSERT_TRUE(form.Loaded());
    EXPECT_EQ(form.windowTitle(), "Communications - Receive Program");
    form.show();
    auto* combo = form.findChild<QComboBox*>("ReceiveCombo");
    combo->setEditText(" P9 ");
    QString waiting;
    When(
        &script, [&] { return line->PortOpen(); },
        [&] {
            waiting = form.findChild<QLabel*>("ReceiveLabel")->text();
            EXPECT_FALSE(combo->isVisible());
            EXPECT_TRUE(form.findChild<QPushButton*>("ReceiveAbrt")->isVisible());
            line->Feed("G1\nM30\n%");
        });
    form.findChild<QPushButton*>("ReceiveOk")->click();
    EXPECT_EQ(waiting, "P9\n\nWaiting To Receive");
    EXPECT_EQ(form.result(), QDialog::Accepted);
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\P9.prg"), "G1\r\nM30\r\n%");
    EXPECT_EQ(fx.Messages().Texts(), QStringList{"\"P9\" Received !"});
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
