#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// The machine load: the machine's record of `Machine.lst`, its paths, its working directory
// tree (seeded where missing), its options from the "msr", "mch" and "prm" files, the nesting
// check, its type from the "cms" file, and the data directory made current.
void LoadMachine(Session& session, Int16 machineNumber, const QString& directory);

// Environment load, then machine load with the current machine and directory. Returns true
// when the machine number changed, for the caller to reload what belongs to the machine
// (the last-file memory, the background receive).
[[nodiscard]] bool ReloadEnvironment(Session& session);

} // namespace kestrova
