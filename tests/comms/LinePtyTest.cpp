// Sends and the background receive against a machine control that the test plays itself on the
// master side of a pseudo-terminal: the start, XOFF at the end of a send, XOFF while input is
// discarded, and a background device that is missing or goes away and comes back.
#include "CommsInstallation.h"
#include "EventScript.h"
#include "PtyControl.h"
#include "comms/BackgroundReceive.h"
#include "comms/GeneralReceive.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"

#include <QFile>
#include <QThread>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

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
        SetValues(
            fx, MachineCms,
            {{"Port", "2"}, {"Leader", "2,0"}, {"Receive Time Out", "3000"}, {"Pause After Start", "300"}});
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
    // The send form's OK for one program of the current machine.
    void Send(SendEngine& engine, const QString& program) {
        SendFormLogic logic(fx.session(), engine, SendKind::Program);
        logic.Form_Load();
        logic.SendOk_Click({program});
    }

    InstallationFixture fx;
    QString link;
    std::unique_ptr<PtyControl> control;
    std::unique_ptr<QtSerialLine> line;
    QByteArray received;
    std::unique_ptr<QObject> owner = std::make_unique<QObject>();
};

} // namespace

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
    SetValues(fx, BackgroundCms, {{"Port", "2"}});
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
    // The program cut off is neither filed nor listed, nor kept for the next one.
    EXPECT_FALSE(receive.Receiving());
    EXPECT_FALSE(fx.OnDisk(receive.TempPath()));
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Receive.lst").size(), 1);

    control.reset();
    control = std::make_unique<PtyControl>(link); // and put back
    ASSERT_TRUE(RunEventsUntil([&] { return receive.LineState() == BackgroundLineState::Listening; }, 5000));
    ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 2000));
    control->Write("G4\r\n%");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(Parts + "New Program 2.prg"); }, 3000));
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "G4\r\n");
    EXPECT_EQ(fx.Messages().Texts().size(), 2);
}

TEST_F(LinePty, AnXoffAtTheEndOrTheControlGoingAwayIsToldOnceAndTheNextSendWorks) {
    QByteArray big;
    for (int n = 1; n <= 3000; ++n)
        big += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n) + ".5 Y12.25\r\n";
    fx.Write(Parts + "Big.prg", big);
    QElapsedTimer held; // since the control's XOFF
    const auto heldFor = [&](int ms) { return held.isValid() && held.elapsed() >= ms; };
    using Trigger = std::function<bool(const SendEngine&, const QByteArray& got)>;
    const Trigger never = [](const SendEngine&, const QByteArray&) { return false; };
    struct Case {
        const char* what;
        const char* program;
        bool asks;      // the control asks with XON once the line is open
        bool holds;     // and holds everything back with XOFF 100 ms later, in the pause after the
                        // start, so that the whole program and its trailer wait at the end
        int xonAfterMs; // and lets it go this long after (-1: never)
        Trigger aborts; // when the operator aborts
        Trigger goes;   // when the control goes away
        bool hangsUp;   // its pseudo-terminal closes (else only the device's link goes)
        QString told;   // the one message (of a lost line, only the port it names is checked)
        int arrives;    // 1: the whole program, 0: nothing, -1: not checked
    };
    const Case cases[] = {
        {"released after two seconds", "Small", true, true, 2000, never, never, false, {}, 1},
        {"never released", "Small", true, true, -1, never, never, false,
         QStringLiteral("\"Small\" Was Not Sent Completely: %1 Characters Did Not Leave \"COM2\" !")
             .arg(Leader.size() + Program.size() + 1),
         0},
        {"aborted while held",
         "Small",
         true,
         true,
         -1,
         [&](const SendEngine&, const QByteArray&) { return heldFor(600); },
         never,
         false,
         {},
         0},
        {"gone while the send waits for the start", "Big", false, false, -1, never,
         [&](const SendEngine& e, const QByteArray&) {
             return e.Phase() == SendPhase::Waiting && line->PortOpen();
         },
         true, "COM2", -1},
        {"gone in the middle of the program", "Big", true, false, -1, never,
         [](const SendEngine&, const QByteArray& got) { return got.size() >= 2000; }, true, "COM2", -1},
        {"gone while the end waits to drain", "Small", true, true, -1, never,
         [&](const SendEngine& e, const QByteArray&) {
             return e.Phase() == SendPhase::Trailer && heldFor(500);
         },
         true, "COM2", -1},
        // The open line is not the node: the send goes on to its end.
        {"its device node removed while sending",
         "Big",
         true,
         false,
         -1,
         never,
         [](const SendEngine&, const QByteArray& got) { return got.size() >= 2000; },
         false,
         {},
         1},
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
        bool released = false;
        bool aborted = false;
        bool gone = false;
        QElapsedTimer sinceAsked;
        Play([&](const QByteArray& got) {
            if (gone || !control->Opened())
                return;
            if (c.asks && !asked) {
                asked = true;
                control->Write("\x11");
                sinceAsked.start();
            } else if (c.holds && asked && !held.isValid() && sinceAsked.elapsed() >= 100) {
                control->Write("\x13");
                held.start();
            } else if (!released && c.xonAfterMs >= 0 && heldFor(c.xonAfterMs)) {
                released = true;
                control->Write("\x11");
            }
            if (!aborted && c.aborts(engine, got)) {
                aborted = true;
                engine.SendAbrt_Click();
            }
            if (c.goes(engine, got)) {
                gone = true;
                if (c.hangsUp)
                    control->Remove();
                else
                    control->Unlink();
            }
        });
        Send(engine, QString::fromLatin1(c.program));
        RunEventsUntil([] { return false; }, 300); // a line that failed would go on reporting
        EXPECT_FALSE(line->PortOpen());
        if (c.hangsUp) {
            ASSERT_EQ(fx.Messages().Texts().size(), 1);
            EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
        } else {
            EXPECT_EQ(fx.Messages().Texts(), c.told.isEmpty() ? QStringList() : QStringList{c.told});
        }
        const QByteArray whole = Leader + (c.program == QByteArrayView("Big") ? big : Program) + "%";
        if (c.arrives >= 0) {
            EXPECT_EQ(received + control->Read(), c.arrives ? whole : QByteArray());
        }
        owner = std::make_unique<QObject>();

        // Without the device: told by the send, naming the port.
        control.reset();
        try {
            Send(engine, "Small");
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
        Send(engine, "Small");
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
    SetValues(fx, BackgroundCms, {{"Port", "2"}});
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
