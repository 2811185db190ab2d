#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

#include <QString>

namespace kestrova {

// The suite's sibling packages that the menu starts.
enum class Package {
    Drawing,
    Nesting,
    ProgramCreation,
    ReverseEngineering,
    ToolLibrary,
    StockManager,
    ShapesTooling
};

struct PackageInfo {
    QString entry;       // the menu entry that starts it
    QString executable;  // in the program directory
    QString unavailable; // the message when it is not installed
    bool mayChange;      // may change the machine or the directory: the environment is reloaded after it
};

[[nodiscard]] PackageInfo InfoOf(Package package);

// Starts a package from the program directory and waits for it with the window responsive and
// its menu entry disabled; afterwards reloads where the package may have changed the machine or
// the directory. A package that is not installed gives its message and nothing else; one that
// cannot start on this host changes nothing.
void StartPackage(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame, Package package);

} // namespace kestrova
