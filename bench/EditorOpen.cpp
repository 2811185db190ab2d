// Opening a program of 20 MB in the system's own editor, until the whole text is in the window
// and can be edited, against "cp" of the same file and against reading it whole with QFile, in
// the same run: the ratio is what counts, not the absolute time of this machine.
#include "InstallationFixture.h"
#include "Ratios.h"
#include "editing/forms/TextEditorWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <benchmark/benchmark.h>
#include <memory>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString Program = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Large.prg");

InstallationFixture& Installation() {
    static InstallationFixture* fx = [] {
        auto* f = new InstallationFixture;
        QByteArray text("%\r\nO2000 (SHEET 3000X1500)\r\n");
        for (int i = 1; text.size() < 20'000'000; ++i)
            text += "N" + QByteArray::number(i) + " G01 X" + QByteArray::number(i % 2999) + ".5 Y" +
                    QByteArray::number(i % 1499) + (i % 50 == 0 ? " T12 (PUNCH)\r\n" : "\r\n");
        text += "M30\r\n";
        f->Write(Program, text);
        return f;
    }();
    return *fx;
}

void BaselineCp(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    const std::string from = fx.Host(Program).toStdString();
    const std::string to = fx.Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Copy.prg")).toStdString();
    for (auto _ : state)
        if (!kestrova::bench::RunQuietly({"cp", from, to}))
            state.SkipWithError("cp failed");
}
BENCHMARK(BaselineCp)->Unit(benchmark::kMillisecond)->Iterations(5);

void BaselineQFileRead(benchmark::State& state) {
    QFile file(Installation().Host(Program));
    for (auto _ : state) {
        if (!file.open(QIODevice::ReadOnly))
            state.SkipWithError("cannot read");
        benchmark::DoNotOptimize(file.readAll());
        file.close();
    }
}
BENCHMARK(BaselineQFileRead)->Unit(benchmark::kMillisecond)->Iterations(5);

void OpenInEditor(benchmark::State& state) {
    InstallationFixture& fx = Installation();
    std::unique_ptr<TextEditorWindow> editor;
    for (auto _ : state) {
        state.PauseTiming(); // closing the last window is not opening this one
        editor.reset();
        state.ResumeTiming();
        editor = std::make_unique<TextEditorWindow>(fx.Files(), fx.Messages(), Program);
        if (editor->Loading()) {
            QEventLoop loop;
            QObject::connect(editor.get(), &TextEditorWindow::LoadFinished, &loop, &QEventLoop::quit);
            loop.exec();
        }
    }
}
BENCHMARK(OpenInEditor)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    kestrova::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios against the baselines of this run:\n");
    kestrova::bench::PrintRatio(reporter, "Opening a 20 MB program in the editor / cp", "OpenInEditor",
                                "BaselineCp", 0);
    kestrova::bench::PrintRatio(reporter, "Opening a 20 MB program in the editor / reading it with QFile",
                                "OpenInEditor", "BaselineQFileRead", 0);
    benchmark::Shutdown();
    return 0;
}
