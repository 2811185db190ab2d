#include "comms/DncState.h"

#include "comms/DncService.h"
#include "platform/Blanks.h"
#include "platform/ProcessAlive.h"
#include "platform/SerialLine.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

const DncStateLine* DncState::Holding(int port) const {
    for (const DncStateLine& line : Lines)
        if (line.Port == port)
            return &line;
    return nullptr;
}

QString DncState::HeldText(int port) const {
    return PortName(port) + QStringLiteral(" Is Held By The DNC Service (Process %1) !").arg(Process);
}

std::optional<DncState> ReadDncState(const FileSystem& files, const QString& systemPath) {
    const QString path = systemPath + DncStateName;
    QStringList lines;
    try {
        if (!files.IsFile(path))
            return std::nullopt;
        lines = ReadAllLines(files, path);
    } catch (const SystemError&) {
        return std::nullopt; // being rewritten: the next look finds it whole
    }
    DncState state;
    for (const QString& line : lines) {
        if (line == EndMarker)
            break;
        const QStringList fields = line.split(u'\t');
        if (fields.size() >= 3 && fields.at(0).startsWith(QLatin1String("COM"))) {
            QString error = fields.size() > 3 ? fields.at(3) : QString();
            if (error.startsWith(DncLastErrorLabel))
                error.remove(0, DncLastErrorLabel.size());
            state.Lines << DncStateLine{fields.at(0).mid(3).toInt(), fields.at(1), fields.at(2), error};
        } else if (HasColon(line) && TrimBlanks(line.section(u':', 0, 0)) == QLatin1String("Process")) {
            state.Process = ValueOfLine(line).toLongLong();
        }
    }
    if (!ProcessAlive(state.Process))
        return std::nullopt;
    return state;
}

} // namespace kestrova
