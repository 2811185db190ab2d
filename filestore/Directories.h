#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// The data directories of the current machine (the subdirectories of `RootPath` + `MachineDir`),
// as the directory form of the File menu changes, creates, renames and deletes them
// (`DirectoryOperation`: 1 change, 2 create, 3 rename, 4 delete). The directory in use is never
// offered for rename or delete, so it can be neither.

// Whether anything of that name, file or directory, is in the machine directory.
[[nodiscard]] bool DirectoryExists(Session& session, const QString& machineDir, const QString& name);

// What the directory form shows for an action.
struct DirectoryFormLayout {
    QString caption;
    QString listLabel; // over the list; "" when the list is not used
    QString nameLabel; // over the name box; "" when there is no box
    bool withDrives = false;
    bool selectFirst = false; // the list starts with its first entry chosen
};
[[nodiscard]] DirectoryFormLayout DirectoryFormLayoutOf(int action);

// Where the form goes after OK: back to the list or to the name box after a refusal, Stay after
// a declined question, Done when the action ran.
enum class DirectoryOkOutcome { FocusList, FocusBox, Stay, Done };

// OK of the directory form with the list's chosen entry ("" none) and the name box's text.
// Refusals beep and say what is wrong; rename and delete ask first, and a directory that still
// holds files is deleted only after a second question. Errors of the host (a directory that
// cannot be made or removed) pass to the caller, naming the directory and the reason.
[[nodiscard]] DirectoryOkOutcome DirectoryOk(Session& session, int action, const QString& chosen,
                                             const QString& typed);

} // namespace kestrova
