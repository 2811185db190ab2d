#include "platform/ServiceManager.h"

#ifdef KESTROVA_HAVE_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

namespace kestrova::ServiceManager {

namespace {

void Notify(const QString& state) {
#ifdef KESTROVA_HAVE_SYSTEMD
    (void)sd_notify(0, state.toUtf8().constData());
#else
    (void)state;
#endif
}

} // namespace

void Ready(const QString& status) {
    Notify(QStringLiteral("READY=1\nSTATUS=") + status);
}

void Reloading() {
    Notify(QStringLiteral("RELOADING=1"));
}

void Stopping() {
    Notify(QStringLiteral("STOPPING=1"));
}

} // namespace kestrova::ServiceManager
