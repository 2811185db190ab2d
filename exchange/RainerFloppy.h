#pragma once

#include "Frontend/Session.h"
#include "filestore/ListModel.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace kestrova {

// The exchange of programs with a Rainer punch press on the floppy in drive A:, in the layout of
// RainerIndex.h. The operations of the Rainer form run from its OK button; the format runs from
// the menu. The variant is the machine's `RainerType`.

// Fills the list with the programs of the floppy's index: the name of each used slot whose
// program file is on the floppy, with the slot number as item data; the first one selected.
// Without a ready drive or an index the list stays empty, without a message.
void FillRainerList(Session& session, ListModel& list);

// Copies a floppy program into a directory as name.prg; an existing program asks "Overwrite It
// ?" and on Yes its family's program files are deleted first. 0 when declined; 1 otherwise, also
// when the floppy's file had vanished.
[[nodiscard]] int ImportRainerProgram(Session& session, const QString& source, const QString& directory,
                                      const QString& name);

// One entry of the form's program list: its text and its slot (the item data).
struct RainerChoice {
    QString text;
    int slot = 0;
};

// Where the Rainer form goes after OK.
enum class RainOutcome { StayOnList, Close };

// The form's three operations on the chosen programs, each with its question, the drive check,
// the work and the count report.
[[nodiscard]] RainOutcome RainerExport(Session& session, const QStringList& programs);
[[nodiscard]] RainOutcome RainerImport(Session& session, const QList<RainerChoice>& chosen);
[[nodiscard]] RainOutcome RainerDelete(Session& session, const QList<RainerChoice>& chosen);

// The menu's check before every Rainer entry: "Floppy Disk Not Ready !" with one retry. True
// when the drive is ready.
[[nodiscard]] bool FloppyReadyForMenu(Session& session);

// The menu's logical format: asks when the floppy holds programs, then deletes every other
// "*.PRG" of A:\ and replaces the index by a fresh one. The medium itself is never formatted.
void FormatRainerFloppy(Session& session);

} // namespace kestrova
