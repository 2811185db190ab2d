#include "comms/TransferLog.h"

#include "platform/SerialLine.h"
#include "platform/TextFile.h"

#include <QDateTime>
#include <QDebug>

namespace kestrova {

QString TransferLogLine(const TransferRecord& record, const QString& host) {
    const QString port =
        host.isEmpty() ? PortName(record.Port) : PortName(record.Port) + QStringLiteral(" at ") + host;
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) +
           QStringLiteral("  ") + record.Machine + QStringLiteral("  ") + port + QStringLiteral("  ") +
           record.Program + QStringLiteral("  ") + QString::number(record.Bytes) +
           QStringLiteral(" bytes  ") + record.Result;
}

void AppendTransferLog(Session& session, const TransferRecord& record) {
    const QString path = session.settings.ProgramPath + TransferLogName;
    try {
        // One line, its line end included, in one write at the end of the file.
        TextWriter log(session.files, path, TextWriter::Mode::Append);
        const QString host = session.files.Devices().PortHost(record.Port);
        log.WriteBytes(ToBytes(TransferLogLine(record, host) + QStringLiteral("\r\n")));
        log.Close();
    } catch (const SystemError& e) {
        qWarning().noquote()
            << QStringLiteral("Kestrova: the transfer log was not written: %1").arg(e.text());
    }
}

QStringList LastTransferLogLines(Session& session, int count) {
    const QString path = session.settings.ProgramPath + TransferLogName;
    if (!session.files.IsFile(path))
        return {};
    QStringList lines = ReadAllLines(session.files, path);
    lines.removeAll(QString());
    return lines.mid(qMax<qsizetype>(0, lines.size() - count));
}

} // namespace kestrova
