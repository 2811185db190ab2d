// The program history's cost. Exporting 1,000 programs over an existing set, every one replaced,
// with the history kept against the same export with the history switched off, in one run: the
// ratio is what counts (goal 1.3x). Then the comparison of two programs of 100,000 lines that
// differ in 1 % of their lines: its time, and the memory it takes at its peak, against the host's
// "diff" of the same two files as a baseline.
#include "InstallationFixture.h"
#include "ManyPrograms.h"
#include "Ratios.h"
#include "editing/ProgramDiff.h"
#include "exchange/ExportOk.h"
#include "filestore/HistoryLimits.h"
#include "filestore/SelectDirectory.h"

#include <QDir>
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <vector>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString Target = QStringLiteral("E:\\Bench");
const QString LimitsFile = QStringLiteral("C:\\Kestrova\\History.cfg");

// The target holding an older text of every program, the history empty. Old directories are
// moved aside, not deleted, so that no run pays for the deletes of the one before it.
void ExistingSet(InstallationFixture& fx) {
    static int moved = 0;
    ++moved;
    for (const QString& system : {Target, QStringLiteral("C:\\Kestrova\\History")}) {
        const QString host = fx.Host(system);
        if (QDir(host).exists())
            QDir().rename(host, QStringLiteral("%1-old-%2").arg(host).arg(moved));
    }
    QDir().mkpath(fx.Host(Target));
    for (const QString& name : kestrova::bench::ManyProgramNames())
        fx.Write(Target + u'\\' + name + QStringLiteral(".prg"),
                 "%\r\nO1000 (OLD)\r\nN10 G00 X0 Y0\r\nM30\r\n");
    // The old texts on the disk, as they would be after a day's work.
    (void)kestrova::bench::RunQuietly({"sync", "-f", fx.Host(Target).toStdString()});
}

void ExportOver(benchmark::State& state, bool history) {
    InstallationFixture& fx = kestrova::bench::ManyPrograms();
    fx.WriteLines(LimitsFile, HistoryLimitsLines({history ? 20 : 0, qint64(500) << 20}));
    ExportRequest request;
    request.selected = kestrova::bench::ManyProgramNames();
    request.target = Target + u'\\';
    request.mode = 2;
    request.extension = QStringLiteral("prg");
    for (auto _ : state) {
        state.PauseTiming();
        ExistingSet(fx);
        SelectDirectory(fx.session(), QStringLiteral("Many"));
        fx.Messages().Clear();
        for (int i = 0; i <= 1000; ++i)
            fx.Messages().Script({Answer::Yes}); // the export, then each "Overwrite It ?"; a report ends it
        state.ResumeTiming();
        if (ExportOk_Click(fx.session(), request) != ExportOutcome::Exported)
            state.SkipWithError("the export did not run");
    }
    const qsizetype kept = QDir(fx.Host("C:\\Kestrova\\History")).entryList(QDir::Files).size();
    if (fx.Messages().Texts().size() != 1002 || kept != (history ? 1001 : 0))
        state.SkipWithError(QStringLiteral("not every program was replaced and kept: %1 messages, %2 kept")
                                .arg(fx.Messages().Texts().size())
                                .arg(kept)
                                .toStdString()
                                .c_str());
}

void ExportOverWithoutHistory(benchmark::State& state) {
    ExportOver(state, false);
}

void ExportOverWithHistory(benchmark::State& state) {
    ExportOver(state, true);
}

// Two programs of 100,000 lines, every hundredth line changed in the second.
const std::pair<QByteArray, QByteArray>& LargePair() {
    static const auto pair = [] {
        QByteArray older;
        QByteArray newer;
        for (int n = 1; n <= 100000; ++n) {
            const QByteArray line = "N" + QByteArray::number(n) + " G01 X" + QByteArray::number(n % 2500) +
                                    ". Y" + QByteArray::number(n % 1250) + ".5\r\n";
            older += line;
            newer += n % 100 == 50 ? "N" + QByteArray::number(n) + " G00 X0. Y0.\r\n" : line;
        }
        return std::pair{older, newer};
    }();
    return pair;
}

long PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void Compare100000Lines(benchmark::State& state) {
    const auto& [older, newer] = LargePair();
    int differences = 0;
    const long before = PeakKilobytes();
    for (auto _ : state) {
        const ProgramDiff diff(older, newer);
        differences = diff.Differences();
    }
    // The peak of the process grows by what the comparison takes beyond everything before it.
    state.counters["peak_MB"] = double(PeakKilobytes() - before) / 1024;
    if (differences != 1000)
        state.SkipWithError("the changed lines were not found");
}

void BaselineHostDiff(benchmark::State& state) {
    const auto& [older, newer] = LargePair();
    InstallationFixture& fx = kestrova::bench::ManyPrograms();
    fx.Write("C:\\Bench\\older.prg", older);
    fx.Write("C:\\Bench\\newer.prg", newer);
    const std::vector<std::string> command{"diff", fx.Host("C:\\Bench\\older.prg").toStdString(),
                                           fx.Host("C:\\Bench\\newer.prg").toStdString()};
    for (auto _ : state)
        (void)kestrova::bench::RunQuietly(command); // diff ends with 1 when the files differ
}

// The comparison runs first, while the process is small, so that its peak is its own.
BENCHMARK(Compare100000Lines)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);
BENCHMARK(BaselineHostDiff)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);
BENCHMARK(ExportOverWithoutHistory)->Unit(benchmark::kMillisecond)->Iterations(3)->Repetitions(3);
BENCHMARK(ExportOverWithHistory)->Unit(benchmark::kMillisecond)->Iterations(3)->Repetitions(3);

} // namespace

int main(int argc, char** argv) {
    // The exports with and without the history take turns, so that the disk's own slow spells
    // fall on both alike.
    std::vector<char*> args(argv, argv + argc);
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    args.insert(args.begin() + 1, interleave);
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
    kestrova::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios against the baselines of this run:\n");
    kestrova::bench::PrintRatio(reporter,
                                "Export of 1,000 programs over existing ones, history / none (goal 1.3x)",
                                "ExportOverWithHistory", "ExportOverWithoutHistory", 1.3);
    kestrova::bench::PrintRatio(reporter, "Comparing two 100,000-line programs / host diff",
                                "Compare100000Lines", "BaselineHostDiff", 0);
    benchmark::Shutdown();
    return 0;
}
