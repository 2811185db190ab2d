#include "filestore/MachineSelection.h"

#include "Frontend/Reload.h"
#include "filestore/LastFile.h"
#include "platform/Blanks.h"
#include "settings/KestrovaCfg.h"

namespace kestrova {

namespace {

// "Kestrova.cfg" with another machine number; the record keeps the number it has until the
// reload reads the file, so that the reload sees the machine change.
void WriteMachineNumber(Session& session, Int16 number) {
    GlobalSettings& g = session.settings;
    const Int16 loaded = g.MachineNumber;
    g.MachineNumber = number;
    try {
        WriteKestrovaCfg(session);
    } catch (...) {
        g.MachineNumber = loaded;
        throw;
    }
    g.MachineNumber = loaded;
}

} // namespace

QList<MachineRow> MachineRows(const GlobalSettings& g) {
    QList<MachineRow> rows;
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n) {
        const MachineRecord& m = g.MachineTable.at(n);
        rows.append({int(m.number), TrimBlanks(m.field1), TrimBlanks(m.field2)});
    }
    return rows;
}

bool SelectMachine(Session& session, MainWindowFrame& frame, int number) {
    GlobalSettings& g = session.settings;
    const Int16 previous = g.MachineNumber;
    if (number == previous)
        return false;
    WriteMachineNumber(session, Int16::From(number));
    ClearLastFile(session);
    try {
        ReloadAfterChange(session, frame);
    } catch (const SystemError&) {
        g.MachineNumber = previous;
        WriteKestrovaCfg(session);
        ReloadAfterChange(session, frame);
        throw;
    }
    return true;
}

} // namespace kestrova
