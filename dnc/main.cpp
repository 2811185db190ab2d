// kestrova-dnc [PROGRAM_DIRECTORY]: the DNC service of the installation started in the directory
// that holds "Kestrova.cfg" and "Devices.cfg" (by default the current one). It serves every
// machine "Dnc.cfg" names until SIGTERM or SIGINT; SIGHUP reads the settings again.
#include "ServiceMessages.h"
#include "comms/DncService.h"
#include "platform/HostSignal.h"
#include "platform/MappedSerialLine.h"
#include "platform/ServiceManager.h"
#include "platform/TerminationSignals.h"

#include <QCoreApplication>
#include <QDir>
#include <csignal>
#include <cstdio>

using namespace kestrova;

namespace {

// A settings file that cannot serve ends the service with this status.
constexpr int SettingsRefused = 2;

QString Served(const DncService& service) {
    QStringList ports;
    for (const auto& [port, line] : service.Lines())
        ports << PortName(port) + QStringLiteral(" for ") + line->Setup().Receive.MachineDir;
    return QStringLiteral("serving ") +
           (ports.isEmpty() ? QStringLiteral("no line") : ports.join(QStringLiteral(", ")));
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kestrova-dnc"));
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString programDir = arguments.isEmpty() ? QDir::currentPath() : arguments.first();
    if (!QDir::setCurrent(programDir)) {
        std::fprintf(stderr, "kestrova-dnc: %s: no such directory\n", qPrintable(programDir));
        return SettingsRefused;
    }

    FileSystem files = FileSystem::AtStartDirectory(QDir::currentPath());
    GlobalSettings settings;
    ServiceMessages messages;
    Session session{settings, files, messages};
    const DeviceMap devices = files.Devices();
    DncService service(session, [&devices](int) { return std::make_unique<MappedSerialLine>(devices); });
    try {
        service.Start();
    } catch (const DncConfigError& e) {
        std::fprintf(stderr, "kestrova-dnc: %s\n", qPrintable(e.Text()));
        return SettingsRefused;
    }
    std::fprintf(stderr, "kestrova-dnc: %s\n", qPrintable(Served(service)));
    ServiceManager::Ready(Served(service));

    // Asked to end: what is on its way is kept, and the service leaves at once.
    const TerminationSignals termination([&] {
        ServiceManager::Stopping();
        service.Stop();
        QCoreApplication::quit();
    });
    const HostSignal reload(SIGHUP, [&] {
        ServiceManager::Reloading();
        try {
            service.Reload();
            std::fprintf(stderr, "kestrova-dnc: settings read again; %s\n", qPrintable(Served(service)));
        } catch (const DncConfigError& e) {
            std::fprintf(stderr, "kestrova-dnc: %s; the lines serve on as they were\n", qPrintable(e.Text()));
        }
        ServiceManager::Ready(Served(service));
    });
    return QCoreApplication::exec();
}
