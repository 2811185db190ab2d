// The background receive as the main window owns it, over a scripted line: when it starts and
// stops, what the window shows of it, and a port that cannot open.
#include "Frontend/FrontEnd.h"
#include "Frontend/Reload.h"
#include "Frontend/StartUp.h"
#include "Frontend/StatusBox.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "comms/BackgroundReceive.h"
#include "platform/TerminationSignals.h"
#include "settings/SettingsFile.h"

#include <QApplication>
#include <QFocusEvent>
#include <QListWidget>
#include <QPushButton>
#include <csignal>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;
using namespace std::chrono_literals;

namespace {

const QString TempFile = QStringLiteral("C:\\Kestrova\\Receive.tmp");
const QString ListFile = QStringLiteral("C:\\Kestrova\\Receive.lst");

class BackgroundReceiveWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        QStringList cms = fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"));
        cms[1] = LabelledLine("Port", "2");
        fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"), cms);
    }
    void Open() {
        ASSERT_EQ(LoadAtStartUp(fixture.session()), 0);
        auto scripted = std::make_unique<ScriptedSerialLine>();
        line = scripted.get();
        if (failOpen)
            line->SetDevicePresent(false);
        window = std::make_unique<FrontEnd>(fixture.session(), launcher, std::move(scripted));
        window->show();
    }
    QWidget* Frame() const { return window->findChild<QWidget*>(QStringLiteral("ReceiveFrame")); }
    QListWidget* List() const { return window->findChild<QListWidget*>(QStringLiteral("ReceiveList")); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    bool failOpen = false;
    ScriptedSerialLine* line = nullptr; // owned by the window
    std::unique_ptr<FrontEnd> window;
};

TEST_F(BackgroundReceiveWindowTest, TheListMirrorsWhatIsFiledAndTheButtonClearsIt) {
    fixture.WriteLines(ListFile, {QStringLiteral("Old in Parts for Trumpf Punch 5000")});
    Open();
    ASSERT_TRUE(line->PortOpen());
    EXPECT_TRUE(line->Log().contains(QStringLiteral("CommPort=2")));
    EXPECT_EQ(window->ReceivedPrograms(), QStringList{"Old in Parts for Trumpf Punch 5000"});
    EXPECT_TRUE(Frame()->isVisible());

    line->Feed("\x17PUNCH1\r\n\x18Sheets\r\n\x19P7\r\nG1 X5\r\n%");
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Jobs\\PUNCH1\\Sheets\\P7.prg")), QByteArray("G1 X5\r\n"));
    EXPECT_EQ(window->ReceivedPrograms(),
              (QStringList{"Old in Parts for Trumpf Punch 5000", "P7 in Sheets for Trumpf Punch 5000"}));

    // Focus on the list is handed on to the button, the selection dropped.
    List()->setCurrentRow(1);
    window->activateWindow();
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(List(), &focusIn);
    EXPECT_TRUE(List()->selectedItems().isEmpty());
    EXPECT_EQ(window->focusWidget(), window->findChild<QPushButton*>(QStringLiteral("ReceiveButton")));

    window->findChild<QPushButton*>(QStringLiteral("ReceiveButton"))->click();
    EXPECT_FALSE(fixture.OnDisk(ListFile));
    EXPECT_FALSE(Frame()->isVisible());
    // The next program starts a fresh list.
    line->Feed("G2\r\n%");
    EXPECT_EQ(window->ReceivedPrograms(), QStringList{"New Program 1 in Parts for Trumpf Punch 5000"});
    EXPECT_TRUE(Frame()->isVisible());
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

TEST_F(BackgroundReceiveWindowTest, APortThatCannotOpenAtStartUpIsShownOnceAndTheProgramGoesOn) {
    failOpen = true;
    Open();
    ASSERT_EQ(fixture.Messages().Texts().size(), 1);
    EXPECT_TRUE(fixture.Messages().Texts().first().contains(QStringLiteral("\"COM2\"")));
    EXPECT_FALSE(line->PortOpen());
    EXPECT_EQ(window->StartUpStatus(), 0);
    auto* status = window->findChild<StatusBox*>(QStringLiteral("StatusBar"));
    EXPECT_EQ(status->LineStateText(), "Waiting for COM2");
    line->SetDevicePresent(true); // the adapter is plugged in
    EXPECT_TRUE(line->PortOpen());
    EXPECT_EQ(status->LineStateText(), "Listening on COM2");
    line->Feed("G1");
    line->Unplug();
    EXPECT_EQ(status->LineStateText(), "Waiting for COM2");
    EXPECT_EQ(fixture.Messages().Texts().size(), 2);
    window->Receive().Stop();
    EXPECT_EQ(status->LineStateText(), "Background receive off");
}

TEST_F(BackgroundReceiveWindowTest, AMachineChangeStartsItAgainAndClosingEndsIt) {
    Open();
    ASSERT_EQ(line->Opens(), 1);
    // A reload on the same machine leaves the receive as it is, program half in.
    line->Feed("G1\r\n");
    ReloadAfterChange(fixture.session(), *window);
    EXPECT_EQ(line->Opens(), 1);
    EXPECT_TRUE(fixture.OnDisk(TempFile));

    // Another machine: stopped (the half program discarded) and started again.
    QStringList cfg = fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
    cfg[3] = QStringLiteral("2");
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"), cfg);
    ReloadAfterChange(fixture.session(), *window);
    EXPECT_EQ(line->Opens(), 2);
    EXPECT_TRUE(line->PortOpen());
    EXPECT_FALSE(fixture.OnDisk(TempFile));
    line->Feed("G2\r\n%");
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Jobs\\RAINER\\Kestrova\\New Program 1.prg")),
              QByteArray("G2\r\n"));

    // Asked to end by the host in the middle of a program.
    line->Feed("G3\r\n");
    ASSERT_TRUE(fixture.OnDisk(TempFile));
    const TerminationSignals termination([this] { window->close(); });
    std::raise(SIGTERM);
    for (int i = 0; i < 50 && window->isVisible(); ++i)
        ASSERT_TRUE(PauseInEventLoop(10ms));
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(line->PortOpen());
    EXPECT_FALSE(fixture.OnDisk(TempFile));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

} // namespace
