#include "settings/SettingsFileEditing.h"

#include "platform/Blanks.h"
#include "settings/EditorCommand.h"

namespace kestrova {

void EditSettingsFile(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame,
                      const QString& file, bool wait, bool hideWindow) {
    const auto editor = StartEditorOn(session, launcher, TrimBlanks(file));
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
