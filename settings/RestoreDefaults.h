#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"

#include <QStringList>

namespace kestrova {

// The machine data files that "Restore Defaults" puts back when the CAM packages are installed,
// in the order it copies them. The nesting and export settings are not among them: those the
// operator keeps.
[[nodiscard]] const QStringList& RestoredExtensions();

// After the operator's OK, puts the current machine's data files back to the delivered copies
// in "Data\Default\": the communication settings always, the rest only with the CAM packages.
// A default that is missing leaves the machine's file as it is. Nothing is reloaded: the
// restored values count from the next reload or start.
void RestoreDefaults(Session& session, MainWindowFrame& frame);

} // namespace kestrova
