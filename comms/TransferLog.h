#pragma once

#include "Frontend/Session.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// One transfer as the transfer log keeps it.
struct TransferRecord {
    QString Machine; // the machine's directory name
    int Port = 0;
    QString Program; // without extension
    qint64 Bytes = 0;
    QString Result; // "sent", "received", "aborted", "failed: <reason>"
};

// The file name of the transfer log, in the program directory.
inline const QString TransferLogName = QStringLiteral("Transfer.log");

// The log line of a record, stamped with the local date and time now:
// "2026-11-23 14:05:12  PUNCH25  COM1  Louvre  1234 bytes  sent"; a port on the network names its
// device server too: "COM5 at shop-ds1:4001".
[[nodiscard]] QString TransferLogLine(const TransferRecord& record, const QString& host = {});

// Appends the record's line (naming the port's device server from the session's device map) to "Transfer.log"
// with a single write, so that two programs sharing the directory cannot interleave half lines. A log that
// cannot be written never stops a transfer: the failure goes to standard error only.
void AppendTransferLog(Session& session, const TransferRecord& record);

// The last count lines of the log, oldest first; none when there is no log.
[[nodiscard]] QStringList LastTransferLogLines(Session& session, int count);

} // namespace kestrova
