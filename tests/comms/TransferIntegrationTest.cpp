// Sending and receiving on demand through a real pseudo-terminal, with the simulated machine
// control at the far end.
#include "CommsInstallation.h"
#include "EventScript.h"
#include "SimulatorProcess.h"
#include "comms/GeneralReceive.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class TransferIntegration : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        machine = std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
        // The current machine's control on COM2 at the pseudo-terminal's pace: it asks with XON,
        // XON/XOFF flow control.
        SetValues(fx, MachineCms,
                  {{"Port", "2"},
                   {"Baud", "115200"},
                   {"Parity", "N"},
                   {"Data Bits", "8"},
                   {"Stop Bits", "1"},
                   {"Leader", "2,0"},
                   {"Receive Time Out", "300"}});
        fx.Load();
        line = std::make_unique<QtSerialLine>(fx.Files().Devices());
    }
    // A program of n lines, with CR LF line ends as the files hold them.
    QByteArray Program(int lines) {
        QByteArray text;
        for (int n = 1; n <= lines; ++n)
            text +=
                "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n % 2500) + ".5 Y12.25\r\n";
        fx.Write(Parts + "Big.prg", text);
        return text;
    }
    // Sends a program with the machine's receive command started once the send waits for its XON
    // (and the delay has passed), noting the send's phase at that moment.
    QStringList Send(const QString& program, const QString& receiveOptions, int delayMs = 0) {
        SendEngine engine(*line, PauseTimer::Shared());
        SendFormLogic logic(fx.session(), engine, SendKind::Program);
        logic.Form_Load();
        When(
            &script, [&] { return engine.Phase() == SendPhase::Waiting && line->PortOpen(); },
            [&] {
                QTimer::singleShot(delayMs, &script, [&] {
                    askedIn = engine.Phase();
                    machine->Start("receive " + fx.Host(Recorded) + " start=17 trailer=1,37 " +
                                   receiveOptions);
                });
            });
        logic.SendOk_Click({program});
        return machine->Finish("receive");
    }
    // Waits until the serving machine has stored its n-th program, of the given size.
    QByteArray Served(const QString& stem, int n, qsizetype size) {
        QFile got(stem + QStringLiteral("-%1.nc").arg(n));
        for (int i = 0; i < 500 && !(got.exists() && got.size() == size); ++i)
            PauseTimer::Shared().Pause(10);
        return got.open(QIODevice::ReadOnly) ? got.readAll() : QByteArray("<nothing>");
    }

    const QString Recorded = QStringLiteral("C:\\recorded.bin");
    SendPhase askedIn = SendPhase::Idle;
    InstallationFixture fx;
    std::unique_ptr<SimulatorProcess> machine;
    std::unique_ptr<QtSerialLine> line;
    QObject script;
};

TEST_F(TransferIntegration, AProgramStartedByXonArrivesByteExactAndAnXoffHoldsIt) {
    const struct {
        const char* what;
        int lines;
        const char* options;
        QString said; // the machine's first line
    } cases[] = {
        // More than the line's buffers hold, read at a paced line's speed: the last characters
        // are still on their way when the send closes the port.
        {"arrives byte-exact with its trailer", 4000, "pace=2000000 idle=3000", "received %1"},
        {"held by an XOFF until the XON", 3000, "xoff-at=5000 xon-after=500 idle=3000", "held 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Messages().Clear();
        const QByteArray text = Program(c.lines);
        const QStringList said = Send("Big", c.options);
        EXPECT_FALSE(line->PortOpen());
        EXPECT_EQ(said.value(0), c.said.contains("%1") ? c.said.arg(text.size() + 3) : c.said);
        EXPECT_EQ(Contents(fx, Recorded), QByteArray(2, '\0') + text + "%");
        EXPECT_TRUE(fx.Messages().Texts().isEmpty());
    }
}

// What waits in the line before a transfer opens its port is stale and is discarded, so an XON
// the control gave earlier does not start a send.
TEST_F(TransferIntegration, AnXonWaitingBeforeThePortOpensDoesNotStartTheSend) {
    fx.Write(Parts + "Short.prg", "G1 X10\r\nM30\r\n");
    fx.Write(QStringLiteral("C:\\xon.bin"), "\x11");
    machine->Run("send " + fx.Host(QStringLiteral("C:\\xon.bin")));
    Send("Short", "idle=3000", 500);
    EXPECT_EQ(askedIn, SendPhase::Waiting) << "the stale XON started the send";
    EXPECT_EQ(fx.Read(Recorded), QByteArray(2, '\0') + "G1 X10\r\nM30\r\n%");
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(TransferIntegration, TheDemosSendStartsByItselfOnTheDemosMachine) {
    // The demo installation's own settings for its punch (on this test's port), and its machine
    // as the demo script starts it: the send must start on the machine's XON, never forced.
    QFile demo(QStringLiteral(KESTROVA_DEMO_DIR "/c/Kestrova/Setup/Data/PUNCH25.cms"));
    ASSERT_TRUE(demo.open(QIODevice::ReadOnly));
    QByteArray settings = demo.readAll();
    const qsizetype port = settings.indexOf(": 1\r");
    ASSERT_GT(port, 0);
    settings[port + 2] = '2';
    fx.Write(MachineCms, settings);
    const QByteArray text = Program(40);
    const QString stem = fx.Root() + "/demo-got";
    machine->Start("serve " + fx.Host(QStringLiteral("C:\\machine.nc")) + ' ' + stem);
    // As in the demo, the control has been on the line a while before the operator sends: it
    // asks only once the send has opened the port, or its request would be stale by then.
    PauseTimer::Shared().Pause(1000);
    SendEngine engine(*line, PauseTimer::Shared());
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    QTimer::singleShot(15000, &script, [&] { engine.SendAbrt_Click(); }); // never forced
    logic.SendOk_Click({"Big"});
    EXPECT_TRUE(engine.Started());
    EXPECT_FALSE(engine.Aborted());
    EXPECT_EQ(Served(stem, 1, text.size() + 51), QByteArray(50, '\0') + text + "%");
}

TEST_F(TransferIntegration, TheServingMachineGivesWhatIsAskedFor) {
    // The demo's machine on its one line: the receive asks with XON.
    const QString stem = fx.Root() + "/got";
    fx.Write(QStringLiteral("C:\\machine.nc"), "O0042 (FROM THE MACHINE)\r\nG00 X0 Y0\r\n");
    machine->Start("serve " + fx.Host(QStringLiteral("C:\\machine.nc")) + ' ' + stem);

    GeneralReceive receive(*line);
    receive.SetSettings(ReadReceiveSettings(fx.Files(), MachineCms));
    const QString temp = QStringLiteral("C:\\Kestrova\\Commstmp.prg");
    receive.Run(fx.Files(), QStringLiteral("P1"), temp);
    EXPECT_EQ(fx.Read(temp), "O0042 (FROM THE MACHINE)\r\nG00 X0 Y0\r\n%");
    EXPECT_FALSE(receive.Aborted());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

} // namespace
