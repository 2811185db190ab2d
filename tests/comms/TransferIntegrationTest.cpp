// Sending and receiving on demand through a real pseudo-terminal, with the simulated machine
// control at the far end.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "SimulatorProcess.h"
#include "TestApplication.h"
#include "comms/GeneralReceive.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

class TransferIntegration : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        machine = std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
        // The current machine's control on COM2: it asks with XON, XON/XOFF flow control.
        fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms",
                      {LabelledLine("Control Type", "Fanuc 6M"), LabelledLine("Port", "2"), "115200", "N",
                       "8", "1", LabelledLine("Handshake", "XON/XOFF"), LabelledLine("Start Mode", "AUTO"),
                       LabelledLine("Start Character", "17"), LabelledLine("Leader", "2,0"), "1,13,1,10",
                       LabelledLine("Trailer", "1,37"), "", "", LabelledLine("Receive Filter", "0,127"),
                       LabelledLine("Receive Time Out", "300")});
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
    // Sends Big with the machine's receive command started once the send waits for its XON.
    QStringList SendBig(const QString& receiveOptions) {
        SendEngine engine(*line, PauseTimer::Shared());
        SendFormLogic logic(fx.session(), engine, SendKind::Program);
        logic.Form_Load();
        When(
            &script, [&] { return engine.Phase() == SendPhase::Waiting && line->PortOpen(); },
            [&] { machine->Start("receive " + Recorded() + " start=17 trailer=1,37 " + receiveOptions); });
        logic.SendOk_Click({"Big"});
        return machine->Finish("receive");
    }
    QString Recorded() const { return fx.Root() + "/recorded.bin"; }
    QByteArray RecordedBytes() const {
        QFile f(Recorded());
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<nothing>");
    }

    InstallationFixture fx;
    std::unique_ptr<SimulatorProcess> machine;
    std::unique_ptr<QtSerialLine> line;
    QObject script;
};

TEST_F(TransferIntegration, AProgramStartedByXonArrivesByteExactWithItsTrailer) {
    // More than the line's buffers hold, read at a paced line's speed: the last characters are
    // still on their way when the send closes the port.
    const QByteArray text = Program(4000);
    const QStringList said = SendBig("pace=2000000 idle=3000");
    EXPECT_EQ(RecordedBytes(), QByteArray(2, '\0') + text + "%");
    EXPECT_EQ(said, QStringList{"received " + QString::number(text.size() + 3)});
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
    EXPECT_FALSE(line->PortOpen());
}

TEST_F(TransferIntegration, AnXoffHoldsTheSendUntilTheXon) {
    const QByteArray text = Program(3000);
    const QStringList said = SendBig("xoff-at=5000 xon-after=500 idle=3000");
    EXPECT_EQ(said.first(), "held 0");
    EXPECT_EQ(RecordedBytes(), QByteArray(2, '\0') + text + "%");
}

TEST_F(TransferIntegration, AHangUpEndsTheSendAsAbortedWithOneMessage) {
    Program(3000);
    SendBig("hangup-after=4000");
    RunEventsUntil([] { return false; }, 300); // a failing line would go on reporting meanwhile
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
    EXPECT_FALSE(line->PortOpen());
}

TEST_F(TransferIntegration, AReceiveEndsByTheTrailerOrByTheTimeOut) {
    GeneralReceive receive(*line);
    receive.SetSettings(ReadReceiveSettings(fx.Files(), "C:\\Kestrova\\Setup\\Data\\PUNCH1.cms"));
    const QString sent = fx.Root() + "/sent.nc";
    {
        QFile f(sent);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("G1 X10\nG2 Y20\n");
    }
    const QString temp = QStringLiteral("C:\\Kestrova\\Commstmp.prg");
    for (const QString& options :
         {QStringLiteral("trailer=1,37 chunk=5 pace=20"), QStringLiteral("chunk=5 pace=20")}) {
        SCOPED_TRACE(options.toStdString());
        When(
            &script, [&] { return line->PortOpen(); },
            [&] { machine->Start("send " + sent + ' ' + options); });
        receive.Run(fx.Files(), QStringLiteral("P1"), temp);
        machine->Finish("send");
        const bool trailer = options.startsWith("trailer");
        EXPECT_EQ(fx.Read(temp), trailer ? "G1 X10\r\nG2 Y20\r\n%" : "G1 X10\r\nG2 Y20\r\n");
        EXPECT_EQ(receive.TimedOut(), !trailer);
        EXPECT_FALSE(receive.Aborted());
        EXPECT_FALSE(line->PortOpen());
    }
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
    fx.Write("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms", settings);
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
    QFile got(stem + "-1.nc");
    for (int i = 0; i < 500 && !(got.exists() && got.size() == text.size() + 51); ++i)
        PauseTimer::Shared().Pause(10);
    ASSERT_TRUE(got.open(QIODevice::ReadOnly));
    EXPECT_EQ(got.readAll(), QByteArray(50, '\0') + text + "%");
}

TEST_F(TransferIntegration, TheServingMachineTakesWhatIsSentAndGivesWhatIsAskedFor) {
    // The demo's machine on its one line: the send waits in silence, the receive asks with XON.
    const QByteArray text = Program(40);
    const QString stem = fx.Root() + "/got";
    fx.Write(QStringLiteral("C:\\machine.nc"), "O0042 (FROM THE MACHINE)\r\nG00 X0 Y0\r\n");
    machine->Start("serve " + fx.Host(QStringLiteral("C:\\machine.nc")) + ' ' + stem);

    SendEngine engine(*line, PauseTimer::Shared());
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    logic.SendOk_Click({"Big"});
    QFile got(stem + "-1.nc");
    for (int i = 0; i < 500 && !(got.exists() && got.size() == text.size() + 3); ++i)
        PauseTimer::Shared().Pause(10);
    ASSERT_TRUE(got.open(QIODevice::ReadOnly));
    EXPECT_EQ(got.readAll(), QByteArray(2, '\0') + text + "%");

    GeneralReceive receive(*line);
    receive.SetSettings(ReadReceiveSettings(fx.Files(), "C:\\Kestrova\\Setup\\Data\\PUNCH1.cms"));
    const QString temp = QStringLiteral("C:\\Kestrova\\Commstmp.prg");
    receive.Run(fx.Files(), QStringLiteral("P1"), temp);
    EXPECT_EQ(fx.Read(temp), "O0042 (FROM THE MACHINE)\r\nG00 X0 Y0\r\n%");
    EXPECT_FALSE(receive.Aborted());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

} // namespace
