// Load of the background receive: 1,000 programs of 20 KB sent back to back by the simulated
// machine at full pseudo-terminal speed into the background receive of the running main window
// (offscreen), or with "core" into the background receive object alone. Reports throughput and
// CPU time per MB, next to a baseline measured in the same run (the same bytes through the same
// line, taken and thrown away), and the resident memory after the first 100 programs and at the
// end.
//
//   bench_receive_load [programs] [kilobytes] [window|core]
#include "CpuTime.h"
#include "Frontend/FrontEnd.h"
#include "InstallationFixture.h"
#include "comms/BackgroundReceive.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTimer>
#include <cstdio>
#include <cstring>
#include <functional>
#include <unistd.h>

using namespace kestrova;

namespace {

double ResidentMb() {
    QFile f(QStringLiteral("/proc/self/statm"));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = f.readAll().split(' ');
    return fields.size() > 1 ? fields.at(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0)
                             : 0;
}

// The simulated machine, started on COM2 of the installation, commands on standard input.
class Machine {
public:
    explicit Machine(const QString& devices) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(KESTROVA_MACHINE_SIMULATOR),
                        {"--devices", devices, "--port", "2", "--commands"});
        m_process.waitForStarted();
        m_process.waitForReadyRead();
        m_process.readLine();
    }
    ~Machine() {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    void Start(const QString& command) {
        m_process.write(command.toLocal8Bit() + '\n');
        m_process.waitForBytesWritten();
    }

private:
    QProcess m_process;
};

