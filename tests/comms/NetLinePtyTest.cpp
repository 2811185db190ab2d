// Serial ports on a device server: ser2net on the loopback address in front of a pseudo-terminal
// whose master side the test plays as the machine control, reached as COM5 over raw TCP and as
// COM6 over RFC 2217: the streams, the framing, the background receive, the send and receive
// forms and the DNC service, and the device server switched off and on again under each.
#include "CommsInstallation.h"
#include "PtyControl.h"
#include "Ser2netServer.h"
#include "comms/BackgroundReceive.h"
#include "comms/DncService.h"
#include "comms/GeneralReceive.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/SendFormLogic.h"
#include "comms/TransferLog.h"
#include "platform/MappedSerialLine.h"
#include "platform/TextFile.h"

#include <QRandomGenerator>
#include <QTimer>
#include <gtest/gtest.h>
#include <map>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

constexpr int TcpCom = 5;
constexpr int Rfc2217Com = 6;
constexpr qsizetype Megabyte = 1 << 20;
// The most the transfers keep waiting to go out, as a send does.
constexpr int OutputLimit = 64;

// Every byte value but XON and XOFF, which the line takes as flow control when they arrive.
QByteArray Noise(qsizetype size, bool withFlowControl) {
    QByteArray bytes(size, '\0');
    QRandomGenerator random(21);
    for (char& c : bytes) {
        do
            c = char(random.bounded(256));
        while (!withFlowControl && (c == 17 || c == 19));
    }
    return bytes;
}

class NetLinePty : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        const QString rawLink = fx.Root() + QStringLiteral("/ds-raw");
        const QString rfcLink = fx.Root() + QStringLiteral("/ds-rfc2217");
        controls[TcpCom] = std::make_unique<PtyControl>(rawLink);
        controls[Rfc2217Com] = std::make_unique<PtyControl>(rfcLink);
        server = std::make_unique<Ser2netServer>(fx.Root(), rawLink, rfcLink);
        server->Start();
        QStringList devices = fx.ReadLines("C:\\Kestrova\\Devices.cfg");
        devices.insert(devices.size() - 1,
                       QStringLiteral("COM%1 tcp 127.0.0.1:%2").arg(TcpCom).arg(server->TcpPort()));
        devices.insert(
            devices.size() - 1,
            QStringLiteral("COM%1 rfc2217 127.0.0.1:%2").arg(Rfc2217Com).arg(server->Rfc2217Port()));
        fx.WriteLines("C:\\Kestrova\\Devices.cfg", devices);
        fx.Load();
    }
    std::unique_ptr<MappedSerialLine> OpenLine(int com,
                                               const QString& settings = QStringLiteral("9600,N,8,1")) {
        control = controls[com].get();
        auto line = std::make_unique<MappedSerialLine>(fx.Files().Devices());
        line->SetCommPort(com);
        line->SetSettings(settings);
        line->SetHandshaking(1);
        line->SetRThreshold(1);
        line->SetPortOpen(true);
        EXPECT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 3000));
        return line;
    }
    // Sends bytes as a transfer does, at most OutputLimit waiting, while the control reads;
    // onRead sees all that arrived so far after each look and may answer.
    QByteArray SendThrough(SerialLine& line, const QByteArray& bytes,
                           const std::function<void(const QByteArray&)>& onRead = {}) {
        QByteArray got;
        qsizetype sent = 0;
        QElapsedTimer idle;
        idle.start();
        while (got.size() < bytes.size() && idle.elapsed() < 10000) {
            if (sent < bytes.size() && line.PortOpen()) {
                const qsizetype room = OutputLimit - line.OutBufferCount();
                if (room > 0) {
                    line.Output(FromBytes(bytes.mid(sent, room)));
                    sent += qMin(room, bytes.size() - sent);
                }
            }
            QCoreApplication::processEvents();
            const QByteArray more = control->Read();
            if (!more.isEmpty()) {
                got += more;
                idle.restart();
            }
            if (onRead)
                onRead(got);
        }
        return got;
    }

    // The device server's address of a port, as the messages and the log name it.
    QString Host(int com) const {
        return QStringLiteral("127.0.0.1:%1").arg(com == TcpCom ? server->TcpPort() : server->Rfc2217Port());
    }
    // Plays the control while a transfer runs: every 5 ms it reads what came, and does what
    // script says.
    void Play(const std::function<void(const QByteArray& got)>& script) {
        auto* tick = new QTimer(player.get());
        QObject::connect(tick, &QTimer::timeout, [this, script] {
            received += control->Read();
            script(received);
        });
        tick->start(5);
    }
    void StopPlaying() {
        player = std::make_unique<QObject>();
        received.clear();
    }
    // Where the receives keep a program that was cut off.
    QString Kept() { return fx.Settings().ProgramPath + "Unfiled 1.prg"; }
    // One message, naming the port and its device server, and where a program that was cut off
    // is kept when one was.
    void ExpectToldOnce(int com, const QString& keptIn = {}) {
        ASSERT_EQ(fx.Messages().Texts().size(), 1) << fx.Messages().Texts().join(u'\n').toStdString();
        const QString text = fx.Messages().Texts().first();
        EXPECT_TRUE(text.contains(QStringLiteral("\"COM%1\"").arg(com)));
        EXPECT_TRUE(text.contains(Host(com)));
        if (keptIn.isEmpty())
            EXPECT_FALSE(text.contains("Kept In")) << text.toStdString();
        else
            EXPECT_TRUE(text.endsWith("\nThe Received Program Is Kept In \"" + keptIn + "\" !"))
                << text.toStdString();
        fx.Messages().Clear();
    }

    InstallationFixture fx;
    std::unique_ptr<QObject> player = std::make_unique<QObject>(); // owns Play's timers
    QByteArray received;                                           // what Play has read
    std::map<int, std::unique_ptr<PtyControl>> controls;           // the control behind each port
    PtyControl* control = nullptr;                                 // the one a test plays now
    std::unique_ptr<Ser2netServer> server;
};

} // namespace

