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

ReceivedHeader HeaderOfStart(const QByteArray& start) {
    ReceivedHeader header;
    qsizetype from = 0;
    for (int index = 0; index < 3; ++index) {
        const qsizetype end = start.indexOf('\n', from);
        if (end < 0)
            break;
        header.TakeLine(index, TrimBlanks(QString::fromLatin1(start.mid(from, end - from)).remove(u'\r')));
        from = end + 1;
    }
    return header;
}

bool HoldsHeaderMarker(const QString& line) {
    return line.contains(MachineMarker) || line.contains(DirectoryMarker) || line.contains(ProgramMarker);
}

} // namespace kestrova
