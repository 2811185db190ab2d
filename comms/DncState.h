#pragma once

#include "platform/FileSystem.h"

#include <QList>
#include <QString>
#include <optional>

namespace kestrova {

// One line as the DNC service publishes it.
struct DncStateLine {
    int Port = 0;
    QString Machine; // the machine's directory name
    QString State;   // "listening", "sending Bracket, 1234 of 5678 characters, ...", ...
    QString LastError;
};

// What "Dnc.state" in the system directory says of a running DNC service.
struct DncState {
    long long Process = 0;
    QList<DncStateLine> Lines;

    // The line of the port, if the service holds it.
    [[nodiscard]] const DncStateLine* Holding(int port) const;
    // "COM1 Is Held By The DNC Service (Process 1234) !": why a form cannot open the port.
    [[nodiscard]] QString HeldText(int port) const;
};

// The running service's state; nothing when no service runs (no file, or its process is gone: a
// service that was killed leaves its file behind, and holds nothing).
[[nodiscard]] std::optional<DncState> ReadDncState(const FileSystem& files, const QString& systemPath);

} // namespace kestrova
