// The DNC service on real pseudo-terminals. Eight simulated controls at once, each sending
// programs and asking for programs; lines whose device is missing, comes, or goes away in the
// middle of a program while the others go on.
#include "DncInstallation.h"
#include "PtyControl.h"
#include "SimulatorProcess.h"
#include "comms/TransferLog.h"
#include "platform/QtSerialLine.h"

#include <QDir>
#include <QProcess>
#include <csignal>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

// The service of the fixture's installation on the device map's real devices.
std::unique_ptr<DncService> RealService(InstallationFixture& fx) {
    const DeviceMap devices = fx.Files().Devices();
    auto service = std::make_unique<DncService>(
        fx.session(), [devices](int) { return std::make_unique<QtSerialLine>(devices); });
    service->Start();
    return service;
}

QString Arg(const QString& path) {
    return u'"' + path + u'"';
}

// Ports 1 to count entered in the device map as links below the fixture's root, where a test's
// control can appear and go away.
QStringList LinkPorts(InstallationFixture& fx, int count) {
    QStringList links;
    QStringList devices = fx.ReadLines("C:\\Kestrova\\Devices.cfg");
    for (int n = 1; n <= count; ++n) {
        links << fx.Root() + QStringLiteral("/com%1").arg(n);
        devices.insert(devices.size() - 1, QStringLiteral("COM%1 port ").arg(n) + links.last());
    }
    fx.WriteLines("C:\\Kestrova\\Devices.cfg", devices);
    return links;
}

const QByteArray Header(const char* machine, const char* directory, const char* name) {
    return QByteArray("\x17") + machine + "\r\n\x18" + directory + "\r\n\x19" + name + "\r\n";
}

} // namespace

TEST(DncServicePty, EightControlsSendAndAskAtOnceAndNothingCrosses) {
    TestApplication();
    InstallationFixture fx;
    constexpr int Lines = 8;
    constexpr int Programs = 25;
    const QStringList dirs = ServeMachines(fx, Lines);
    std::vector<std::unique_ptr<SimulatorProcess>> controls;
    for (int n = 1; n <= Lines; ++n)
        controls.push_back(std::make_unique<SimulatorProcess>(fx.Host("C:\\Kestrova\\Devices.cfg"), n));
    fx.MakeDir("C:\\Kestrova\\Work");

    // Every control's script at once: a program with its header, then a request, then the answer.
    // Each waits for the service to open its line: what comes before is thrown away at the opening.
    std::map<std::pair<int, int>, QByteArray> sent;
    for (int n = 1; n <= Lines; ++n) {
        controls.at(size_t(n - 1))->Start("wait-open 10000");
        const QString dir = dirs.at(n - 1);
        fx.MakeDir(QStringLiteral("C:\\Jobs\\%1\\Parts").arg(dir));
        for (int k = 1; k <= Programs; ++k) {
            const QByteArray text =
                QStringLiteral("N10 G01 X%1.%2 (%3)\r\nN20 M30\r\n").arg(n).arg(k).arg(dir).toLatin1();
            sent[{n, k}] = text;
            const QString program = QStringLiteral("C:\\Kestrova\\Work\\%1-%2.nc").arg(n).arg(k);
            fx.Write(program, text);
            // Asked for by name alone (found by search), or with its directory.
            fx.Write(QStringLiteral("C:\\Jobs\\%1\\Stock\\R%2.prg").arg(dir).arg(k),
                     QStringLiteral("G00 X%1 Y%2 (STOCK %3)\r\nM30\r\n").arg(k).arg(n).arg(dir).toLatin1());
            const QString request = QStringLiteral("C:\\Kestrova\\Work\\%1-%2.req").arg(n).arg(k);
            fx.Write(request,
                     (k % 2 ? QStringLiteral("(PRG=R%1)\r\n") : QStringLiteral("(PRG=Stock\\R%1)\r\n"))
                         .arg(k)
                         .toLatin1());
            SimulatorProcess& control = *controls.at(size_t(n - 1));
            control.Start(QStringLiteral("send %1 header=%2,Parts,P%3 trailer=1,37")
                              .arg(Arg(fx.Host(program)), dir)
                              .arg(k));
            control.Start(QStringLiteral("send %1 trailer=1,37").arg(Arg(fx.Host(request))));
            control.Start(
                QStringLiteral("receive %1 start=17 trailer=1,37")
                    .arg(Arg(fx.Host(QStringLiteral("C:\\Kestrova\\Work\\%1-%2.ans").arg(n).arg(k)))));
        }
    }
    fx.Load();
    const std::unique_ptr<DncService> service = RealService(fx);
    ASSERT_EQ(service->Lines().size(), size_t(Lines));
    // Each control reports every command done; its last one closes its script.
    for (auto& control : controls) {
        control->Start("sleep 1");
        control->Finish("sleep", 120000);
    }

    for (int n = 1; n <= Lines; ++n) {
        const QString dir = dirs.at(n - 1);
        const DncLineSetup& setup = service->Lines().at(n)->Setup();
        for (int k = 1; k <= Programs; ++k) {
            SCOPED_TRACE(QStringLiteral("COM%1 program %2").arg(n).arg(k).toStdString());
            EXPECT_EQ(Contents(fx, QStringLiteral("C:\\Jobs\\%1\\Parts\\P%2.prg").arg(dir).arg(k)),
                      (sent[{n, k}]));
            const QString stock = QStringLiteral("C:\\Jobs\\%1\\Stock\\R%2.prg").arg(dir).arg(k);
            EXPECT_EQ(Contents(fx, QStringLiteral("C:\\Kestrova\\Work\\%1-%2.ans").arg(n).arg(k)),
                      EngineStream(fx, setup, "Stock", QStringLiteral("R%1").arg(k), stock));
        }
        EXPECT_EQ(QDir(fx.Host(QStringLiteral("C:\\Jobs\\%1\\Parts").arg(dir))).entryList(QDir::Files).size(),
                  qsizetype(Programs) + (n >= 4 ? 1 : 0) + (n == 1 ? 14 : 0))
            << "nothing else is filed: a request is answered, not kept";
    }
    const QStringList log = LastTransferLogLines(fx.session(), 3 * Lines * Programs);
    EXPECT_EQ(log.filter("sent on request").size(), Lines * Programs);
    EXPECT_TRUE(fx.Messages().Texts().isEmpty()) << fx.Messages().Texts().join('\n').toStdString();
}

