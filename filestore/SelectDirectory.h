#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// Makes a data directory of the current machine (or a ready drive, "A:") the current one:
// a missing directory or an unusable name falls back to the first entry of the machine
// directory. Rewrites "Kestrova.cfg" and sets `CurrentDir` and `CurrentPath`; when the rewrite
// fails, both keep the directory the file still names. Never fails on the name; with nothing
// usable the current directory is "".
void SelectDirectory(Session& session, const QString& name);

} // namespace kestrova
