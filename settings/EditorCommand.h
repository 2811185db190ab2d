#pragma once

#include <QString>

namespace kestrova {

// The command that starts the text editor, from line 1 of "Editor.cfg": empty gives
// "Notepad.exe "; otherwise everything up to and including the first blank (whatever follows
// that blank is dropped), or the whole line followed by a blank. The file name is appended to it.
[[nodiscard]] QString EditorCommand(const QString& editorLine);

} // namespace kestrova
