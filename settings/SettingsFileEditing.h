#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

namespace kestrova {

// Opens a settings file in the operator's text editor ("Editor.cfg"), creating it empty when
// it is missing. With wait, the front end waits for the editor, its window hidden meanwhile when
// hideWindow is set. A missing "Editor.cfg" is "File not found".
void EditSettingsFile(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame,
                      const QString& file, bool wait, bool hideWindow);

} // namespace kestrova
