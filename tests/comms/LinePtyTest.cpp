// Sends and the background receive against a machine control that the test plays itself on the
// master side of a pseudo-terminal: the start, XOFF at the end of a send, XOFF while input is
// discarded, and a background device that is missing or goes away and comes back.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "PtyControl.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "comms/GeneralReceive.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QFile>
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

TEST_F(LinePty, TheControlGoingAwayInEachPhaseOfASendIsToldOnceAndTheNextSendWorks) {
    QByteArray big;
    for (int n = 1; n <= 3000; ++n)
        big += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n) + ".5 Y12.25\r\n";
    fx.Write(Parts + "Big.prg", big);
    struct Case {
        const char* what;
        bool asks;  // the control asks with XON once the line is open
        bool holds; // and then holds everything back with XOFF
        std::function<bool(const SendEngine&, const QByteArray& got)> goes; // when it goes away
        bool hangsUp; // its pseudo-terminal closes (else only the device's link goes)
        const char* program;
    };
    QElapsedTimer held;
    const Case cases[] = {
        {"while the send waits for the start", false, false,
         [&](const SendEngine& e, const QByteArray&) {
             return e.Phase() == SendPhase::Waiting && line->PortOpen();
         },
         true, "Big"},
        {"in the middle of the program", true, false,
         [](const SendEngine&, const QByteArray& got) { return got.size() >= 2000; }, true, "Big"},
        {"while the end waits to drain", true, true,
         [&](const SendEngine& e, const QByteArray&) {
             return e.Phase() == SendPhase::Trailer && held.isValid() && held.elapsed() >= 500;
         },
         true, "Small"},
        {"its device node removed while sending", true, false,
         [](const SendEngine&, const QByteArray& got) { return got.size() >= 2000; }, false, "Big"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        control.reset(); // before the next takes the link
        control = std::make_unique<PtyControl>(link);
        Load();
        received.clear();
        held.invalidate();
        SendEngine engine(*line, PauseTimer::Shared());
        bool asked = false;
        bool holding = false;
        bool gone = false;
        QElapsedTimer sinceAsked;
        Play([&](const QByteArray& got) {
            if (gone || !control->Opened())
                return;
            if (c.asks && !asked) {
                asked = true;
                control->Write("\x11");
                sinceAsked.start();
            } else if (c.holds && asked && !holding && sinceAsked.elapsed() >= 100) {
                // During the pause after the start: everything waits at the end.
                holding = true;
                control->Write("\x13");
                held.start();
            }
            if (c.goes(engine, got)) {
                gone = true;
                if (c.hangsUp)
                    control->Remove();
                else
                    control->Unlink();
            }
        });
        SendFormLogic logic(fx.session(), engine, SendKind::Program);
        logic.Form_Load();
        logic.SendOk_Click({QString::fromLatin1(c.program)});
        RunEventsUntil([] { return false; }, 300); // a line that failed would go on reporting
        EXPECT_FALSE(line->PortOpen());
        if (c.hangsUp) {
            ASSERT_EQ(fx.Messages().Texts().size(), 1);
            EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
        } else {
            // The open line is not the node: the send goes on to its end.
            EXPECT_TRUE(fx.Messages().Texts().isEmpty());
            EXPECT_EQ(received + control->Read(), Leader + big + "%");
        }
        owner = std::make_unique<QObject>();

        // Without the device: told by the send, naming the port.
        control.reset();
        try {
            SendSmall(engine);
            ADD_FAILURE() << "sent without a device";
        } catch (const DeviceUnavailableError& e) {
            EXPECT_EQ(e.subject(), "COM2");
        }

        // The device back: the next send goes through whole, and nothing more is told.
        fx.Messages().Clear();
        control = std::make_unique<PtyControl>(link);
        received.clear();
        Play([&](const QByteArray&) {
            if (control->Opened() && received.isEmpty() && engine.Phase() == SendPhase::Waiting)
                control->Write("\x11");
        });
        SendSmall(engine);
        RunEventsUntil([&] { return received.size() >= Leader.size() + Program.size() + 1; }, 2000);
        EXPECT_EQ(received, Leader + Program + "%");
        EXPECT_TRUE(fx.Messages().Texts().isEmpty());
        owner = std::make_unique<QObject>();
        fx.Messages().Clear();
    }
}

