// The file store under load, each against a host command run on the same files in the same run:
//   - the file name search over 100,000 drawings and programs in 500 data directories, against
//     `find -iname` with the same pattern;
//   - "Copy Files" of 1,000 program families of 20 KB to another directory, against `cp` of the
//     same files.
// The ratio is what counts, not the absolute time of this machine.

#include "InstallationFixture.h"
#include "Ratios.h"
#include "filestore/FileOperations.h"
#include "filestore/FileSearch.h"

#include <QDir>
#include <QFile>
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

using namespace kestrova;
using kestrova::bench::PrintRatio;
using kestrova::bench::RunQuietly;
using kestrova::testing::InstallationFixture;

namespace {

constexpr int DirectoryCount = 500;
constexpr int FilesPerDirectory = 200; // 100 drawings, 100 programs
constexpr int FamilyCount = 1000;
const QString SearchText = QStringLiteral("rt0042");

void Touch(const QString& hostPath, const QByteArray& bytes = {}) {
    QFile file(hostPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        std::abort();
}

// One installation for the whole run. Machine SEARCH: 500 data directories of 200 files each,
// names in mixed letter case. Machine PUNCH1, directory "Families": 1,000 programs of 20 KB,
// each with its information file.
InstallationFixture& Installation() {
    static InstallationFixture* fx = [] {
        auto* f = new InstallationFixture;
        f->Load();
        static const char* const shapes[] = {"PART%03d%02d.DRW", "part%03d%02d.prg", "Part%03d%02d.Drw",
                                             "pArT%03d%02d.pRg"};
        for (int d = 0; d < DirectoryCount; ++d) {
            const QString dir = f->Host(QStringLiteral("C:\\Jobs\\SEARCH\\Dir%1").arg(d, 3, 10, QChar('0')));
            QDir().mkpath(dir);
            for (int i = 0; i < FilesPerDirectory; ++i)
                Touch(dir + u'/' + QString::asprintf(shapes[i % 4], d % 100, i / 2));
        }
        const QByteArray program(20 * 1024, 'G');
        const QString families = f->Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Families"));
        QDir().mkpath(families);
        for (int i = 0; i < FamilyCount; ++i) {
            Touch(families + QStringLiteral("/P%1.prg").arg(i, 4, 10, QChar('0')), program);
            Touch(families + QStringLiteral("/P%1.inf").arg(i, 4, 10, QChar('0')), "Set-up sheet\r\n");
        }
        return f;
    }();
    return *fx;
}

std::string HostOf(const char* systemPath) {
    return Installation().Host(QString::fromLatin1(systemPath)).toStdString();
}

void BaselineFindIname(benchmark::State& state) {
    const std::string text = SearchText.toStdString();
    const std::vector<std::string> command{
        "find",   HostOf("C:\\Jobs\\SEARCH"), "(", "-iname", "*" + text + "*.drw", "-o",
        "-iname", "*" + text + "*.prg",       ")", "-print"};
    for (auto _ : state)
        if (!RunQuietly(command))
            state.SkipWithError("cannot run find");
}
BENCHMARK(BaselineFindIname)->Unit(benchmark::kMillisecond);

void SearchOf100000(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    qsizetype found = 0;
    for (auto _ : state)
        found = SearchFiles(fx.session(), QStringLiteral("SEARCH"), SearchText, true, true).size();
    // Five directories (4, 104, ...) hold PART00420 to PART00429, each a drawing and a program.
    if (found != 5 * 10)
        state.SkipWithError("the search found what it should not");
}
BENCHMARK(SearchOf100000)->Unit(benchmark::kMillisecond);

// An empty destination for each round, made outside the timing.
void FreshDestination(benchmark::State& state, const QString& hostDir) {
    state.PauseTiming();
    QDir(hostDir).removeRecursively();
    QDir().mkpath(hostDir);
    state.ResumeTiming();
}

void BaselineCp(benchmark::State& state) {
    const QString source = QString::fromStdString(HostOf("C:\\Jobs\\PUNCH1\\Families"));
    const QString target = QString::fromStdString(HostOf("C:\\Jobs\\PUNCH1\\ByCp"));
    std::vector<std::string> command{"cp", "-t", target.toStdString()};
    for (const QString& file : QDir(source).entryList(QDir::Files, QDir::Name))
        command.push_back((source + u'/' + file).toStdString());
    for (auto _ : state) {
        FreshDestination(state, target);
        if (!RunQuietly(command))
            state.SkipWithError("cannot run cp");
    }
}
BENCHMARK(BaselineCp)->Unit(benchmark::kMillisecond)->Iterations(5);

void CopyFilesOf1000Families(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    GlobalSettings& g = fx.Settings();
    g.CurrentDir = QStringLiteral("Families");
    g.CurrentPath = QStringLiteral("C:\\Jobs\\PUNCH1\\Families\\");
    FileChoice choice;
    choice.action = 5;
    choice.kind = 2;
    choice.destination = QStringLiteral("ByCopyFiles");
    for (int i = 0; i < FamilyCount; ++i)
        choice.names << QStringLiteral("P%1").arg(i, 4, 10, QChar('0'));
    const QString target = QString::fromStdString(HostOf("C:\\Jobs\\PUNCH1\\ByCopyFiles"));
    for (auto _ : state) {
        FreshDestination(state, target);
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        (void)FileOk(fx.session(), choice);
    }
    if (fx.Messages().Texts().value(1) != QStringLiteral("1000 Files Copied !"))
        state.SkipWithError("not every family was copied");
}
BENCHMARK(CopyFilesOf1000Families)->Unit(benchmark::kMillisecond)->Iterations(5);

// The same 2,000 files through the host file layer's copy alone, without the families: how much
// of the ratio above is the layer's (a complete copy put in place whole, names looked up
// ignoring case).
void LayerCopyOfTheSameFiles(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    const QString from = QStringLiteral("C:\\Jobs\\PUNCH1\\Families\\");
    const QString to = QStringLiteral("C:\\Jobs\\PUNCH1\\ByLayer\\");
    const QStringList files = fx.Files().List(from, QStringLiteral("*"), EntryKinds::Files);
    const QString target = QString::fromStdString(HostOf("C:\\Jobs\\PUNCH1\\ByLayer"));
    for (auto _ : state) {
        FreshDestination(state, target);
        for (const QString& file : files)
            fx.Files().Copy(from + file, to + file);
    }
}
BENCHMARK(LayerCopyOfTheSameFiles)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    kestrova::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios against the baselines of this run:\n");
    PrintRatio(reporter, "File search, 100,000 files in 500 dirs / find -iname (goal 1.5x)", "SearchOf100000",
               "BaselineFindIname", 1.5);
    PrintRatio(reporter, "Copy Files, 1,000 families of 20 KB / cp (goal 1.5x)", "CopyFilesOf1000Families",
               "BaselineCp", 1.5);
    PrintRatio(reporter, "  of which the host file layer's copy of the same files / cp",
               "LayerCopyOfTheSameFiles", "BaselineCp", 0);
    benchmark::Shutdown();
    return 0;
}
