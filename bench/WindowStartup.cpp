// One program built twice for bench/startup-memory.sh: with KESTROVA_FRONTEND_WINDOW it opens the
// front end's main window on the installation in the current directory, as kestrova does;
// without it, a minimal Qt Widgets window, the baseline. It ends as soon as the window is on the
// screen; given "idle" it stays idle for a second first, for the peak memory of the idle window.
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#ifdef KESTROVA_FRONTEND_WINDOW
#include "Frontend/FrontEndProgram.h"
#endif

#include <cstring>
#include <memory>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const bool idle = argc > 1 && std::strcmp(argv[1], "idle") == 0;

#ifdef KESTROVA_FRONTEND_WINDOW
    kestrova::FrontEndProgram program;
    if (program.Open() != 0)
        return 1;
    kestrova::FrontEnd* window = &program.Window();
#else
    auto window = std::make_unique<QWidget>();
    window->setWindowTitle(QStringLiteral("Baseline"));
    window->resize(760, 520);
#endif
    window->show();

    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!window->windowHandle() || !window->windowHandle()->isExposed())
            return;
        poll.stop();
        if (idle)
            QTimer::singleShot(1000, [] { QApplication::exit(0); });
        else
            QApplication::exit(0);
    });
    poll.start(1);
    return QApplication::exec();
}
