#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"

#include <QList>
#include <QString>

namespace kestrova {

// One machine of `Machine.lst` as the machine selection offers it.
struct MachineRow {
    int number = 0;
    QString description;
    QString directory;
};

// The machines of the machine table in the order of `Machine.lst`.
[[nodiscard]] QList<MachineRow> MachineRows(const GlobalSettings& g);

// Makes machine `number` the current one: written to "Kestrova.cfg" with the current data
// directory (the machine load falls back to the machine's own when it has no such directory),
// the last-file memory emptied, then the environment and the machine loaded again, the
// machine's own set-up redone (background receive) through the frame, and the menus and the
// status bar set up for it. The machine current already changes nothing. When the new machine
// cannot be loaded (a data file missing), the previous machine is made current again and the
// error goes on to the caller, naming the file. Returns true when the machine changed.
bool SelectMachine(Session& session, MainWindowFrame& frame, int number);

} // namespace kestrova
