#include "Frontend/Reload.h"

#include "filestore/LastFile.h"
#include "settings/MachineLoad.h"

namespace kestrova {

void ReadLastFileMemory(Session& session) {
    QString directory;
    QString name;
    (void)RecallLastFile(session, directory, name, 3);
}

void ReloadAfterChange(Session& session, MainWindowFrame& frame) {
    const bool machineChanged = ReloadEnvironment(session);
    frame.ShowLogo();
    if (machineChanged) {
        // What was remembered is another machine's file.
        ClearLastFile(session);
        ReadLastFileMemory(session);
        frame.MachineChanged();
    }
    frame.MenuSetUp();
    frame.ShowStatus();
}

} // namespace kestrova
