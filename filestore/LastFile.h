#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// The last drawing or program the operator worked with, kept in "Lastfile.lst" in the program
// directory (data directory, name without extension, end marker), so that the next form opens
// with it already chosen.

// Empties the memory: the file then holds only the end marker.
void ClearLastFile(Session& session);

// Remembers a file of a data directory of the current machine. Nothing is remembered when
// either text is empty, or when the directory is a drive ("A:"): such places come and go.
void RememberLastFile(Session& session, const QString& directory, const QString& name);

// The remembered file, when it still exists in the current machine's directory with the
// extension the kind asks for: 1 "drw", 2 "prg", 3 any. Otherwise the memory is emptied and the
// result is false. A memory never written counts as empty.
[[nodiscard]] bool RecallLastFile(Session& session, QString& directory, QString& name, int kind);

// The remembered file as a file of the current data directory, with its extension: the program
// ("X.prg") where there is one, else the drawing ("X.drw"). Empty when the memory holds none
// there.
[[nodiscard]] QString LastFileHere(Session& session);

} // namespace kestrova
