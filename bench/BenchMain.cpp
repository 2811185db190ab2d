// Benchmarks of the host file layer and the listings, each reported against a baseline measured
// in the same run: the ratio is what counts, not the absolute time of this machine.

#include "InstallationFixture.h"
#include "Ratios.h"
#include "filestore/Listings.h"

#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <string>
#include <sys/stat.h>

using namespace kestrova;
using kestrova::bench::PrintRatio;
using kestrova::testing::InstallationFixture;

namespace {

constexpr int ProgramCount = 20000;

// One installation for the whole run: a data directory of 20,000 programs with mixed-case names,
// and a path four levels deep.
InstallationFixture& Installation() {
    static InstallationFixture* fx = [] {
        auto* f = new InstallationFixture;
        f->Load();
        const QString big = f->Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Big"));
        QDir().mkpath(big);
        for (int i = 0; i < ProgramCount; ++i) {
            static const char* const shapes[] = {"PART%05d.prg", "part%05d.PRG", "Part%05d.Prg",
                                                 "pArT%05d.pRg"};
            QFile file(big + u'/' + QString::asprintf(shapes[i % 4], i));
            if (!file.open(QIODevice::WriteOnly))
                std::abort();
        }
        // Each level holds some neighbours, as real directories do.
        QString level = f->Host(QStringLiteral("C:\\"));
        for (const char* name : {"Alpha", "Beta", "Gamma"}) {
            for (int i = 0; i < 40; ++i)
                QDir().mkpath(level + QStringLiteral("/Other%1").arg(i));
            level += u'/' + QLatin1String(name);
            QDir().mkpath(level);
        }
        QFile last(level + QStringLiteral("/Delta.prg"));
        if (!last.open(QIODevice::WriteOnly))
            std::abort();
        return f;
    }();
    return *fx;
}

void BaselineLsF(benchmark::State& state) {
    const std::string dir = Installation().Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Big")).toStdString();
    for (auto _ : state)
        if (!kestrova::bench::RunQuietly({"ls", "-f", dir}))
            state.SkipWithError("cannot run ls");
}
BENCHMARK(BaselineLsF)->Unit(benchmark::kMillisecond);

void FillFileListOf20000(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    ListModel list;
    for (auto _ : state) {
        FillFileList(fx.session(), list, QStringLiteral("PUNCH1"), QStringLiteral("Big"), QString(),
                     Selection::First, 2, QString());
        benchmark::DoNotOptimize(list.entries.size());
    }
    if (list.Count() != ProgramCount)
        state.SkipWithError("not every program was listed");
}
BENCHMARK(FillFileListOf20000)->Unit(benchmark::kMillisecond);

void BaselineStatExact(benchmark::State& state) {
    const std::string path =
        Installation().Host(QStringLiteral("C:\\Alpha\\Beta\\Gamma\\Delta.prg")).toStdString();
    struct stat info {};
    for (auto _ : state)
        benchmark::DoNotOptimize(::stat(path.c_str(), &info));
}
BENCHMARK(BaselineStatExact);

void LookupIgnoringCase(benchmark::State& state) {
    FileSystem& files = Installation().Files();
    const QString asked = QStringLiteral("c:\\ALPHA\\beta\\GAMMA\\delta.PRG");
    for (auto _ : state)
        benchmark::DoNotOptimize(files.Exists(asked));
    if (!files.Exists(asked))
        state.SkipWithError("not found");
}
BENCHMARK(LookupIgnoringCase);

void LookupExactCase(benchmark::State& state) {
    FileSystem& files = Installation().Files();
    const QString asked = QStringLiteral("C:\\Alpha\\Beta\\Gamma\\Delta.prg");
    for (auto _ : state)
        benchmark::DoNotOptimize(files.Exists(asked));
}
BENCHMARK(LookupExactCase);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    kestrova::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios against the baselines of this run:\n");
    PrintRatio(reporter, "FillFileList of 20,000 programs / ls -f (goal 3x)", "FillFileListOf20000",
               "BaselineLsF", 3.0);
    PrintRatio(reporter, "Lookup 4 levels deep, case differs / stat of exact path", "LookupIgnoringCase",
               "BaselineStatExact", 0);
    PrintRatio(reporter, "Lookup 4 levels deep, exact case / stat of exact path", "LookupExactCase",
               "BaselineStatExact", 0);
    benchmark::Shutdown();
    return 0;
}
