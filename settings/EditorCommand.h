#pragma once

#include "Frontend/Session.h"
#include "platform/ProgramLauncher.h"

#include <QString>
#include <memory>

namespace kestrova {

// The command that starts the text editor, from line 1 of "Editor.cfg": empty gives
// "Notepad.exe "; otherwise everything up to and including the first blank (whatever follows
// that blank is dropped), or the whole line followed by a blank. The file name is appended to it.
[[nodiscard]] QString EditorCommand(const QString& editorLine);

// Starts the operator's editor ("Editor.cfg" in the program directory) on a file, creating the
// file empty when it is missing. A missing "Editor.cfg" is "File not found". The editor is
// given back for a caller that waits for it; nothing when it could not start.
[[nodiscard]] std::unique_ptr<StartedProgram> StartEditorOn(Session& session, ProgramLauncher& launcher,
                                                            const QString& file);

} // namespace kestrova
