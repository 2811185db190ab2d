#pragma once

#include "Frontend/Session.h"
#include "platform/Int16.h"

#include <QString>

namespace kestrova {

// The kinds an export carries, the sum of the form's two boxes: "Drawings" 1, "Programs" 2.
enum ExportMode { ExportDrawings = 1, ExportPrograms = 2, ExportBoth = 3 };

// The name with every blank removed, then its first 8 characters: "MY PART 12" gives "MYPART12".
[[nodiscard]] QString EightCharName(const QString& name);

// The smallest number n from 1 up for which no file of the directory is named n or n.anything.
[[nodiscard]] Int16 FirstFreeNumber(const FileSystem& files, const QString& directory);

// Exports one drawing or program of sourceDir under newName to target (both end in "\"):
// - drawings: the drawing family without its program members and files without extension;
//   "usr" and "seq" only within the current machine;
// - programs: name.prg alone, as newName + "." + extension;
// - both: the whole family (see CopyFamily);
// - lookup (programs only, whatever the mode): the program stored under a number, its ".inf",
//   ".rpt" and (within the machine) ".stp" beside it, and the table "Work.lkp" of the target
//   brought up to date.
// With eightChar the new name is first shortened by EightCharName. An existing target asks
// "Overwrite It ?"; on No the result is 0 and nothing is touched, otherwise 1. A family is never
// exported onto itself (0).
[[nodiscard]] int ExportFile(Session& session, const QString& sourceDir, const QString& name,
                             const QString& target, const QString& newName, int mode, bool lookup,
                             bool eightChar, const QString& extension);

} // namespace kestrova
