#include "settings/SettingsFileEditing.h"

#include "platform/TextFile.h"
#include "settings/EditorCommand.h"
#include "settings/SettingsFile.h"

namespace kestrova {

void EditSettingsFile(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame,
                      const QString& file, bool wait, bool hideWindow) {
    FileSystem& files = session.files;
    const QString path = file.trimmed();
    if (!files.Exists(path)) {
        TextWriter empty(files, path, TextWriter::Mode::Create);
        empty.Close();
    }

    const QString command =
        EditorCommand(ReadFirstLine(files, session.settings.ProgramPath + QStringLiteral("Editor.cfg")));
    const auto editor = launcher.StartEditor(command, path);
    if (!editor || !wait)
        return;

    if (hideWindow)
        frame.HideWindow();
    LetPendingEventsRun();
    if (!WaitFor(*editor))
        return; // the front end is ending: its window stays hidden
    frame.ShowWindow();
    LetPendingEventsRun();
}

} // namespace kestrova
