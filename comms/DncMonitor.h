#pragma once

#include "Frontend/Session.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace kestrova {

// One served line as the monitor shows it.
struct DncMonitorRow {
    QString Machine; // the machine's description, as the machine list gives it
    QString Port;    // "COM3"
    QString State;   // "listening", "receiving P100, 2048 characters", ...
    QString LastError;
};

// What the DNC monitor shows at one look: whether a service runs, each line it serves, and the
// last transfers of the log that the service and the window share.
struct DncMonitorView {
    QString Heading;
    QList<DncMonitorRow> Rows;
    QStringList LastTransfers;
};

// Reads "Dnc.state" and the transfer log; the view of a service that does not run says so.
[[nodiscard]] DncMonitorView LookAtDncService(Session& session, int transfers);

} // namespace kestrova