// Lets events run until done() holds; the loop sleeps until the next event, so the CPU time
// measured is the receive's own.
bool RunUntil(const std::function<bool()>& done, int limitMs) {
    QDeadlineTimer deadline(limitMs);
    QTimer tick;
    tick.start(50);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    return done();
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int programs = argc > 1 ? std::atoi(argv[1]) : 1000;
    const int kilobytes = argc > 2 ? std::atoi(argv[2]) : 20;
    const bool intoWindow = !(argc > 3 && std::strcmp(argv[3], "core") == 0);

    testing::InstallationFixture fx;
    fx.WriteLines("C:\\Kestrova\\Kestrova.cms",
                  {"Title", LabelledLine("Port", "2"), "9600", "N", "8", "1", "XON/XOFF", "", "", "",
                   "1,13,1,10", LabelledLine("Trailer", "1,13,1,10,1,37"), "", "",
                   LabelledLine("Receive Filter", "0,127"), "0"});
    Machine machine(fx.Host("C:\\Kestrova\\Devices.cfg"));
    fx.Load();

    // Every other program carries the header lines; the others get the default names.
    QByteArray stream;
    QList<QByteArray> bodies;
    for (int i = 0; i < programs; ++i) {
        QByteArray body;
        if (i % 2 == 0)
            body += "\x17PUNCH1\r\n\x18Load\r\n\x19P" + QByteArray::number(i) + "\r\n";
        for (int n = 10; body.size() < kilobytes * 1024 - 40; n += 10)
            body += "N" + QByteArray::number(n) + " G01 X" + QByteArray::number(n % 2500) + ".5 Y" +
                    QByteArray::number((n * 7) % 1250) + ".25\r\n";
        bodies << body;
        stream += body + "%";
    }
    const QString streamFile = fx.Root() + "/stream.nc";
    {
        QFile f(streamFile);
        f.open(QIODevice::WriteOnly);
        f.write(stream);
    }
    const double megabytes = double(stream.size()) / (1024.0 * 1024.0);

    // Baseline: the same bytes through the same line, taken and thrown away.
    double baselineWall = 0, baselineCpu = 0;
    {
        QtSerialLine line(fx.Files().Devices());
        qint64 got = 0;
        QObject::connect(&line, &SerialLine::Comm, [&](CommEvent e) {
            if (e == CommEvent::Receive)
                got += line.Input().size();
        });
        line.SetCommPort(2);
        line.SetSettings("9600,N,8,1");
        line.SetRThreshold(1);
        line.SetPortOpen(true);
        machine.Start("wait-open 5000");
        const double cpu0 = CpuSeconds();
        QElapsedTimer clock;
        clock.start();
        machine.Start("send " + streamFile + " chunk=65536");
        if (!RunUntil([&] { return got >= stream.size(); }, 600000)) {
            std::fprintf(stderr, "baseline: only %lld of %lld bytes arrived\n", got, qint64(stream.size()));
            return 1;
        }
        baselineWall = double(clock.nsecsElapsed()) / 1e9;
        baselineCpu = CpuSeconds() - cpu0;
        line.SetPortOpen(false);
    }

    // The background receive, filing every program: the main window's, started as the window
    // opens on the host's port, or the object alone.
    ProgramLauncher launcher(fx.Files());
    std::unique_ptr<FrontEnd> window;
    std::unique_ptr<BackgroundReceive> alone;
    if (intoWindow) {
        window = std::make_unique<FrontEnd>(fx.session(), launcher);
        window->show();
    } else {
        alone = std::make_unique<BackgroundReceive>(fx.session(),
                                                    std::make_unique<QtSerialLine>(fx.Files().Devices()));
        alone->Start();
    }
    BackgroundReceive& receive = window ? window->Receive() : *alone;
    if (!receive.Line().PortOpen()) {
        std::fprintf(stderr, "the background port did not open\n");
        return 1;
    }
    int filed = 0;
    double rssAt100 = 0;
    QObject::connect(&receive, &BackgroundReceive::ProgramFiled, [&] {
        if (++filed == std::min(100, programs))
            rssAt100 = ResidentMb();
    });
    machine.Start("wait-open 5000");
    const double cpu0 = CpuSeconds();
    QElapsedTimer clock;
    clock.start();
    machine.Start("send " + streamFile + " chunk=65536");
    if (!RunUntil([&] { return filed >= programs; }, 600000)) {
        std::fprintf(stderr, "only %d of %d programs filed\n", filed, programs);
        return 1;
    }
    const double wall = double(clock.nsecsElapsed()) / 1e9;
    const double cpu = CpuSeconds() - cpu0;
    const double rssEnd = ResidentMb();

    // Every program filed as the rules say: the header-stripped copy or the received bytes,
    // with all of the trailer but its last character, and the last character of the trailer
    // before it in front when both came in one chunk.
    int wrong = 0;
    int defaultNumber = 0;
    for (int i = 0; i < programs; ++i) {
        const bool header = i % 2 == 0;
        const QString path =
            header ? QStringLiteral("C:\\Jobs\\PUNCH1\\Load\\P%1.prg").arg(i)
                   : QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\New Program %1.prg").arg(++defaultNumber);
        const QByteArray got = fx.OnDisk(path) ? fx.Read(path) : QByteArray("<missing>");
        QByteArray expected = bodies.at(i); // its last line end is the trailer's start
        if (header)
            expected = expected.mid(expected.indexOf('\x19'));
        if (header)
            expected = expected.mid(expected.indexOf('\n') + 1);
        if (header ? got != expected : (got != expected && got != "%" + expected))
            ++wrong;
    }
    const int listed = int(fx.ReadLines("C:\\Kestrova\\Receive.lst").size());
    const int shown = window ? int(window->ReceivedPrograms().size()) : listed;

    std::printf("programs %d of %d KB: %.1f MB\n", programs, kilobytes, megabytes);
    std::printf("baseline (line only):  %.2f MB/s, %.4f CPU s/MB\n", megabytes / baselineWall,
                baselineCpu / megabytes);
    std::printf("%s %.2f MB/s, %.4f CPU s/MB\n",
                intoWindow ? "into the main window: " : "background receive:  ", megabytes / wall,
                cpu / megabytes);
    std::printf("ratio to baseline:     %.2f of the throughput, %.2f times the CPU per MB\n",
                baselineWall / wall, (cpu / megabytes) / std::max(1e-9, baselineCpu / megabytes));
    std::printf("filed %d, wrong %d, listed %d, shown %d\n", filed, wrong, listed, shown);
    std::printf("resident memory: %.1f MB after 100 programs, %.1f MB at the end\n", rssAt100, rssEnd);
    return (wrong == 0 && filed == programs && listed == programs && shown == programs) ? 0 : 1;
}
