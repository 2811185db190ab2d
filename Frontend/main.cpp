#include "Frontend/FrontEndProgram.h"
#include "platform/TerminationSignals.h"

#include <QApplication>

using namespace kestrova;

// Started in the directory that holds "Kestrova.cfg" and "Devices.cfg".
int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Kestrova"));

    FrontEndProgram program;
    if (const int status = program.Open(); status != 0)
        return status;
    FrontEnd& window = program.Window();
    // Asked to end by the host, the front end closes the way the operator closes it.
    const TerminationSignals termination([&window] { window.close(); });
    window.show();
    return QApplication::exec();
}
