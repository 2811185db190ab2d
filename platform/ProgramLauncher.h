#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kestrova {

// A program the system started and may wait for: a host process, or a window of the system's
// own that stands in for a program this host cannot run. It is polled, never blocked on.
// A program nobody holds any more is left to run to its end, never killed.
class StartedProgram {
public:
    virtual ~StartedProgram() = default;
    [[nodiscard]] virtual bool Running() const = 0;
};

// Starts the suite's programs (the sibling packages, the settings manager, the backup command,
// the editor and the PDF reader) from their system paths. A host file that is executable runs
// directly; an ".exe" that is not runs through wine when wine is installed. A start that cannot
// happen says why in one line on standard error and gives nothing, so that callers that stay
// silent about it can.
//
// Programs run in the current directory of the installation, with the front end's standard
// input and output, as the suite's executables expect.
class ProgramLauncher {
public:
    // Opens a file (a system path) in the system's own text editor window.
    using EditorWindow = std::function<std::unique_ptr<StartedProgram>(const QString& file)>;

    explicit ProgramLauncher(const FileSystem& files) : m_files(files) {}

    // The editor that serves for "Notepad.exe" and for any editor that cannot start here.
    void SetBuiltInEditor(EditorWindow editor) { m_builtInEditor = std::move(editor); }

    // Starts program with files (system paths, handed over as the host names them).
    [[nodiscard]] std::unique_ptr<StartedProgram> Start(const QString& program,
                                                        const QStringList& files = {});
    // The same without keeping hold of the program: it runs on after the front end is gone.
    [[nodiscard]] bool StartDetached(const QString& program, const QStringList& files = {});
    // A command line as a person typed it: the first word is the program, the rest its arguments.
    [[nodiscard]] std::unique_ptr<StartedProgram> StartCommandLine(const QString& commandLine);
    // The editor command of "Editor.cfg" ("Notepad.exe ", "C:\Tools\Edit.exe ") on a file.
    [[nodiscard]] std::unique_ptr<StartedProgram> StartEditor(const QString& command, const QString& file);

private:
    struct HostCommand {
        QString program;
        QStringList arguments;
    };
    // The host command for a program and its arguments; empty, with a line on standard error,
    // when it cannot start here.
    [[nodiscard]] std::optional<HostCommand> Plan(const QString& program, QStringList arguments) const;
    [[nodiscard]] std::unique_ptr<StartedProgram> Run(const HostCommand& command, const QString& program);
    [[nodiscard]] QStringList HostFiles(const QStringList& files) const;

    const FileSystem& m_files;
    EditorWindow m_builtInEditor;
};

// Lets pending events run: the window repaints, timers fire, serial events arrive.
void LetPendingEventsRun();
// Lets events run for a while, sleeping in the event loop rather than spinning. False when the
// event loop no longer runs because the program is ending.
[[nodiscard]] bool PauseInEventLoop(std::chrono::milliseconds pause);
// Waits until the program has ended, polling it and letting pending events run in between.
// False when the front end is ending first: the wait is given up and the program runs on.
[[nodiscard]] bool WaitFor(const StartedProgram& program);

} // namespace kestrova
