// Export to an empty directory and to a fresh Rainer floppy index, each against "cp" of the same
// program files in the same run: the ratio is what counts, not the absolute time of this machine.
// Each runs as often as its baseline, the median of three repetitions taken: on a host that
// remembers recently deleted files for a while, a run after many deletes is slower whoever
// makes it.
#include "InstallationFixture.h"
#include "ManyPrograms.h"
#include "Ratios.h"
#include "exchange/ExportOk.h"
#include "exchange/RainerFloppy.h"
#include "exchange/RainerIndex.h"
#include "filestore/SelectDirectory.h"

#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

// The thousand programs, Rainer floppies of the first kind.
InstallationFixture& Installation() {
    InstallationFixture& fx = kestrova::bench::ManyPrograms();
    fx.Settings().RainerType = 1;
    return fx;
}

using kestrova::bench::ManyProgramNames;

// "cp" of the programs' files into a directory, as one command.
std::vector<std::string> CopyCommand(int count, const QString& hostTarget) {
    InstallationFixture& fx = Installation();
    std::vector<std::string> args{"cp"};
    for (const QString& name : ManyProgramNames(count))
        args.push_back(fx.Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Many\\") + name + QStringLiteral(".prg"))
                           .toStdString());
    args.push_back(hostTarget.toStdString());
    return args;
}

// An empty directory in place of hostDir. The old one is moved aside, not deleted: a host file
// system may pass over the places of files deleted in the last minute when it makes new ones,
// which would make whichever run comes later pay for the deletes of the runs before it.
void Empty(const QString& hostDir) {
    static int moved = 0;
    if (QDir(hostDir).exists())
        QDir().rename(hostDir, QStringLiteral("%1-old-%2").arg(hostDir).arg(++moved));
    QDir().mkpath(hostDir);
}

// "cp" of count programs into an emptied directory, with the host's flush of the target's file
// system after it when flushed: what an export does beyond a copy, as it puts every file on the
// disk before it reports.
void CopyBaseline(benchmark::State& state, int count, const QString& system, bool flushed) {
    const QString target = Installation().Host(system);
    const auto command = CopyCommand(count, target);
    for (auto _ : state) {
        state.PauseTiming();
        Empty(target);
        state.ResumeTiming();
        if (!kestrova::bench::RunQuietly(command) ||
            (flushed && !kestrova::bench::RunQuietly({"sync", "-f", target.toStdString()})))
            state.SkipWithError("cp or sync failed");
    }
}

void BaselineCp1000(benchmark::State& state) {
    CopyBaseline(state, 1000, QStringLiteral("E:\\Bench"), false);
}
BENCHMARK(BaselineCp1000)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

void BaselineCpSync1000(benchmark::State& state) {
    CopyBaseline(state, 1000, QStringLiteral("E:\\Bench"), true);
}
BENCHMARK(BaselineCpSync1000)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

void Export1000Normal(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    const QString target = fx.Host(QStringLiteral("E:\\Bench"));
    ExportRequest request;
    request.selected = ManyProgramNames(1000);
    request.target = QStringLiteral("E:\\Bench\\");
    request.mode = 2;
    request.extension = QStringLiteral("prg");
    for (auto _ : state) {
        state.PauseTiming();
        Empty(target);
        SelectDirectory(fx.session(), QStringLiteral("Many"));
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        state.ResumeTiming();
        if (ExportOk_Click(fx.session(), request) != ExportOutcome::Exported)
            state.SkipWithError("the export did not run");
    }
    if (QDir(target).count() != 1002)
        state.SkipWithError("not every program was exported");
}
BENCHMARK(Export1000Normal)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

void BaselineCp300(benchmark::State& state) {
    CopyBaseline(state, 300, QStringLiteral("A:\\"), false);
}
BENCHMARK(BaselineCp300)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

void Export300ToFloppy(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    const QString floppy = fx.Host(QStringLiteral("A:\\"));
    const QStringList programs = ManyProgramNames(300);
    for (auto _ : state) {
        state.PauseTiming();
        Empty(floppy);
        WriteFreshIndex(fx.Files());
        SelectDirectory(fx.session(), QStringLiteral("Many"));
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        state.ResumeTiming();
        (void)RainerExport(fx.session(), programs);
    }
    if (fx.Messages().Texts().value(1) != QLatin1String("300 Programs Have Been Exported"))
        state.SkipWithError("not every program was exported");
}
BENCHMARK(Export300ToFloppy)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    kestrova::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios against the baselines of this run:\n");
    kestrova::bench::PrintRatio(reporter, "Export of 1,000 programs (Normal) / cp (goal 1.5x)",
                                "Export1000Normal", "BaselineCp1000", 1.5);
    kestrova::bench::PrintRatio(reporter, "  the same / cp and a flush of the target's file system",
                                "Export1000Normal", "BaselineCpSync1000", 0);
    kestrova::bench::PrintRatio(reporter, "Export of 300 programs to a fresh floppy index / cp (goal 2x)",
                                "Export300ToFloppy", "BaselineCp300", 2.0);
    benchmark::Shutdown();
    return 0;
}
