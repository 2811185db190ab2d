// Load of a send through a serial device server of the network: the same 1 MB program sent by the
// send engine to the simulated machine through a local pseudo-terminal (the baseline), through
// ser2net's raw TCP port and through its RFC 2217 port in front of that same pseudo-terminal, in
// one run. For each line: the throughput and this program's processor time per megabyte, as the
// median of the rounds (taken in turn, so that a disturbance of the machine hits all three), each
// as a ratio against the local line; the device server's own processor time beside it, for it
// runs on a box of its own in a shop.
//
//   bench_net_send [kilobytes] [rounds]
#include "EngineSend.h"
#include "Ser2netServer.h"
#include "TestApplication.h"
#include "platform/MappedSerialLine.h"

#include <QFile>
#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace kestrova;
using namespace kestrova::bench;
using namespace kestrova::testing;

namespace {

constexpr int LocalCom = 2;
constexpr int TcpCom = 5;
constexpr int Rfc2217Com = 6;

// Processor time of a process so far, user and system, in seconds (/proc/PID/stat).
double ProcessCpuSeconds(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    // The fields after the command name, which is in parentheses and may hold blanks.
    const QByteArray text = stat.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return double(fields.value(11).toLongLong() + fields.value(12).toLongLong()) /
           double(sysconf(_SC_CLK_TCK));
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Line {
    const char* name;
    int com;
    std::vector<double> seconds, cpu, serverCpu;
};

} // namespace

int main(int argc, char** argv) {
    TestApplication();
    const int kilobytes = argc > 1 ? std::atoi(argv[1]) : 1024;
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

    InstallationFixture fx;
    const QString devices = fx.Host("C:\\Kestrova\\Devices.cfg");
    SimulatorProcess machine(devices, LocalCom);
    // ser2net opens the machine's device only while a connection is there, so the three lines
    // take it in turn.
    Ser2netServer server(fx.Root(), machine.Device(), machine.Device());
    server.Start();
    QStringList map = fx.ReadLines("C:\\Kestrova\\Devices.cfg");
    map.insert(map.size() - 1, QStringLiteral("COM%1 tcp 127.0.0.1:%2").arg(TcpCom).arg(server.TcpPort()));
    map.insert(map.size() - 1,
               QStringLiteral("COM%1 rfc2217 127.0.0.1:%2").arg(Rfc2217Com).arg(server.Rfc2217Port()));
    fx.WriteLines("C:\\Kestrova\\Devices.cfg", map);

    const QByteArray program = WriteLoadProgram(fx, kilobytes);
    const double mb = double(program.size()) / 1e6;
    const QString recorded = fx.Root() + QStringLiteral("/recorded.bin");
    std::vector<Line> lines = {{"local pseudo-terminal", LocalCom, {}, {}, {}},
                               {"tcp (ser2net raw)", TcpCom, {}, {}, {}},
                               {"rfc2217 (ser2net telnet)", Rfc2217Com, {}, {}, {}}};
    for (int round = 0; round < rounds; ++round) {
        for (Line& l : lines) {
            fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms",
                          {"Fanuc 6M", QString::number(l.com), "115200", "N", "8", "1", "XON/XOFF", "AUTO",
                           "17", "", "1,13,1,10", "1,37", "", "", "0,127", "0"});
            fx.Load();
            MappedSerialLine line(fx.Files().Devices());
            const double server0 = ProcessCpuSeconds(server.ProcessId());
            const Figures f = EngineSend(fx, machine, line, QStringLiteral("idle=5000"), recorded);
            l.serverCpu.push_back(ProcessCpuSeconds(server.ProcessId()) - server0);
            QFile got(recorded);
            const QByteArray arrived = got.open(QIODevice::ReadOnly) ? got.readAll() : QByteArray();
            if (!arrived.contains(program)) {
                std::fprintf(stderr, "%s: the machine got %lld of the program's %lld bytes; %s\n", l.name,
                             static_cast<long long>(arrived.size()), static_cast<long long>(program.size()),
                             qPrintable(fx.Messages().Texts().join(QStringLiteral("; "))));
                return 1;
            }
            l.seconds.push_back(f.seconds);
            l.cpu.push_back(f.cpu);
            // ser2net lets the device go, and a spare connection expires, before the next line.
            RunEventsUntil([] { return false; }, 2500);
        }
    }

    const double baseSeconds = Median(lines[0].seconds);
    const double baseCpu = Median(lines[0].cpu);
    std::printf("A %.2f MB send by the send engine, median of %d rounds:\n", mb, rounds);
    std::printf("  %-26s %10s %8s %13s %9s %9s %17s\n", "line", "KB/s", "time", "CPU s per MB", "x time",
                "x CPU", "ser2net CPU s/MB");
    for (const Line& l : lines) {
        const double seconds = Median(l.seconds);
        const double cpu = Median(l.cpu);
        std::printf("  %-26s %10.1f %7.2fs %13.3f %8.2fx %8.2fx %17.3f\n", l.name, mb * 1000 / seconds,
                    seconds, cpu / mb, seconds / baseSeconds, cpu / baseCpu, Median(l.serverCpu) / mb);
    }
    return 0;
}
