#pragma once

#include "Frontend/Session.h"
#include "filestore/ListModel.h"

namespace kestrova {

// How a listing leaves its selection: 0 nothing, 1 the first entry whenever there is one,
// 2 the entry named by the caller (or nothing).
enum class Selection { None = 0, First = 1, Named = 2 };

// The data directories of a machine, in name order, "EXSUBS" never among them. The current
// name is listed only when keepCurrent is set. withDrives appends "A: [Floppy Disk]" and
// "B: [Floppy Disk]" where mapped, then every removable drive but the system's own as
// "E: [Removable Drive]", and leaves the program directory current.
void FillDirectoryList(Session& session, ListModel& list, const QString& machineDir,
                       const QString& currentName, bool withDrives, bool keepCurrent, Selection selection);

// The drawings and/or programs of a data directory as bare names in name order. type 1
// drawings, 2 programs, 3 both (a drawing and a program of one name give one line); any other
// type uses the pattern text, with the same joining of names when it lists several patterns.
void FillFileList(Session& session, ListModel& list, const QString& machineDir, const QString& directory,
                  const QString& nameToSelect, Selection selection, int type, const QString& patternText);

} // namespace kestrova