TEST_F(NetLinePty, AMegabyteGoesEachWayByteForByteAndXoffHoldsTheStreamWithoutLosingAByte) {
    const QByteArray out = Noise(Megabyte, true);
    const QByteArray in = Noise(Megabyte, false);
    for (const int com : {TcpCom, Rfc2217Com}) {
        SCOPED_TRACE(com == TcpCom ? "tcp" : "rfc2217");
        auto line = OpenLine(com);
        ASSERT_TRUE(line->PortOpen());

        // Held at 200 KB: after what was on its way, nothing arrives until the control's XON.
        bool held = false;
        bool released = false;
        qsizetype settled = -1;
        QElapsedTimer sinceHold;
        const QByteArray got = SendThrough(*line, out, [&](const QByteArray& so) {
            if (!held && so.size() >= 200 * 1024) {
                held = true;
                control->Write("\x13");
                sinceHold.start();
            } else if (held && settled < 0 && sinceHold.elapsed() >= 300) {
                settled = so.size();
            } else if (held && !released && sinceHold.elapsed() >= 600) {
                EXPECT_TRUE(line->OutputHeld());
                EXPECT_EQ(so.size(), settled);
                released = true;
                control->Write("\x11");
            }
        });
        EXPECT_TRUE(released);
        EXPECT_EQ(got.size(), out.size());
        EXPECT_TRUE(got == out);

        // And a megabyte from the control, written as fast as the line takes it.
        QByteArray received;
        qsizetype written = 0;
        QElapsedTimer idle;
        idle.start();
        while (received.size() < in.size() && idle.elapsed() < 10000) {
            if (written < in.size())
                written += control->WriteSome(
                    QByteArrayView(in).sliced(written, qMin<qsizetype>(4096, in.size() - written)));
            QCoreApplication::processEvents();
            if (line->InBufferCount() > 0) {
                received += ToBytes(line->Input());
                idle.restart();
            }
        }
        EXPECT_EQ(received.size(), in.size());
        EXPECT_TRUE(received == in);
        line->SetPortOpen(false);
        line.reset();
        RunEventsUntil([] { return false; }, 300); // ser2net lets the device go
    }
}

TEST_F(NetLinePty, Rfc2217SetsTheDeviceServersPortToTheLinesFraming) {
    // Linux keeps a pseudo-terminal at 8 data bits without parity whatever is asked; the speed
    // and the stop bits it keeps as set. The data bits and the parity are confirmed by the device
    // server's answers, which the line checks as it opens (a refusal fails the opening).
    auto line = OpenLine(Rfc2217Com, QStringLiteral("9600,E,7,2"));
    ASSERT_TRUE(line->PortOpen());
    const std::optional<termios> t = control->Settings();
    ASSERT_TRUE(t);
    EXPECT_EQ(cfgetospeed(&*t), speed_t(B9600));
    EXPECT_NE(t->c_cflag & CSTOPB, 0u);
    line->SetPortOpen(false);
}

