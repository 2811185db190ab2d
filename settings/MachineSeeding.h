#pragma once

#include "Frontend/Session.h"

namespace kestrova {

// The nesting check of every machine load: sets `NestingState` (0 not installed, 1 off for this
// machine, 2 on) from "Nesting.cfg", "Kestrnst.exe" and the machine's "nst" file, which it
// writes with nesting off when it is missing or empty.
void CheckNesting(Session& session);

// Writes the machine's "xpt" file when it is missing: a copy of "Export.cfg", or the defaults.
void SeedExportSettings(Session& session);

// Writes the machine's stock list holding only the end marker when it is missing.
void SeedStockList(Session& session);

// The one labelled line the front end itself writes.
[[nodiscard]] QString NestingOffLine();

} // namespace kestrova
