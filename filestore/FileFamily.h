#pragma once

#include "Frontend/Session.h"
#include "filestore/HistoryOperations.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// The extensions, in lower case, of the members that belong to a program rather than to its
// drawing: the program, its information, its report and its set-up sheet.
[[nodiscard]] const QStringList& ProgramMemberExtensions();
[[nodiscard]] bool IsProgramMember(const QString& lowerExtension);

// A drawing or an NC program is never one file: every file of a directory whose base name is
// the same (X.drw, X.dxf, X.prg, X.inf, X without extension, ...) belongs to one family, and the
// family is copied, moved, renamed and deleted as a whole. "X.b.drw" is not of family X: its
// base name is "X.b". Names are found ignoring letter case ("BRACKET.PRG" beside "Bracket.inf"
// is one family).
//
// The kind says which part of the family is meant: 1 drawings, 2 programs, 3 both; any other
// kind touches nothing. Directories are full system paths ending in "\" ("C:\Jobs\PUNCH1\Parts\").
//
// What goes where:
// - kind 1: every member but the program members ("prg", "inf", "rpt", "stp"), the file without
//   extension and the machine-bound "usr" and "seq"; those follow the drawing only when the
//   destination lies within the current machine. The extension is compared AS SPELLED here, so
//   "X.PRG" goes like any drawing member; this is deliberate.
// - kind 2: exactly X.prg, X.inf, X.rpt where present, and X.stp only within the machine.
// - kind 3: every member, but "usr", "seq" and "stp" only within the machine.
// Within the machine: the destination path, upper-cased, contains `MachineDir` upper-cased (a
// plain substring test, kept as the suite has it).

// Copies family sourceName of sourceDir to destinationName in destinationDir. When the
// destination family exists already (its ".drw" for kind 1, ".prg" for kind 2, either for 3),
// asks "Overwrite It ?" (No the default); on No returns 0 and touches nothing. Otherwise the old
// destination family is deleted (DeleteFamily) and the members are copied, each one whole.
// Returns 1 when copied. The answer is kept in `LastAnswer` (6 Yes, 7 No; a copy that needed no
// question counts as Yes).
// A family copied onto itself (the same directory, the same name in any letter case) is left as
// it is and gives 0 without a question: the old destination would be the source.
// A copy that fails (disk full, drive pulled out, source vanished) raises the error of the host
// file layer, which names the file and the reason; the members copied so far are removed again,
// so a family arrives whole or not at all, and the source is never touched.
[[nodiscard]] int CopyFamily(Session& session, const QString& sourceDir, const QString& sourceName,
                             const QString& destinationDir, const QString& destinationName, int kind);

// As CopyFamily, then the source files that were copied are deleted. A source file is deleted
// only once every copy of the family is complete and closed: when a copy fails the source
// family stays whole and the error is raised as for the copy. Members that stay within the
// machine (see above) are not copied to another machine and so stay at the source: such a
// move is partial, deliberately. Renaming is a move within one directory.
[[nodiscard]] int MoveFamily(Session& session, const QString& sourceDir, const QString& sourceName,
                             const QString& destinationDir, const QString& destinationName, int kind);

// Deletes the members of a family: kind 1 every member but the program members, the file
// without extension and the nest file ("usr" and "seq" go with the drawing; the extension as
// spelled); kind 2 X.prg, X.inf, X.rpt and X.stp; kind 3 every member but the nest file. No
// question, no result. A nest file always survives. The program and drawing that go are kept in
// the history first, under operation: "deleted", or what is about to take their place.
// Copies and moves keep the destination's old program and drawing the same way.
void DeleteFamily(Session& session, const QString& directory, const QString& name, int kind,
                  const QString& operation = Deleted);

// The files of one family as they lie in the directory: names whose base name (everything
// before the last ".") is the family name in any letter case.
[[nodiscard]] QStringList FamilyMembers(const FileSystem& files, const QString& directory,
                                        const QString& name);

// Whether two directories are one place on the host, however they are spelled.
[[nodiscard]] bool SamePlace(const FileSystem& files, const QString& a, const QString& b);

// Whether a destination directory lies within the current machine: its path, upper-cased,
// contains `MachineDir` upper-cased.
[[nodiscard]] bool WithinMachine(const GlobalSettings& g, const QString& destinationDir);

} // namespace kestrova
