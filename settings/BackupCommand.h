#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

namespace kestrova {

// Runs the operator's backup program, the command line of "Backup.cfg", and waits for it with
// the main window hidden. Without a command the operator is told that none is selected.
void RunBackup(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame);

} // namespace kestrova
