// Through a real pseudo-terminal: what waits in the line before a transfer opens its port is
// stale and is discarded, so an XON the control gave earlier does not start a send.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "SimulatorProcess.h"
#include "TestApplication.h"
#include "comms/SendFormLogic.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

TEST(CommLimitsPty, AnXonWaitingBeforeThePortOpensDoesNotStartTheSend) {
    TestApplication();
    InstallationFixture fx;
    SimulatorProcess machine(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
    // The fixture's control (AUTO start on XON, XON/XOFF) on COM2 at the pseudo-terminal's pace.
    const QString cmsFile = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms");
    QStringList cms = fx.ReadLines(cmsFile);
    cms[1] = LabelledLine("Port", "2");
    cms[2] = LabelledLine("Baud", "115200");
    cms[9] = LabelledLine("Leader", "2,0");
    fx.WriteLines(cmsFile, cms);
    fx.Load();
    fx.Write(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Short.prg"), "G1 X10\r\nM30\r\n");
    fx.Write(QStringLiteral("C:\\xon.bin"), "\x11");
    const QString recorded = fx.Root() + "/recorded.bin";

    // The XON is in the line before anyone opens it.
    machine.Run("send " + fx.Host(QStringLiteral("C:\\xon.bin")));
    QtSerialLine line(fx.Files().Devices());
    SendEngine engine(line, PauseTimer::Shared());
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    QObject script;
    int phaseLater = -1;
    When(
        &script, [&] { return engine.Phase() == SendPhase::Waiting && line.PortOpen(); },
        [&] {
            QTimer::singleShot(500, &script, [&] {
                phaseLater = int(engine.Phase());
                machine.Start("receive " + recorded + " start=17 trailer=1,37 idle=3000");
            });
        });
    logic.SendOk_Click({"Short"});
    machine.Finish("receive");

    EXPECT_EQ(phaseLater, int(SendPhase::Waiting)) << "the stale XON started the send";
    QFile got(recorded);
    ASSERT_TRUE(got.open(QIODevice::ReadOnly));
    EXPECT_EQ(got.readAll(), QByteArray(2, '\0') + "G1 X10\r\nM30\r\n%");
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}
