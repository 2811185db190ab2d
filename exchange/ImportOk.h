#pragma once

#include "Frontend/Session.h"

#include <QStringList>

namespace kestrova {

// What the import half of the external form holds when OK is pressed.
struct ImportRequest {
    int mode = 1;            // 1 and 2 files, 5 sub-routines; anything else does nothing
    QString targetDirectory; // the target combo's text: a data directory or a drive
    QString source;          // the folder list's path
    QStringList selected;    // the chosen file names, in list order
};

enum class ImportOutcome { Done, Stay, FocusTarget, FocusDrive };

// Imports the selected files into the target data directory (made the current one first), or
// the selected sub-routines into the suite's sub-routine directory: the checks, the question,
// the drive check with one retry, each file, the count report.
[[nodiscard]] ImportOutcome ImportOk_Click(Session& session, const ImportRequest& request);

// The source directory of the last import, offered when the form opens again.
[[nodiscard]] QString& LastImportSource();

} // namespace kestrova
