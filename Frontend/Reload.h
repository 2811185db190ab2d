#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"

namespace kestrova {

// Reads the last-file memory, as start-up and a change of machine do: a remembered file that is
// gone is forgotten here rather than offered by the next form.
void ReadLastFileMemory(Session& session);

// After a program that may have changed the machine or the directory: the environment and the
// machine loaded again (with the last-file memory and the machine's own set-up when the machine
// changed), then the menu set-up and the status bar redone.
void ReloadAfterChange(Session& session, MainWindowFrame& frame);

} // namespace kestrova
