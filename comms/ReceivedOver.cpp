#include "comms/ReceivedOver.h"

#include "editing/ProgramDiff.h"
#include "filestore/HistoryOperations.h"
#include "filestore/ProgramHistory.h"
#include "platform/TextFile.h"

namespace kestrova {

ReceivedOver::ReceivedOver(Session& session, const QString& target, int port)
    : m_session(session), m_target(target) {
    if (!session.files.IsFile(target))
        return;
    try {
        m_old = ReadAllBytes(session.files, target);
    } catch (const SystemError&) {
        // A stored text that cannot be read is replaced all the same; it is only not compared.
    }
    KeepPreviousVersion(session, target, ReceivedOn(port));
}

QString ReceivedOver::Told() const {
    if (!m_old)
        return {};
    QByteArray now;
    try {
        now = ReadAllBytes(m_session.files, m_target);
    } catch (const SystemError&) {
        return {};
    }
    // Lines are compared without their ends: a text the control sends back with other line
    // ends is the same program.
    const int lines = now == *m_old ? 0 : ProgramDiff(*m_old, now).Differences();
    if (lines == 0)
        return QStringLiteral(" (unchanged)");
    return QStringLiteral(" (replaced, %1 %2 changed)").arg(lines).arg(lines == 1 ? u"line" : u"lines");
}

} // namespace kestrova
