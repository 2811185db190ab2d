#include "comms/ReceivedHeader.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"

namespace kestrova {

void ReceivedHeader::TakeLine(int index, const QString& line) {
    static constexpr QChar markers[] = {MachineMarker, DirectoryMarker, ProgramMarker};
    QString* const values[] = {&Machine, &Directory, &Program};
    if (index < 0 || index > 2)
        return;
    const qsizetype at = line.indexOf(markers[index]);
    if (at < 0)
        return;
    Found = true;
    const QString value = TrimBlanks(line.mid(at + 1));
    *values[index] = AcceptableOutsideName(value) ? value : QString();
}

bool HoldsHeaderMarker(const QString& line) {
    return line.contains(MachineMarker) || line.contains(DirectoryMarker) || line.contains(ProgramMarker);
}

} // namespace kestrova
