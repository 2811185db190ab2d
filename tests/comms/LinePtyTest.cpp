// Sends and the background receive against a machine control that the test plays itself on the
// master side of a pseudo-terminal: the start, XOFF at the end of a send, XOFF while input is
// discarded, and a background device that is missing or goes away and comes back.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "PtyControl.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QThread>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QByteArray Program = "N10 G90\r\nN20 G01 X10 Y20\r\nN30 M30\r\n";
const QByteArray Leader(2, '\0');

class LinePty : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        link = fx.Root() + QStringLiteral("/com2");
        QStringList devices = fx.ReadLines("C:\\Kestrova\\Devices.cfg");
        devices.insert(devices.size() - 1, "COM2 port " + link);
        fx.WriteLines("C:\\Kestrova\\Devices.cfg", devices);
        // The current machine's control on COM2: asks with XON, XON/XOFF flow control, a pause
        // after the start, and a time-out of three seconds for what is still on its way at the end.
        fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms",
                      {LabelledLine("Control Type", "Fanuc 6M"), LabelledLine("Port", "2"), "9600", "E", "7",
                       "2", LabelledLine("Handshake", "XON/XOFF"), LabelledLine("Start Mode", "AUTO"),
                       LabelledLine("Start Character", "17"), LabelledLine("Leader", "2,0"), "1,13,1,10",
                       LabelledLine("Trailer", "1,37"), "", "", LabelledLine("Receive Filter", "0,127"),
                       LabelledLine("Receive Time Out", "3000"), LabelledLine("Pause After Start", "300")});
        fx.Write(Parts + "Small.prg", Program);
    }
    void Load() {
        fx.Load();
        line = std::make_unique<QtSerialLine>(fx.Files().Devices());
    }
    // Plays the control during a send: every 5 ms it reads what came, and does what script says.
    void Play(const std::function<void(const QByteArray& got)>& script) {
        auto* tick = new QTimer(owner.get());
        QObject::connect(tick, &QTimer::timeout, [this, script] {
            if (!control)
                return;
            received += control->Read();
            script(received);
        });
        tick->start(5);
    }
    SendEnd SendSmall(SendEngine& engine) {
        SendFormLogic logic(fx.session(), engine, SendKind::Program);
        logic.Form_Load();
        logic.SendOk_Click({"Small"});
        return SendEnd::Sent;
    }

    InstallationFixture fx;
    QString link;
    std::unique_ptr<PtyControl> control;
    std::unique_ptr<QtSerialLine> line;
    QByteArray received;
    std::unique_ptr<QObject> owner = std::make_unique<QObject>();
};

} // namespace

TEST_F(LinePty, AnXoffAtTheEndOfASend) {
    // The control starts the send with XON, holds it with XOFF during the pause after the start,
    // so that the whole program and its trailer wait at the end; then releases it, or not.
    struct Case {
        const char* what;
        int xonAfterMs; // -1: never
        bool abort;
        QStringList messages;
    };
    const Case cases[] = {
        {"released after two seconds", 2000, false, {}},
        {"never released",
         -1,
         false,
         {QStringLiteral("\"Small\" Was Not Sent Completely: %1 Characters Did Not Leave \"COM2\" !")
              .arg(Leader.size() + Program.size() + 1)}},
        {"aborted while held", -1, true, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        control.reset();
        control = std::make_unique<PtyControl>(link);
        Load();
        received.clear();
        SendEngine engine(*line, PauseTimer::Shared());
        bool asked = false;
        bool held = false;
        bool released = false;
        QElapsedTimer since;
        Play([&](const QByteArray&) {
            if (!asked && control->Opened()) {
                asked = true;
                control->Write("\x11");
                since.start();
            } else if (asked && !held && since.elapsed() >= 100) {
                held = true;
                control->Write("\x13");
                since.start();
            } else if (held && !released && c.xonAfterMs >= 0 && since.elapsed() >= c.xonAfterMs) {
                released = true;
                control->Write("\x11");
            } else if (held && c.abort && since.elapsed() >= 600) {
                engine.SendAbrt_Click();
            }
        });
        SendSmall(engine);
        RunEventsUntil([&] { return received.size() >= Leader.size() + Program.size() + 1; }, 300);
        EXPECT_EQ(fx.Messages().Texts(), c.messages);
        if (c.xonAfterMs >= 0)
            EXPECT_EQ(received, Leader + Program + "%");
        else
            EXPECT_TRUE(received.isEmpty()) << received.toStdString();
        EXPECT_FALSE(line->PortOpen());
        fx.Messages().Clear();
        owner = std::make_unique<QObject>();
    }
}

TEST_F(LinePty, AnXoffThatArrivesWhileInputIsDiscardedStillHolds) {
    control = std::make_unique<PtyControl>(link);
    Load();
    line->SetCommPort(2);
    line->SetSettings("9600,E,7,2");
    line->SetHandshaking(1);
    line->SetRThreshold(128);
    line->SetPortOpen(true);
    ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 2000));
    control->Write("junk\x13");
    QThread::msleep(100); // in the kernel's queue, not yet read by the program
    line->SetInBufferCount(0);
    line->Output("G1");
    RunEventsUntil([] { return false; }, 200);
    EXPECT_TRUE(control->Read().isEmpty());
    EXPECT_TRUE(line->OutputHeld());
    control->Write("\x11");
    ASSERT_TRUE(RunEventsUntil([&] { return (received += control->Read()).size() >= 2; }, 2000));
    EXPECT_EQ(received, "G1");
    EXPECT_EQ(line->InBufferCount(), 0); // the junk was discarded, the flow control kept
}

TEST_F(LinePty, TheBackgroundDeviceMissingAtStartUpOrRemovedComesBackByItself) {
    fx.WriteLines("C:\\Kestrova\\Kestrova.cms", {"Background receive", "2", "9600", "E", "7", "2", "XON/XOFF",
                                                 "", "", "", "1,13,1,10", "1,37", "", "", "0,127", "0"});
    Load();
    auto owned = std::make_unique<QtSerialLine>(fx.Files().Devices());
    BackgroundReceive receive(fx.session(), std::move(owned));
    receive.Start(); // no device yet: told once, and the program goes on
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
    EXPECT_EQ(receive.LineState(), BackgroundLineState::WaitingForDevice);

    control = std::make_unique<PtyControl>(link); // the adapter is plugged in
    ASSERT_TRUE(RunEventsUntil([&] { return receive.LineState() == BackgroundLineState::Listening; }, 5000));
    ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 2000));
    control->Write("G1\r\n%");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(Parts + "New Program 1.prg"); }, 3000));
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G1\r\n");

    control->Write("G2\r\nG3");
    RunEventsUntil([] { return false; }, 100);
    control->Remove(); // pulled out in the middle of a program
    ASSERT_TRUE(
        RunEventsUntil([&] { return receive.LineState() == BackgroundLineState::WaitingForDevice; }, 3000));
    RunEventsUntil([] { return false; }, 200);
    ASSERT_EQ(fx.Messages().Texts().size(), 2); // one more, for the loss
    EXPECT_TRUE(fx.Messages().Texts().last().contains("\"COM2\""));

    control.reset();
    control = std::make_unique<PtyControl>(link); // and put back
    ASSERT_TRUE(RunEventsUntil([&] { return receive.LineState() == BackgroundLineState::Listening; }, 5000));
    ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 2000));
    control->Write("G4\r\n%");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(Parts + "New Program 2.prg"); }, 3000));
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "G4\r\n");
    EXPECT_EQ(fx.Messages().Texts().size(), 2);
}
