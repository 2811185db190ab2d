#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// Reads the five lines of "Kestrova.cfg" (by its bare name, from the current directory) into
// `SystemPath`, `SetupPath`, `RootPath`, `MachineNumber` and `CurrentDir`. A missing file is
// "File not found", a file of fewer than five lines "Input past end of file".
void ReadKestrovaCfg(Session& session);

// Rewrites `ProgramPath` + "Kestrova.cfg" from the environment, ended by the end marker.
void WriteKestrovaCfg(Session& session);

} // namespace kestrova
