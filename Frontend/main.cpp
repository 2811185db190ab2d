#include "Frontend/FrontEndProgram.h"
#include "Frontend/ProgramDirectory.h"
#include "platform/DemoInstallation.h"
#include "platform/TerminationSignals.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <cstdio>

using namespace kestrova;

namespace {

// `kestrova --lay-out-demo DIRECTORY`: lays the demo installation out and prints its program
// directory, for the demo script.
int LayOutDemo(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    try {
        const QString dir = LayOutDemoInstallation(DeliveredDemoDirectory(), DeliveredStandIn(),
                                                   QString::fromLocal8Bit(argv[2]));
        std::printf("%s\n", qPrintable(dir));
        return 0;
    } catch (const SystemError& error) {
        std::fprintf(stderr, "kestrova: %s\n", qPrintable(error.text()));
        return 1;
    }
}

} // namespace

// kestrova [PROGRAM_DIRECTORY]: the directory that holds "Kestrova.cfg" and "Devices.cfg",
// by default the current one.
int main(int argc, char* argv[]) {
    if (argc == 3 && qstrcmp(argv[1], "--lay-out-demo") == 0)
        return LayOutDemo(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kestrova"));

    QString programDir;
    {
        QtMessageService messages;
        const DemoOffer demo{DeliveredDemoDirectory(), DeliveredStandIn(), [] {
                                 return QFileDialog::getExistingDirectory(
                                     nullptr, QStringLiteral("Lay Out The Demo Installation In"),
                                     QDir::homePath());
                             }};
        programDir =
            ProgramDirectoryToStart(QApplication::arguments().mid(1), QDir::currentPath(), messages, demo);
    }
    if (programDir.isEmpty())
        return 1;
    // The packages and the editor are started from here, as from the program directory.
    QDir::setCurrent(programDir);

    FrontEndProgram program(programDir);
    if (const int status = program.Open(); status != 0)
        return status;
    FrontEnd& window = program.Window();
    // Asked to end by the host, the front end closes the way the operator closes it.
    const TerminationSignals termination([&window] { window.close(); });
    window.show();
    return QApplication::exec();
}
