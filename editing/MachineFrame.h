#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// What the program view needs of a machine: its travels, the frame drawn where a program names
// no sheet, and how it measures and works.
struct MachineFrame {
    float xTravel = 0; // 0 when the machine file does not say
    float yTravel = 0;
    bool imperial = false;
    bool punching = true;
};

// The frame of the machine whose directory name is machineDir: the travels from the lines
// "X Travel : 2500" and "Y Travel : 1250" of its machine file ("mch"), the units and the kind
// of machine as the current machine's settings have them. A machine file that is missing or
// cannot be read gives no travels; nothing is reported, the drawing is framed by itself.
[[nodiscard]] MachineFrame ReadMachineFrame(const Session& session, const QString& machineDir);

} // namespace kestrova
