// Load of a send through a pseudo-terminal to the simulated machine: a 1 MB program sent by the
// send engine (one character at a time, never 64 or more waiting to go out) against a baseline
// measured in the same run, the same bytes written through the same line in 4 KB pieces. Then
// the processor time of both while the machine reads at a 115,200-baud line's pace.
//
//   bench_send_load [kilobytes] [paced-kilobytes]
#include "EngineSend.h"
#include "TestApplication.h"
#include "platform/QtSerialLine.h"
#include "settings/SettingsFile.h"

#include <QElapsedTimer>
#include <cstdio>

using namespace kestrova;
using namespace kestrova::testing;
using kestrova::bench::EngineSend;
using kestrova::bench::Figures;
using kestrova::bench::WriteLoadProgram;

namespace {

// The same bytes and trailer written straight to the line, as fast as it takes them.
Figures PlainWrite(SimulatorProcess& machine, SerialLine& line, const QByteArray& bytes,
                   const QString& options, const QString& recorded) {
    line.SetCommPort(2);
    line.SetSettings(QStringLiteral("115200,N,8,1"));
    line.SetHandshaking(1);
    line.SetPortOpen(true);
    machine.Start("receive " + recorded + " trailer=1,37 " + options);
    QElapsedTimer wall;
    wall.start();
    const double cpu0 = CpuSeconds();
    const QString text = QString::fromLatin1(bytes + "%");
    for (qsizetype at = 0; at < text.size(); at += 4096) {
        line.Output(text.mid(at, 4096));
        RunEventsUntil([&] { return line.OutBufferCount() < 4096; }, 600000);
    }
    line.SetPortOpen(false);
    const double cpu = CpuSeconds() - cpu0;
    machine.Finish(QStringLiteral("receive"), 600000);
    return {double(wall.nsecsElapsed()) / 1e9, cpu};
}

} // namespace

int main(int argc, char** argv) {
    TestApplication();
    const int kilobytes = argc > 1 ? std::atoi(argv[1]) : 1024;
    const int pacedKilobytes = argc > 2 ? std::atoi(argv[2]) : 64;

    InstallationFixture fx;
    SimulatorProcess machine(fx.Host("C:\\Kestrova\\Devices.cfg"), 2);
    fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms",
                  {"Fanuc 6M", "2", "115200", "N", "8", "1", "XON/XOFF", "AUTO", "17", "", "1,13,1,10",
                   "1,37", "", "", "0,127", "0"});
    fx.Load();
    QtSerialLine line(fx.Files().Devices());
    const QString recorded = fx.Root() + QStringLiteral("/recorded.bin");

    const QByteArray big = WriteLoadProgram(fx, kilobytes);
    const double mb = double(big.size()) / 1e6;
    const Figures plain = PlainWrite(machine, line, big, QStringLiteral("idle=5000"), recorded);
    const Figures sent = EngineSend(fx, machine, line, QStringLiteral("idle=5000"), recorded);
    std::printf("Full speed, %.2f MB:\n", mb);
    std::printf("  plain write (baseline)   %8.1f KB/s   %6.2f s   CPU %5.2f s\n", mb * 1000 / plain.seconds,
                plain.seconds, plain.cpu);
    std::printf(
        "  send engine              %8.1f KB/s   %6.2f s   CPU %5.2f s   %.2f x the baseline's time\n",
        mb * 1000 / sent.seconds, sent.seconds, sent.cpu, sent.seconds / plain.seconds);

    const QByteArray paced = WriteLoadProgram(fx, pacedKilobytes);
    const QString pace = QStringLiteral("idle=5000 pace=115200");
    const Figures plainPaced = PlainWrite(machine, line, paced, pace, recorded);
    const Figures sentPaced = EngineSend(fx, machine, line, pace, recorded);
    std::printf("Read at 115,200 baud's pace, %d KB:\n", pacedKilobytes);
    std::printf("  plain write (baseline)   %6.2f s   CPU %5.3f s = %5.2f %% of one core\n",
                plainPaced.seconds, plainPaced.cpu, 100 * plainPaced.cpu / plainPaced.seconds);
    std::printf("  send engine              %6.2f s   CPU %5.3f s = %5.2f %% of one core\n",
                sentPaced.seconds, sentPaced.cpu, 100 * sentPaced.cpu / sentPaced.seconds);
    return 0;
}
