#pragma once

#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

namespace kestrova {

// Opens the front end's manual "Frontend.pdf" with the PDF reader. Without a reader, or without
// the manual, the operator is told which is missing.
void OpenManual(Session& session, ProgramLauncher& launcher);

} // namespace kestrova
