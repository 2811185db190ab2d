#pragma once

#include <QString>

namespace kestrova {

// Tells the service manager (systemd, when it started the program with Type=notify) how the
// service stands: ready after start-up and after a reload, reloading, stopping, and a status
// line for "systemctl status". Without a service manager every call does nothing.
namespace ServiceManager {

void Ready(const QString& status);
void Reloading();
void Stopping();

} // namespace ServiceManager

} // namespace kestrova
