#include "Frontend/FrontEnd.h"
#include "Frontend/QtMessageService.h"
#include "Frontend/StartUp.h"

#include <QApplication>
#include <QDir>

using namespace kestrova;

// Started in the directory that holds "Kestrova.cfg" and "Devices.cfg".
int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kestrova"));

    FileSystem files = FileSystem::AtStartDirectory(QDir::currentPath());
    QtMessageService messages;
    GlobalSettings settings;
    Session session{settings, files, messages};

    if (const int status = LoadAtStartUp(session); status != 0)
        return status;

    FrontEnd window(session);
    messages.SetParent(&window);
    window.show();
    return QApplication::exec();
}
