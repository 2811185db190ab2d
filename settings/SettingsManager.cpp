#include "settings/SettingsManager.h"

#include "settings/SettingsFile.h"

namespace kestrova {

void StartSettingsManager(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame,
                          SettingsPage page) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    const bool material = page == SettingsPage::MaterialDatabase;

    files.ChangeDrive(g.ProgramPath.left(2));
    files.ChangeDirectory(g.ProgramPath);

    const QString executable = g.ProgramPath + g.SettingsManagerName + QStringLiteral(".exe");
    if (!files.Exists(executable)) {
        session.messages.Refuse(material ? QStringLiteral("Material Database Unavailable !")
                                         : QStringLiteral("Settings Manager Unavailable !"));
        return;
    }

    const QString request = g.ProgramPath + QStringLiteral("Settings.cfg");
    WriteSettingsFile(files, request, {QString::number(int(page))});
    if (const auto manager = launcher.Start(executable)) {
        const EntryDisabled running(frame, material ? QStringLiteral("MaterialDatabase")
                                                    : QStringLiteral("ProfileSettings"));
        // A front end that ends first leaves the request to the manager that still reads it.
        if (!WaitFor(*manager))
            return;
    }
    // The manager may have deleted its request itself; a request nobody read goes as well.
    if (files.Exists(request))
        files.Delete(request);
}

} // namespace kestrova
