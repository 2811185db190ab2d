// The host's serial line on a real pseudo-terminal, with the simulated machine at the far end.
#include "InstallationFixture.h"
#include "SimulatorProcess.h"
#include "TestApplication.h"
#include "platform/ModemLineWatch.h"
#include "platform/QtSerialLine.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class SerialPty : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        machine = std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
        line = std::make_unique<QtSerialLine>(fx.Files().Devices());
        QObject::connect(line.get(), &SerialLine::Comm, [this](CommEvent e) {
            if (e == CommEvent::Receive)
                received += line->Input();
        });
        QObject::connect(line.get(), &SerialLine::LineLost, [this](const QString& m) {
            lost << m;
            openWhenLost = line->PortOpen();
        });
    }
    void Open(int handshaking) {
        line->SetCommPort(2);
        line->SetSettings("9600,E,7,2");
        line->SetHandshaking(handshaking);
        line->SetDTREnable(true);
        line->SetRTSEnable(true);
        line->SetRThreshold(1);
        line->SetPortOpen(true);
        machine->Run("wait-open 5000");
    }
    // A file of the installation's C: drive, by its host path.
    QString File(const QString& name, const QByteArray& bytes = {}) {
        if (!bytes.isEmpty())
            fx.Write("C:\\" + name, bytes);
        return fx.Host("C:\\" + name);
    }

    InstallationFixture fx;
    std::unique_ptr<SimulatorProcess> machine;
    std::unique_ptr<QtSerialLine> line;
    QString received;
    QStringList lost;
    bool openWhenLost = true;
};

} // namespace

TEST_F(SerialPty, APseudoTerminalRefusesTheModemLineWaitAndRaisesNoLineEvent) {
    // The watch's thread meets the refusal and ends by itself, telling why.
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(::grantpt(master), 0);
    ASSERT_EQ(::unlockpt(master), 0);
    const int slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(slave, 0);
    ModemLineWatch watch;
    int ended = 0;
    QObject::connect(&watch, &ModemLineWatch::Ended, [&](int error) { ended = error; });
    watch.Start(slave);
    EXPECT_TRUE(RunEventsUntil([&] { return ended != 0; }, 5000));
    EXPECT_EQ(ended, ENOTTY);
    watch.Stop();
    EXPECT_FALSE(watch.Running());
    ::close(slave);
    ::close(master);

    // The line carries on without the lines' levels: no time-out is ever raised, however long
    // its output waits on a low CTS.
    QList<CommEvent> events;
    QObject::connect(line.get(), &SerialLine::Comm, [&](CommEvent e) { events << e; });
    line->SetCommPort(2);
    EXPECT_EQ(line->Device(), machine->Device()); // through the device map
    Open(3);                                      // RTS/CTS and DTR requests the pseudo-terminal refuses
    EXPECT_TRUE(line->PortOpen());
    EXPECT_FALSE(line->ModemLinesReported());
    machine->Run("send " + File("a.txt", "hello") + " chunk=2 pace=20");
    ASSERT_TRUE(RunEventsUntil([&] { return received.size() >= 5; }));
    EXPECT_EQ(received, "hello");
    line->SetCTSTimeout(50);
    line->SetCDTimeout(50);
    line->Output("G1 X10");
    RunEventsUntil([] { return false; }, 300);
    EXPECT_FALSE(events.contains(CommEvent::CtsTimeOut));
    EXPECT_FALSE(events.contains(CommEvent::CdTimeOut));
    EXPECT_TRUE(lost.isEmpty());
}

TEST_F(SerialPty, NullDiscardAndTheReceiveThreshold) {
    Open(0);
    line->SetNullDiscard(true);
    line->SetRThreshold(0); // no events: the characters wait in the buffer
    machine->Run("send " + File("n.bin", QByteArray("a\0b\0c", 5)));
    ASSERT_TRUE(RunEventsUntil([&] { return line->InBufferCount() >= 3; }));
    EXPECT_TRUE(received.isEmpty());
    line->SetInputLen(2);
    EXPECT_EQ(line->Input(), "ab");
    EXPECT_EQ(line->Input(), "c");
    EXPECT_EQ(line->InBufferCount(), 0);
}

TEST_F(SerialPty, XonXoffIsDoneByTheLineAndNeverReachesTheProgram) {
    Open(1);
    machine->Run("send " + File("xoff.bin", "\x13x"));
    ASSERT_TRUE(RunEventsUntil([&] { return received.size() >= 1; }));
    EXPECT_EQ(received, "x");
    line->Output("HELD BACK");
    EXPECT_EQ(line->OutBufferCount(), 9); // held by the XOFF
    // The machine asks for the rest with an XON as its start character.
    machine->Run("receive " + File("got.bin") + " start=17 trailer=1,75 idle=5000");
    EXPECT_EQ(fx.Read("C:\\got.bin"), "HELD BACK");
    machine->Run("send " + File("y.bin", "y"));
    ASSERT_TRUE(RunEventsUntil([&] { return received.size() >= 2; }));
    EXPECT_EQ(received, "xy");
    EXPECT_EQ(line->OutBufferCount(), 0);
}

TEST_F(SerialPty, AHangUpClosesThePortAndIsReportedOnce) {
    Open(1);
    machine->Run("send " + File("part.txt", "G1\r\n"));
    ASSERT_TRUE(RunEventsUntil([&] { return received.size() >= 4; }));
    machine->Run("hangup");
    ASSERT_TRUE(RunEventsUntil([&] { return !lost.isEmpty(); }));
    EXPECT_FALSE(openWhenLost); // closed before anyone hears of it
    EXPECT_FALSE(line->PortOpen());
    // Let events run a while: a line left open would report read errors again and again.
    RunEventsUntil([] { return false; }, 300);
    ASSERT_EQ(lost.size(), 1);
    EXPECT_TRUE(lost.first().contains("\"COM2\"")) << lost.first().toStdString();
}
