#include "platform/NetLink.h"

namespace kestrova {

QString DeviceServerClosed() {
    return QStringLiteral("the device server closed the connection");
}

} // namespace kestrova
