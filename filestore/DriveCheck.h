#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// The refusal for a drive of the forms' drive and directory lists that is not ready.
inline const QString DiscNotReady = QStringLiteral("Disc Not Ready !");

// The check before work on a drive the operator chose (a name holding its letter and colon):
// where it is not ready, the refusal is shown after a beep. False then.
[[nodiscard]] bool DriveReadyOrRefused(Session& session, const QString& drive, const QString& refusal);

// The same, with the drive tested once more after the refusal: the operator may have put the
// disk in while the message was up. False when it is still not ready.
[[nodiscard]] bool DriveReadyAfterRetry(Session& session, const QString& drive, const QString& refusal);

} // namespace kestrova
