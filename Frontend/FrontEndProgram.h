#pragma once

#include "Frontend/FrontEnd.h"
#include "Frontend/QtMessageService.h"

#include <memory>

namespace kestrova {

// The front end as a program: the installation in the current directory, its message service
// on screen, the environment, the program launcher with the built-in editor, and the main
// window. kestrova, the documentation's picture and the start-up benchmark all open it the
// same way.
class FrontEndProgram {
public:
    // The installation whose program directory is programHostDir (default: the current one).
    explicit FrontEndProgram(const QString& programHostDir = {});
    ~FrontEndProgram();
    FrontEndProgram(const FrontEndProgram&) = delete;
    FrontEndProgram& operator=(const FrontEndProgram&) = delete;

    // Start-up: the environment and machine loads, then the main window. 0 when the window is
    // ready to show; otherwise the exit status, the error already shown.
    [[nodiscard]] int Open();
    [[nodiscard]] FrontEnd& Window() { return *m_window; }

private:
    FileSystem m_files;
    QtMessageService m_messages;
    GlobalSettings m_settings;
    Session m_session;
    ProgramLauncher m_launcher;
    std::unique_ptr<FrontEnd> m_window;
};

} // namespace kestrova
