#include "settings/BackupCommand.h"

#include "settings/SettingsFile.h"

namespace kestrova {

void RunBackup(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame) {
    const QString command =
        ReadFirstLine(session.files, session.settings.ProgramPath + QStringLiteral("Backup.cfg"));
    if (command.isEmpty()) {
        session.messages.Refuse(QStringLiteral("No Backup Software Selected !"));
        return;
    }
    const auto backup = launcher.StartCommandLine(command);
    if (!backup)
        return;
    frame.HideWindow();
    if (!WaitFor(*backup))
        return; // the front end is ending: its window stays hidden
    frame.ShowWindow();
}

} // namespace kestrova
