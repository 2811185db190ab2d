#include "editing/MachineFrame.h"

#include "platform/Errors.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

MachineFrame ReadMachineFrame(const Session& session, const QString& machineDir) {
    const GlobalSettings& g = session.settings;
    MachineFrame frame;
    frame.imperial = g.Imperial;
    frame.punching = g.PunchingMachine || !g.ProfilingMachine;
    try {
        LineReader mch(session.files,
                       g.SetupPath + QStringLiteral("Data\\") + machineDir + QStringLiteral(".mch"));
        while (!mch.AtEnd()) {
            const QString line = mch.ReadLine();
            if (line.trimmed() == EndMarker)
                break;
            const QString label = line.section(u':', 0, 0).trimmed();
            if (label.compare(QLatin1String("X Travel"), Qt::CaseInsensitive) == 0)
                frame.xTravel = float(LeadingNumber(ValueOfLine(line)));
            else if (label.compare(QLatin1String("Y Travel"), Qt::CaseInsensitive) == 0)
                frame.yTravel = float(LeadingNumber(ValueOfLine(line)));
        }
    } catch (const SystemError&) {
        return frame;
    }
    return frame;
}

} // namespace kestrova
