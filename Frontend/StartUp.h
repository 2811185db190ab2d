#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// The caption of the main window.
inline const QString FrontEndCaption = QStringLiteral("Kestrova 32  (8.0)");

// Loads the environment and the current machine and reads the last-file memory, as the main
// window does when it opens.
// An error on the way (a missing or short "Kestrova.cfg", a broken machine list, a missing
// machine data file) is shown once, naming the file and the reason, and the result is the exit
// status 1; 0 when everything loaded.
[[nodiscard]] int LoadAtStartUp(Session& session);

} // namespace kestrova
