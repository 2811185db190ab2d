#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

namespace kestrova {

// The pages of the machine's settings manager that the menu opens.
enum class SettingsPage { MaterialDatabase = 1, ProfileSettings = 7 };

// Starts the current machine's settings manager on a page: "Settings.cfg" tells it which, the
// front end waits for it with the page's menu entry disabled, and "Settings.cfg" is gone
// afterwards whether the manager deleted it or not.
void StartSettingsManager(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame,
                          SettingsPage page);

} // namespace kestrova