TEST(DncServicePty, ALineWhoseDeviceIsMissingComesOrGoesNeverHoldsUpTheOthers) {
    TestApplication();
    InstallationFixture fx;
    ServeMachines(fx, 3);
    const QStringList links = LinkPorts(fx, 3);
    auto first = std::make_unique<PtyControl>(links.at(0));
    auto third = std::make_unique<PtyControl>(links.at(2));
    fx.Load();
    const std::unique_ptr<DncService> service = RealService(fx);
    const DncLine& second = *service->Lines().at(2);
    EXPECT_EQ(second.State(), DncLineState::WaitingForDevice);
    ASSERT_TRUE(RunEventsUntil([&] { return first->Opened() && third->Opened(); }, 5000));

    // COM1 and COM3 are each in the middle of a program when COM2's device appears and COM3's
    // goes away.
    first->Write(Header("PUNCH1", "Parts", "Whole") + "N10 G01 X1\r\n");
    third->Write(Header("LASER", "Kestrova", "Cut") + "N10 G01 X3\r\n");
    ASSERT_TRUE(
        RunEventsUntil([&] { return service->Lines().at(3)->State() == DncLineState::Receiving; }, 5000));
    auto secondControl = std::make_unique<PtyControl>(links.at(1));
    third->Remove();
    ASSERT_TRUE(RunEventsUntil([&] { return second.State() == DncLineState::Listening; }, 10000));
    ASSERT_TRUE(RunEventsUntil([&] { return secondControl->Opened(); }, 5000));
    secondControl->Write(Header("RAINER", "Kestrova", "Late") + "N10 G01 X2\r\n%");
    first->Write("N20 M30\r\n%");
    ASSERT_TRUE(RunEventsUntil(
        [&] {
            return fx.OnDisk("C:\\Jobs\\PUNCH1\\Parts\\Whole.prg") &&
                   fx.OnDisk("C:\\Jobs\\RAINER\\Kestrova\\Late.prg");
        },
        5000));
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Whole.prg"), "N10 G01 X1\r\nN20 M30\r\n");
    EXPECT_EQ(fx.Read("C:\\Jobs\\RAINER\\Kestrova\\Late.prg"), "N10 G01 X2\r\n");
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\LASER\\Kestrova\\Cut.prg"))
        << "a cut-off program is never filed as whole";
    EXPECT_EQ(service->Lines().at(3)->State(), DncLineState::WaitingForDevice);
    EXPECT_FALSE(service->Lines().at(3)->LastError().isEmpty());

    // One line each: COM2 missing at the start, COM2 back, COM3 gone.
    const QStringList texts = fx.Messages().Texts();
    EXPECT_EQ(texts.filter("COM2").size(), 2) << texts.join('\n').toStdString();
    EXPECT_EQ(texts.filter("COM2: the device is back; listening for RAINER").size(), 1);
    EXPECT_EQ(texts.filter("COM3").size(), 1) << texts.join('\n').toStdString();
    EXPECT_EQ(texts.filter("COM1").size(), 0);
}

