#pragma once

#include "Frontend/Session.h"
#include "editing/ProgramRewrite.h"
#include "platform/Int16.h"

#include <QString>

namespace kestrova {

// The three rewrites of an NC program (a full path: directory, name, ".prg"). Each streams the
// program line by line through its own temporary file in the program directory of the suite
// ("Renumber.tmp", "Numbers.tmp", "Spaces.tmp"), then puts it in the program's place. A failure
// raises RewriteError, with the program either as it was or its new text in the temporary file.

// Every block gets the N-word of a running number from start on, advanced by increment after
// each line; width pads the digits with "0" (0: no padding). Blank lines at the head go; a
// first line starting with "%" or "O" stays as it is. The number is 16-bit: past 32767 the
// rewrite fails with "Overflow" and the program stays as it was.
void RenumberProgram(Session& session, const QString& path, Int16 start, Int16 increment, int width,
                     const RewriteProgress& progress = {});

// The block number (any run of "N", "n" and digits) goes from the start of every line.
void StripNumbers(Session& session, const QString& path, const RewriteProgress& progress = {});

// Every blank goes from every line; lines left empty go too.
void RemoveSpaces(Session& session, const QString& path, const RewriteProgress& progress = {});

} // namespace kestrova
