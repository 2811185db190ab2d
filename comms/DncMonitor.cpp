#include "comms/DncMonitor.h"

#include "comms/DncState.h"
#include "comms/TransferLog.h"
#include "platform/Blanks.h"
#include "platform/SerialLine.h"

namespace kestrova {

namespace {

QString MachineShown(const GlobalSettings& g, const QString& directory) {
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n) {
        const MachineRecord& record = g.MachineTable.at(n);
        if (TrimBlanks(record.field2).compare(directory, Qt::CaseInsensitive) == 0)
            return TrimBlanks(record.field1);
    }
    return directory;
}

} // namespace

DncMonitorView LookAtDncService(Session& session, int transfers) {
    DncMonitorView view;
    const std::optional<DncState> state = ReadDncState(session.files, session.settings.SystemPath);
    if (!state) {
        view.Heading = QStringLiteral("No DNC service is running: the lines are the window's own.");
    } else {
        view.Heading = QStringLiteral("The DNC service (process %1) serves %2 line%3.")
                           .arg(state->Process)
                           .arg(state->Lines.size())
                           .arg(state->Lines.size() == 1 ? QString() : QStringLiteral("s"));
        for (const DncStateLine& line : state->Lines)
            view.Rows << DncMonitorRow{MachineShown(session.settings, line.Machine), PortName(line.Port),
                                       line.State, line.LastError};
    }
    try {
        view.LastTransfers = LastTransferLogLines(session, transfers);
    } catch (const SystemError& e) {
        view.LastTransfers << e.text();
    }
    return view;
}

} // namespace kestrova
