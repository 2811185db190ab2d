// The background receive on a real pseudo-terminal, fed by the simulated machine control.
#include "InstallationFixture.h"
#include "SimulatorProcess.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QDirIterator>
#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

class ReceiveIntegration : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        machine = std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
        fx.WriteLines(
            "C:\\Kestrova\\Kestrova.cms",
            {LabelledLine("Title", "Background"), LabelledLine("Port", "2"), LabelledLine("Baud", "9600"),
             LabelledLine("Parity", "E"), LabelledLine("Data Bits", "7"), LabelledLine("Stop Bits", "2"),
             LabelledLine("Handshake", "XON/XOFF"), "", "", "", LabelledLine("Line End", "1,13,1,10"),
             LabelledLine("Trailer", "1,37"), LabelledLine("End Sequence", ""), "",
             LabelledLine("Receive Filter", "0,127"), LabelledLine("Receive Time Out", "0")});
        fx.Load();
        receive = std::make_unique<BackgroundReceive>(fx.session(),
                                                      std::make_unique<QtSerialLine>(fx.Files().Devices()));
        QObject::connect(receive.get(), &BackgroundReceive::ProgramFiled,
                         [this](const QString& p) { filed << p; });
        receive->Start();
        ASSERT_TRUE(receive->Line().PortOpen());
        machine->Run("wait-open 5000");
    }
    QString Program(const QByteArray& bytes) {
        const QString path = fx.Root() + QStringLiteral("/program%1.nc").arg(++m_files);
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        return path;
    }
    bool WaitFiled(int count) {
        return RunEventsUntil([&] { return filed.size() >= count; });
    }

    InstallationFixture fx;
    std::unique_ptr<SimulatorProcess> machine;
    std::unique_ptr<BackgroundReceive> receive;
    QStringList filed;

private:
    int m_files = 0;
};

} // namespace

TEST_F(ReceiveIntegration, WithAndWithoutTheThreeHeaderLines) {
    machine->Run("send " + Program("  G1 X10\r\n\r\nG2 Y5  \r\n") +
                 " header=PUNCH1,Sheets,P100 trailer=1,37 chunk=7");
    ASSERT_TRUE(WaitFiled(1));
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Sheets\\P100.prg"), "G1 X10\r\nG2 Y5\r\n");
    machine->Run("send " + Program("  G1 X10\r\n\r\n") + " trailer=1,37 chunk=3 pace=5");
    ASSERT_TRUE(WaitFiled(2));
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "  G1 X10\r\n\r\n");
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Receive.lst"),
              (QStringList{"P100 in Sheets for Trumpf Punch 5000",
                           "New Program 1 in Parts for Trumpf Punch 5000"}));
    EXPECT_EQ(receive->ReceiveList().Count(), 2);
    EXPECT_TRUE(receive->ReceiveFrameVisible());
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

TEST_F(ReceiveIntegration, TwoProgramsInOneWrite) {
    machine->Run("send " + Program("A1\r\n%B2\r\n") + " trailer=1,37 chunk=100000");
    ASSERT_TRUE(WaitFiled(2));
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "A1\r\n");
    // The first trailer's character starts the second program when both came in one chunk.
    const QByteArray second = fx.Read(Parts + "New Program 2.prg");
    EXPECT_TRUE(second == "%B2\r\n" || second == "B2\r\n") << second.toStdString();
}

TEST_F(ReceiveIntegration, UnknownMachineAndHostileHeaderValues) {
    machine->Run("send " + Program("G1\r\n") + " header=NOSUCH,Parts,P5 trailer=1,37");
    machine->Run("send " + Program("G2\r\n") + " header=..,../../../../tmp,/etc/x trailer=1,37");
    machine->Run("send " + Program("G3\r\n") + " header=RAINER,C:,a\\b trailer=1,37");
    ASSERT_TRUE(WaitFiled(3));
    EXPECT_EQ(fx.Read(Parts + "P5.prg"), "G1\r\n");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G2\r\n");
    EXPECT_EQ(fx.Read("C:\\Jobs\\RAINER\\Parts\\New Program 1.prg"), "G3\r\n");
    for (const QString& path : filed)
        EXPECT_TRUE(path.startsWith("C:\\Jobs\\")) << path.toStdString();
}

TEST_F(ReceiveIntegration, AHangUpInTheMiddleFilesNothingAndIsReportedOnce) {
    machine->Run("send " + Program("G1\r\nG2\r\nG3"));
    ASSERT_TRUE(
        RunEventsUntil([&] { return receive->Receiving() && fx.OnDisk("C:\\Kestrova\\Receive.tmp"); }));
    machine->Run("hangup");
    ASSERT_TRUE(RunEventsUntil([&] { return !fx.Messages().Texts().isEmpty(); }));
    EXPECT_FALSE(receive->Line().PortOpen());
    RunEventsUntil([] { return false; }, 300);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM2\""));
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Receive.tmp"));
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Receive.lst"));
    EXPECT_TRUE(filed.isEmpty());
    EXPECT_FALSE(receive->Receiving());
}
