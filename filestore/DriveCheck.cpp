#include "filestore/DriveCheck.h"

#include "filestore/Names.h"

namespace kestrova {

bool DriveReadyOrRefused(Session& session, const QString& drive, const QString& refusal) {
    if (DriveExists(session.files, drive))
        return true;
    session.messages.Refuse(refusal);
    return false;
}

bool DriveReadyAfterRetry(Session& session, const QString& drive, const QString& refusal) {
    return DriveReadyOrRefused(session, drive, refusal) || DriveExists(session.files, drive);
}

} // namespace kestrova
