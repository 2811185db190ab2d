#pragma once

#include "Frontend/Session.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace kestrova {

// A received program about to take the place of the stored one of its name. Made just before
// the replacement: the stored program is kept in the history as received on the port, and its
// text is remembered, so that the transfer log and the list of received programs can tell a
// replacement with changes from the same text received again.
class ReceivedOver {
public:
    ReceivedOver(Session& session, const QString& target, int port);

    // What the log line and the list entry add once the received text is in place:
    // " (replaced, 3 lines changed)", " (unchanged)", or nothing where no program was replaced.
    [[nodiscard]] QString Told() const;

private:
    Session& m_session;
    QString m_target;
    std::optional<QByteArray> m_old;
};

} // namespace kestrova
