// The background receive on a real pseudo-terminal, fed by the simulated machine control.
#include "CommsInstallation.h"
#include "SimulatorProcess.h"
#include "comms/BackgroundReceive.h"
#include "platform/QtSerialLine.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class ReceiveIntegration : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        machine = std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
        SetValues(fx, BackgroundCms, {{"Port", "2"}});
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
        const QString path = QStringLiteral("C:\\program%1.nc").arg(++m_files);
        fx.Write(path, bytes);
        return fx.Host(path);
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

TEST_F(ReceiveIntegration, WithAndWithoutTheHeaderLinesAndTwoProgramsInOneWrite) {
    machine->Run("send " + Program("  G1 X10\r\n\r\nG2 Y5  \r\n") +
                 " header=RAINER,Sheets,P100 trailer=1,37 chunk=7");
    machine->Run("send " + Program("  G1 X10\r\n\r\n") + " trailer=1,37 chunk=3 pace=5");
    ASSERT_TRUE(WaitFiled(2));
    EXPECT_EQ(fx.Read("C:\\Jobs\\RAINER\\Sheets\\P100.prg"), "G1 X10\r\nG2 Y5\r\n");
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "  G1 X10\r\n\r\n");
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Receive.lst"),
              (QStringList{"P100 in Sheets for Rainer Combi 1250",
                           "New Program 1 in Parts for Trumpf Punch 5000"}));
    EXPECT_EQ(receive->ReceiveList().Count(), 2);
    EXPECT_TRUE(receive->ReceiveFrameVisible());

    machine->Run("send " + Program("A1\r\n%B2\r\n") + " trailer=1,37 chunk=100000");
    ASSERT_TRUE(WaitFiled(4));
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "A1\r\n");
    // The first trailer's character starts the second program when both came in one chunk.
    const QByteArray second = fx.Read(Parts + "New Program 3.prg");
    EXPECT_TRUE(second == "%B2\r\n" || second == "B2\r\n") << second.toStdString();
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}
