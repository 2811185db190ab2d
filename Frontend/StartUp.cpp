#include "Frontend/StartUp.h"

#include "Frontend/Reload.h"
#include "settings/EnvironmentLoad.h"
#include "settings/MachineLoad.h"

namespace kestrova {

int LoadAtStartUp(Session& session) {
    try {
        LoadEnvironment(session);
        LoadMachine(session, session.settings.MachineNumber, session.settings.CurrentDir);
        // The tool, turret and material libraries are the packages' own; nothing to load here.
        ReadLastFileMemory(session);
    } catch (const SystemError& error) {
        session.messages.ShowError(error.text());
        return 1;
    }
    return 0;
}

} // namespace kestrova