// The service as the host runs it: SIGHUP reads the settings again while a program is on its
// way on a line that did not change; SIGTERM in the middle of a program keeps it and ends at once.
TEST(DncServicePty, TheProgramReloadsOnSighupAndEndsOnSigtermKeepingWhatCame) {
    TestApplication();
    InstallationFixture fx;
    ServeMachines(fx, 2);
    fx.WriteLines(DncCfg, {LabelledLine("Machine", "1"), LabelledLine("Machine", "2"), "******"});
    const QStringList links = LinkPorts(fx, 2);
    PtyControl first(links.at(0));
    PtyControl second(links.at(1));
    QProcess service;
    QByteArray said;
    QObject::connect(&service, &QProcess::readyReadStandardError,
                     [&] { said += service.readAllStandardError(); });
    service.start(QStringLiteral(KESTROVA_DNC), {fx.StartDir()});
    ASSERT_TRUE(RunEventsUntil([&] { return said.contains("serving"); }, 10000)) << said.toStdString();
    EXPECT_TRUE(said.contains("serving COM1 for PUNCH1, COM2 for RAINER")) << said.toStdString();
    ASSERT_TRUE(RunEventsUntil([&] { return first.Opened() && second.Opened(); }, 5000));

    first.Write(Header("PUNCH1", "Parts", "Keep") + "N10 G01 X1\r\n");
    second.Write(Header("RAINER", "Kestrova", "Moved") + "N10 G01 X2\r\n");
    ASSERT_TRUE(
        RunEventsUntil([&] { return fx.Read("C:\\Kestrova\\Dnc.state").count("receiving") == 2; }, 5000));
    SetValues(fx, CmsOf("RAINER"), {{"Receive Filter", "0"}});
    ::kill(pid_t(service.processId()), SIGHUP);
    ASSERT_TRUE(RunEventsUntil([&] { return said.contains("settings read again"); }, 5000))
        << said.toStdString();
    // COM1 keeps its transfer; COM2's program so far is kept, as a cut-off one always is.
    first.Write("N20 M30\r\n%");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk("C:\\Jobs\\PUNCH1\\Parts\\Keep.prg"); }, 5000));
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Keep.prg"), "N10 G01 X1\r\nN20 M30\r\n");
    EXPECT_EQ(Contents(fx, "C:\\Kestrova\\Unfiled 1.prg"),
              Header("RAINER", "Kestrova", "Moved") + "N10 G01 X2\r\n");
    ASSERT_TRUE(RunEventsUntil([&] { return second.Opened(); }, 5000));
    second.Write(Header("RAINER", "Kestrova", "After") + "N10 G01 X5\r\n%");
    ASSERT_TRUE(RunEventsUntil([&] { return fx.OnDisk("C:\\Jobs\\RAINER\\Kestrova\\After.prg"); }, 5000));

    first.Write(Header("PUNCH1", "Parts", "Half") + "N10 G01 X9\r\n");
    ASSERT_TRUE(
        RunEventsUntil([&] { return fx.Read("C:\\Kestrova\\Dnc.state").contains("receiving Half"); }, 5000));
    ::kill(pid_t(service.processId()), SIGTERM);
    ASSERT_TRUE(service.waitForFinished(2000)) << "the service ends within two seconds";
    EXPECT_EQ(service.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(service.exitCode(), 0);
    EXPECT_EQ(Contents(fx, "C:\\Kestrova\\Unfiled 2.prg"),
              Header("PUNCH1", "Parts", "Half") + "N10 G01 X9\r\n");
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\PUNCH1\\Parts\\Half.prg"));
    EXPECT_TRUE(LastTransferLogLines(fx.session(), 1).value(0).contains("The DNC service stopped"));
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Dnc.state"));
}
