#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// Makes a data directory of the current machine (or a ready drive, "A:") the current one:
// a missing directory or an unusable name falls back to the first entry of the machine
// directory. Sets `CurrentDir` and `CurrentPath` and rewrites "Kestrova.cfg". Never fails on
// the name; with nothing usable the current directory is "".
void SelectDirectory(Session& session, const QString& name);

} // namespace kestrova
