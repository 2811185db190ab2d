// One opening of a program in the program view, for program-view.sh: the program is C:\Work.prg
// of an installation whose "Devices.cfg" lies in the current directory, read and drawn in a
// view of 1280 x 800 on the offscreen platform as the editor's pane or the send form show it.
//   bench_program_view view   time to the first complete frame, then frames while panning
//   bench_program_view idle   the same window with no program, for the memory baseline
// Prints "first-frame <ms>", "pan <mean ms> <p95 ms> <max ms> <frames>", "elements <n>".
#include "editing/forms/ProgramView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

using namespace kestrova;

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    FileSystem files = FileSystem::AtStartDirectory(QDir::currentPath());
    ProgramView view;
    view.SetMachine({2500, 1250, false, true});
    view.resize(1280, 800);
    view.show();
    if (std::strcmp(argv[1], "idle") == 0) {
        view.repaint();
        return 0;
    }
    if (std::strcmp(argv[1], "view") != 0)
        return 2;

    QElapsedTimer clock;
    clock.start();
    // The event loop runs while the program comes in, as in the window: its longest pause shows
    // whether the window would have frozen.
    qint64 longestPause = 0, last = 0;
    QTimer beat;
    beat.setInterval(1);
    QObject::connect(&beat, &QTimer::timeout, [&] {
        longestPause = std::max(longestPause, clock.elapsed() - last);
        last = clock.elapsed();
    });
    beat.start();
    view.Load(files, QStringLiteral("C:\\Work.prg"));
    QEventLoop loop;
    QObject::connect(&view, &ProgramView::LoadFinished, &loop, &QEventLoop::quit);
    loop.exec();
    beat.stop();
    const qint64 read = clock.elapsed();
    view.repaint();
    std::printf("first-frame %lld\n", static_cast<long long>(clock.elapsed()));
    std::printf("first-paint %lld\n", static_cast<long long>(clock.elapsed() - read));
    std::printf("longest-pause %lld\n", static_cast<long long>(longestPause));
    std::printf("elements %u\n", view.Drawing().Count());

    // Panning: first at the whole sheet, then zoomed in four times, a drag of a few pixels per frame.
    std::vector<double> frames;
    for (const double zoom : {1.0, 4.0}) {
        view.Fit();
        view.ZoomAt(zoom, QPointF(640, 400));
        view.repaint();
        for (int i = 0; i < 150; ++i) {
            QElapsedTimer frame;
            frame.start();
            view.PanBy(QPointF(i < 75 ? 9 : -9, 5));
            view.repaint();
            frames.push_back(frame.nsecsElapsed() / 1e6);
        }
    }
    std::vector<double> sorted = frames;
    std::sort(sorted.begin(), sorted.end());
    double sum = 0;
    for (const double f : frames)
        sum += f;
    std::printf("pan %.2f %.2f %.2f %zu\n", sum / double(frames.size()), sorted[sorted.size() * 95 / 100],
                sorted.back(), frames.size());
    return 0;
}
