#include "Frontend/FrontEnd.h"
#include "Frontend/QtMessageService.h"
#include "Frontend/StartUp.h"
#include "Frontend/TextEditorWindow.h"
#include "platform/TerminationSignals.h"

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

    ProgramLauncher launcher(files);
    FrontEnd window(session, launcher);
    if (window.StartUpStatus() != 0)
        return window.StartUpStatus();
    launcher.SetBuiltInEditor(
        [&](const QString& file) { return TextEditorWindow::Open(files, messages, file, window); });
    messages.SetParent(&window);
    // Asked to end by the host, the front end closes the way the operator closes it.
    const TerminationSignals termination([&window] { window.close(); });
    window.show();
    return QApplication::exec();
}
