#pragma once

#include <QString>

namespace kestrova {

// Whether a host directory is a program directory: it holds "Kestrova.cfg" (any letter case).
[[nodiscard]] bool HoldsInstallation(const QString& hostDir);

// Where the demo installation the program is delivered with lies, and the stand-in program its
// sibling packages start: beside an installed program under share/kestrova and lib/kestrova,
// or in the source tree for a program run from its build directory. Empty when not found.
[[nodiscard]] QString DeliveredDemoDirectory();
[[nodiscard]] QString DeliveredStandIn();

// Lays the demo installation out below targetHostDir: the suite on drive C: (<target>/c), an
// empty floppy (A:, <target>/floppy) and stick (E:, <target>/usb), the stand-in beside the demo's
// sibling packages, and the device map in the program directory. Files already there are kept as
// they are, so a demo that has been worked in is never overwritten. Returns the host program
// directory (<target>/c/Kestrova). A file that cannot be made is an error naming it.
QString LayOutDemoInstallation(const QString& demoHostDir, const QString& standInHostPath,
                               const QString& targetHostDir);

} // namespace kestrova
