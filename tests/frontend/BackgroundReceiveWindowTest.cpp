// The background receive as the main window owns it, over a scripted line: when it starts and
// stops, what the window shows of it, and a port that cannot open.
#include "Frontend/Reload.h"
#include "MainWindowFixture.h"
#include "ScriptedSerialLine.h"
#include "comms/BackgroundReceive.h"

#include <QApplication>
#include <QFocusEvent>
#include <QListWidget>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString TempFile = QStringLiteral("C:\\Kestrova\\Receive.tmp");
const QString ListFile = QStringLiteral("C:\\Kestrova\\Receive.lst");

class BackgroundReceiveWindowTest : public MainWindowFixture {
protected:
    void SetUp() override { UseBackgroundPort(2); }
    // The window over a scripted line: its device there or not.
    void OpenOnLine(bool devicePresent = true) {
        auto scripted = std::make_unique<ScriptedSerialLine>();
        line = scripted.get();
        if (!devicePresent)
            line->SetDevicePresent(false);
        Open(std::move(scripted));
    }
    QWidget* Frame() const { return Child("ReceiveFrame"); }
    QListWidget* List() const { return Child<QListWidget>("ReceiveList"); }

    ScriptedSerialLine* line = nullptr; // owned by the window
};

TEST_F(BackgroundReceiveWindowTest, TheListMirrorsWhatIsFiledAndTheButtonClearsIt) {
    fx.WriteLines(ListFile, {QStringLiteral("Old in Parts for Trumpf Punch 5000")});
    OpenOnLine();
    ASSERT_TRUE(line->PortOpen());
    EXPECT_TRUE(line->Log().contains(QStringLiteral("CommPort=2")));
    EXPECT_EQ(window->ReceivedPrograms(), QStringList{"Old in Parts for Trumpf Punch 5000"});
    EXPECT_TRUE(Frame()->isVisible());

    line->Feed("\x17PUNCH1\r\n\x18Sheets\r\n\x19P7\r\nG1 X5\r\n%");
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Jobs\\PUNCH1\\Sheets\\P7.prg")), QByteArray("G1 X5\r\n"));
    EXPECT_EQ(window->ReceivedPrograms(),
              (QStringList{"Old in Parts for Trumpf Punch 5000", "P7 in Sheets for Trumpf Punch 5000"}));

    // Focus on the list is handed on to the button, the selection dropped.
    List()->setCurrentRow(1);
    window->activateWindow();
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(List(), &focusIn);
    EXPECT_TRUE(List()->selectedItems().isEmpty());
    EXPECT_EQ(window->focusWidget(), Child<QPushButton>("ReceiveButton"));

    Child<QPushButton>("ReceiveButton")->click();
    EXPECT_FALSE(fx.OnDisk(ListFile));
    EXPECT_FALSE(Frame()->isVisible());
    // The next program starts a fresh list.
    line->Feed("G2\r\n%");
    EXPECT_EQ(window->ReceivedPrograms(), QStringList{"New Program 1 in Parts for Trumpf Punch 5000"});
    EXPECT_TRUE(Frame()->isVisible());
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(BackgroundReceiveWindowTest, APortThatCannotOpenAtStartUpIsShownOnceAndTheProgramGoesOn) {
    OpenOnLine(false);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains(QStringLiteral("\"COM2\"")));
    EXPECT_FALSE(line->PortOpen());
    EXPECT_EQ(window->StartUpStatus(), 0);
    auto* status = Child<StatusBox>("StatusBar");
    EXPECT_EQ(status->LineStateText(), "Waiting for COM2");
    line->SetDevicePresent(true); // the adapter is plugged in
    EXPECT_TRUE(line->PortOpen());
    EXPECT_EQ(status->LineStateText(), "Listening on COM2");
    line->Feed("G1");
    line->Unplug();
    EXPECT_EQ(status->LineStateText(), "Waiting for COM2");
    EXPECT_EQ(fx.Messages().Texts().size(), 2);
    window->Receive().Stop();
    EXPECT_EQ(status->LineStateText(), "Background receive off");
}

TEST_F(BackgroundReceiveWindowTest, AMachineChangeStartsItAgainAndClosingEndsIt) {
    OpenOnLine();
    ASSERT_EQ(line->Opens(), 1);
    // A reload on the same machine leaves the receive as it is, program half in.
    line->Feed("G1\r\n");
    ReloadAfterChange(fx.session(), *window);
    EXPECT_EQ(line->Opens(), 1);
    EXPECT_TRUE(fx.OnDisk(TempFile));

    // Another machine: stopped (the half program discarded) and started again.
    QStringList cfg = fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
    cfg[3] = QStringLiteral("2");
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"), cfg);
    ReloadAfterChange(fx.session(), *window);
    EXPECT_EQ(line->Opens(), 2);
    EXPECT_TRUE(line->PortOpen());
    EXPECT_FALSE(fx.OnDisk(TempFile));
    line->Feed("G2\r\n%");
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Jobs\\RAINER\\Kestrova\\New Program 1.prg")), QByteArray("G2\r\n"));

    // Asked to end by the host in the middle of a program.
    line->Feed("G3\r\n");
    ASSERT_TRUE(fx.OnDisk(TempFile));
    Sigterm();
    EXPECT_FALSE(line->PortOpen());
    EXPECT_FALSE(fx.OnDisk(TempFile));
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

} // namespace