TEST_F(NetLinePty, TheBackgroundReceiveFilesThroughADeviceServerAndComesBackAfterItWasSwitchedOff) {
    for (const int com : {TcpCom, Rfc2217Com}) {
        SCOPED_TRACE(com == TcpCom ? "tcp" : "rfc2217");
        const QString host = Host(com);
        fx.Messages().Clear();
        control = controls[com].get();
        SetValues(fx, BackgroundCms, {{"Port", QString::number(com)}});
        BackgroundReceive receive(fx.session(), std::make_unique<MappedSerialLine>(fx.Files().Devices()));
        receive.Start();
        ASSERT_EQ(receive.LineState(), BackgroundLineState::Listening);
        ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 3000));
        control->Write("\x17PUNCH1\r\n\x18Parts\r\n\x19P100\r\nG1 X10\r\n%");
        ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(Parts + "P100.prg"); }, 3000));
        EXPECT_EQ(fx.Read(Parts + "P100.prg"), "G1 X10\r\n");
        EXPECT_TRUE(fx.ReadLines("C:\\Kestrova\\Transfer.log")
                        .last()
                        .contains("COM" + QString::number(com) + " at " + host));

        // Switched off in the middle of a program.
        control->Write("\x17PUNCH1\r\n\x18Parts\r\n\x19P200\r\nG1 X");
        RunEventsUntil([] { return false; }, 200);
        server->Stop();
        ASSERT_TRUE(RunEventsUntil(
            [&] { return receive.LineState() == BackgroundLineState::WaitingForDevice; }, 3000));
        RunEventsUntil([] { return false; }, 1500); // tries to connect meanwhile are not told
        ExpectToldOnce(com, Kept());
        EXPECT_FALSE(fx.OnDisk(Parts + "P200.prg"));
        EXPECT_FALSE(fx.OnDisk(receive.TempPath()));
        EXPECT_EQ(fx.Read(Kept()), "\x17PUNCH1\r\n\x18Parts\r\n\x19P200\r\nG1 X");

        server->Start();
        QElapsedTimer back;
        back.start();
        ASSERT_TRUE(
            RunEventsUntil([&] { return receive.LineState() == BackgroundLineState::Listening; }, 5000));
        EXPECT_LT(back.elapsed(), 5000);
        ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 3000));
        control->Write("\x17PUNCH1\r\n\x18Parts\r\n\x19P300\r\nG2 Y20\r\n%");
        ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(Parts + "P300.prg"); }, 3000));
        EXPECT_EQ(fx.Read(Parts + "P300.prg"), "G2 Y20\r\n");
        EXPECT_TRUE(fx.Messages().Texts().isEmpty());
        receive.Stop();
        fx.Remove(Parts + "P100.prg");
        fx.Remove(Parts + "P300.prg");
        fx.Remove(Kept());
        RunEventsUntil([] { return false; }, 300); // ser2net lets the device go
    }
}

TEST_F(NetLinePty, ADeviceServerSwitchedOffDuringASendOrAReceiveIsToldOnceAndTheNextTransferIsExact) {
    QByteArray big;
    for (int n = 1; n <= 3000; ++n)
        big += "N" + QByteArray::number(n * 10) + " G01 X" + QByteArray::number(n) + ".5 Y12.25\r\n";
    fx.Write(Parts + "Big.prg", big);
    const QByteArray small = "N10 G90\r\nN20 M30\r\n";
    fx.Write(Parts + "Small.prg", small);
    const QByteArray leader(2, '\0');
    for (const int com : {TcpCom, Rfc2217Com}) {
        SCOPED_TRACE(com == TcpCom ? "tcp" : "rfc2217");
        control = controls[com].get();
        // The current machine's control on the port asks with XON.
        SetValues(fx, MachineCms,
                  {{"Port", QString::number(com)}, {"Leader", "2,0"}, {"Receive Time Out", "3000"}});
        fx.Load();
        fx.Messages().Clear();
        MappedSerialLine line(fx.Files().Devices());
        SendEngine engine(line, PauseTimer::Shared());
        const auto send = [&](const QString& program) {
            SendFormLogic logic(fx.session(), engine, SendKind::Program);
            logic.Form_Load();
            logic.SendOk_Click({program});
        };
        const auto askWhenWaiting = [&] {
            bool asked = false;
            return [&, asked](const QByteArray&) mutable {
                if (!asked && engine.Phase() == SendPhase::Waiting && line.PortOpen() && control->Opened()) {
                    asked = true;
                    control->Write("\x11");
                }
            };
        };

        // Switched off with 20 KB of the program through.
        auto ask = askWhenWaiting();
        bool off = false;
        Play([&](const QByteArray& got) {
            ask(got);
            if (!off && got.size() >= 20000) {
                off = true;
                server->Stop();
            }
        });
        send("Big");
        RunEventsUntil([] { return false; }, 300); // a line that failed would go on reporting
        EXPECT_TRUE(off);
        EXPECT_FALSE(line.PortOpen());
        ExpectToldOnce(com);
        EXPECT_LT(received.size(), leader.size() + big.size() + 1);
        const QString logged = LastTransferLogLines(fx.session(), 1).value(0);
        EXPECT_TRUE(logged.contains(Host(com)) && logged.contains("failed")) << logged.toStdString();
        StopPlaying();

        // On again: the next send is exact, and nothing more is told.
        server->Start();
        Play(askWhenWaiting());
        send("Small");
        RunEventsUntil([&] { return received.size() >= leader.size() + small.size() + 1; }, 3000);
        EXPECT_EQ(received, leader + small + "%");
        EXPECT_TRUE(fx.Messages().Texts().isEmpty());
        StopPlaying();

        // Switched off while the receive form takes a program: nothing is stored as the program,
        // what came is kept.
        fx.Settings().ReceiveOperation = 2;
        GeneralReceive receive(line);
        ReceiveFormLogic logic(fx.session(), receive);
        logic.Form_Load();
        QElapsedTimer sinceWritten;
        Play([&](const QByteArray&) {
            if (!sinceWritten.isValid() && control->Opened()) {
                control->Write("G1\r\nG2");
                sinceWritten.start();
            } else if (sinceWritten.isValid() && sinceWritten.elapsed() >= 200 && server->Running()) {
                server->Stop();
            }
        });
        EXPECT_EQ(logic.ReceiveOk_Click("P1"), ReceiveOkOutcome::Close);
        RunEventsUntil([] { return false; }, 300);
        EXPECT_FALSE(line.PortOpen());
        ExpectToldOnce(com, Kept());
        EXPECT_FALSE(fx.OnDisk(Parts + "P1.prg"));
        EXPECT_FALSE(fx.OnDisk(logic.TempPath()));
        EXPECT_EQ(fx.Read(Kept()), "G1\r\nG2");
        StopPlaying();

        server->Start();
        Play([this, sent = false](const QByteArray&) mutable {
            if (sent || !control->Opened())
                return;
            sent = true;
            control->Write("G3\r\n%");
        });
        EXPECT_EQ(logic.ReceiveOk_Click("P1"), ReceiveOkOutcome::Close);
        EXPECT_EQ(Contents(fx, Parts + "P1.prg"), "G3\r\n%");
        EXPECT_EQ(fx.Messages().Texts(), QStringList{"\"P1\" Received !"});
        StopPlaying();
        fx.Remove(Parts + "P1.prg");
        fx.Remove(Kept());
        RunEventsUntil([] { return false; }, 300); // ser2net lets the device go
    }
}

