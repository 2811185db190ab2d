// Takes the picture of the main window for the documentation: started, like kestrova, in the
// program directory of an installation, it opens the main window, opens the "&Setup" menu and
// its "Edit Data Files" submenu, and saves the screen area they cover as the PNG file named by
// its one argument. Meant to run under Xvfb (tools/screenshot.sh).
#include "Frontend/FrontEndProgram.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QTimer>
#include <cstdio>

using namespace kestrova;

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: kestrova-shot picture.png  (in the installation's program directory)\n");
        return 2;
    }
    QApplication app(argc, argv);
    const QString picture = QDir::current().absoluteFilePath(QString::fromLocal8Bit(argv[1]));

    FrontEndProgram program;
    if (program.Open() != 0)
        return 1;
    FrontEnd& window = program.Window();
    window.resize(900, 560);
    window.move(0, 0);
    window.show();

    QTimer::singleShot(600, &window, [&] {
        auto* setup = window.findChild<QMenu*>(QStringLiteral("SetupMenu"));
        window.menuBar()->setActiveAction(setup->menuAction());
    });
    QTimer::singleShot(1200, &window, [&] {
        auto* setup = window.findChild<QMenu*>(QStringLiteral("SetupMenu"));
        setup->setActiveAction(window.Entry(QStringLiteral("DataMenuMain")));
        window.findChild<QMenu*>(QStringLiteral("DataMenuMain"))
            ->popup(setup->mapToGlobal(
                setup->actionGeometry(window.Entry(QStringLiteral("DataMenuMain"))).topRight()));
    });
    int status = 1;
    QTimer::singleShot(2000, &window, [&] {
        QRect area = window.frameGeometry();
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->isVisible())
                area |= w->frameGeometry();
        status = window.screen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()).save(picture)
                     ? 0
                     : 1;
        QApplication::exit(status);
    });
    QApplication::exec();
    return status;
}