TEST_F(LinePty, TheControlGoingAwayInTheMiddleOfAReceiveIsToldOnceAndTheNextReceiveWorks) {
    control = std::make_unique<PtyControl>(link);
    Load();
    fx.Settings().ReceiveOperation = 2;
    GeneralReceive receive(*line);
    ReceiveFormLogic logic(fx.session(), receive);
    logic.Form_Load();
    Play([&](const QByteArray&) {
        if (control->Opened()) {
            control->Write("G1\r\nG2");
            control->Remove();
        }
    });
    EXPECT_EQ(logic.ReceiveOk_Click("P1"), ReceiveOkOutcome::Close);
    RunEventsUntil([] { return false; }, 300);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
    EXPECT_FALSE(fx.OnDisk(Parts + "P1.prg"));
    EXPECT_FALSE(fx.OnDisk(logic.TempPath()));
    EXPECT_FALSE(line->PortOpen());
    owner = std::make_unique<QObject>();

    fx.Messages().Clear();
    control = std::make_unique<PtyControl>(link);
    bool sent = false;
    Play([&](const QByteArray&) {
        if (!sent && control->Opened()) {
            sent = true;
            control->Write("G3\r\n%");
        }
    });
    EXPECT_EQ(logic.ReceiveOk_Click("P1"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Read(Parts + "P1.prg"), "G3\r\n%");
    EXPECT_EQ(fx.Messages().Texts(), QStringList{"\"P1\" Received !"});
}

namespace {

// The resident memory of this process, in kilobytes.
long ResidentKb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& row : status.readAll().split('\n'))
        if (row.startsWith("VmRSS:"))
            return row.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}

} // namespace

TEST_F(LinePty, AMegabyteWithoutATrailerGathersInReceiveTmpInFlatMemory) {
    fx.WriteLines("C:\\Kestrova\\Kestrova.cms", {"Background receive", "2", "9600", "E", "7", "2", "XON/XOFF",
                                                 "", "", "", "1,13,1,10", "1,37", "", "", "0,127", "0"});
    control = std::make_unique<PtyControl>(link);
    Load();
    BackgroundReceive receive(fx.session(), std::make_unique<QtSerialLine>(fx.Files().Devices()));
    receive.Start();
    ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 2000));
    const QByteArray burst = QByteArray("N10 G01 X12.5 Y40.25 F2000\r\n").repeated(40000).left(1 << 20);
    auto length = [&] {
        return fx.Files().IsFile(receive.TempPath()) ? fx.Files().Length(receive.TempPath()) : 0;
    };
    // Fed as fast as the line takes it, the events running meanwhile (a write that waited for
    // room would wait for this very program); what the file's buffer still holds is not on disk yet.
    auto feed = [&](QByteArrayView bytes, qint64 onDisk) {
        qsizetype sent = 0;
        return RunEventsUntil(
            [&] {
                if (sent < bytes.size())
                    sent += control->WriteSome(bytes.sliced(sent)); // no copy
                return sent == bytes.size() && length() >= onDisk;
            },
            60000);
    };
    const QByteArrayView all(burst);
    ASSERT_TRUE(feed(all.first(64 << 10), (64 << 10) - 16384)); // the receive's buffers in use
    const long before = ResidentKb();
    ASSERT_TRUE(feed(all.sliced(64 << 10), burst.size() - 16384));
    const long grown = ResidentKb() - before;
    EXPECT_TRUE(receive.Receiving());
    EXPECT_LT(grown, 512) << "kilobytes";
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());

    // Nothing of it is lost: a trailer at last files all of it as one program.
    ASSERT_TRUE(feed("%", 0));
    const QString filed = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\New Program 1.prg");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(filed); }, 5000));
    EXPECT_EQ(fx.Read(filed), burst);
}
