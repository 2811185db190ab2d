// One program built twice for bench/startup-memory.sh: with KESTROVA_FRONTEND_WINDOW it opens the
// front end's main window on the installation in the current directory, as kestrova does;
// without it, a minimal Qt Widgets window, the baseline. It ends as soon as the window is on the
// screen; given "idle" it stays idle for a second first, for the peak memory of the idle window.
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#ifdef KESTROVA_FRONTEND_WINDOW
#include "Frontend/FrontEnd.h"
#include "Frontend/QtMessageService.h"
#include "Frontend/StartUp.h"

#include <QDir>
#endif

#include <cstring>
#include <memory>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const bool idle = argc > 1 && std::strcmp(argv[1], "idle") == 0;

#ifdef KESTROVA_FRONTEND_WINDOW
    using namespace kestrova;
    FileSystem files = FileSystem::AtStartDirectory(QDir::currentPath());
    QtMessageService messages;
    GlobalSettings settings;
    Session session{settings, files, messages};
    if (LoadAtStartUp(session) != 0)
        return 1;
    ProgramLauncher launcher(files);
    auto window = std::make_unique<FrontEnd>(session, launcher);
    if (window->StartUpStatus() != 0)
        return 1;
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