TEST_F(NetLinePty, TheDncServiceServesADeviceServerThatIsOffAtFirstAndConnectsAgainAfterItWentAway) {
    // Machine 1 served on the raw TCP port, whose device server is off when the service starts.
    SetValues(fx, MachineCms, {{"Port", QString::number(TcpCom)}});
    fx.WriteLines("C:\\Kestrova\\Dnc.cfg", {LabelledLine("Machine", "1"), "******"});
    fx.Load();
    control = controls[TcpCom].get();
    server->Stop();
    DncService service(fx.session(),
                       [this](int) { return std::make_unique<MappedSerialLine>(fx.Files().Devices()); });
    service.Start();
    ASSERT_EQ(service.Lines().size(), size_t(1));
    DncLine& served = *service.Lines().at(TcpCom);
    EXPECT_EQ(served.State(), DncLineState::WaitingForDevice);
    ExpectToldOnce(TcpCom);
    for (const QByteArray name : {"P100", "P200"}) {
        SCOPED_TRACE(name.constData());
        server->Start();
        ASSERT_TRUE(RunEventsUntil([&] { return served.State() == DncLineState::Listening; }, 5000));
        // Its return is told too, for the service's journal.
        EXPECT_EQ(fx.Messages().Texts(), QStringList{"COM5: the device is back; listening for PUNCH1"});
        fx.Messages().Clear();
        ASSERT_TRUE(RunEventsUntil([&] { return control->Opened(); }, 3000));
        control->Write("\x17PUNCH1\r\n\x18Parts\r\n\x19" + name + "\r\nG1 X10\r\n%");
        const QString filed = Parts + QString::fromLatin1(name) + ".prg";
        ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk(filed); }, 3000));
        EXPECT_EQ(fx.Read(filed), "G1 X10\r\n");
        EXPECT_TRUE(LastTransferLogLines(fx.session(), 1).value(0).contains("COM5 at " + Host(TcpCom)));

        // Gone in the middle of the next program: told once, nothing filed, what came kept.
        control->Write("\x17PUNCH1\r\n\x18Parts\r\n\x19P999\r\nG1 X");
        RunEventsUntil([] { return false; }, 200);
        server->Stop();
        ASSERT_TRUE(RunEventsUntil([&] { return served.State() == DncLineState::WaitingForDevice; }, 3000));
        RunEventsUntil([] { return false; }, 1500); // tries to connect meanwhile are not told
        ExpectToldOnce(TcpCom, Kept());
        EXPECT_FALSE(fx.OnDisk(Parts + "P999.prg"));
        EXPECT_EQ(fx.Read(Kept()), "\x17PUNCH1\r\n\x18Parts\r\n\x19P999\r\nG1 X");
        fx.Remove(Kept());
    }
    service.Stop();
}
