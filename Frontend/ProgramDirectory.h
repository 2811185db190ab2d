#pragma once

#include "platform/MessageService.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace kestrova {

// What the program needs to offer the demo installation when it finds none.
struct DemoOffer {
    QString demoHostDir;     // the delivered demo; empty when the program came without one
    QString standInHostPath; // the stand-in for the demo's sibling packages
    // Asks the operator for the directory to lay the demo out in; empty when cancelled.
    std::function<QString()> chooseDirectory;
};

// The program directory to start in: the one given on the command line
// (`kestrova [PROGRAM_DIRECTORY]`), else the current directory. When it holds no "Kestrova.cfg",
// one message says so, tells how to start the program on an installation, and offers to lay out
// the demo installation in a directory of the operator's choice; the demo's program directory
// is then the one to start in. Empty when there is nothing to start.
[[nodiscard]] QString ProgramDirectoryToStart(const QStringList& arguments, const QString& currentHostDir,
                                              MessageService& messages, const DemoOffer& demo);

} // namespace kestrova
