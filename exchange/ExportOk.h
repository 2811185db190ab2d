#pragma once

#include "Frontend/Session.h"
#include "exchange/ExportSettings.h"

#include <QStringList>

namespace kestrova {

// What the export half of the external form holds when OK is pressed.
struct ExportRequest {
    QStringList selected;    // the chosen names, in list order
    bool singleList = false; // the one-file list, with its new name
    QString newName;         // the name box as typed
    QString target;          // the folder list's path
    int mode = 2;            // 1 drawings, 2 programs, 3 both
    ExportFormat format = ExportFormat::Normal;
    QString extension;
};

// Where the form goes after OK.
enum class ExportOutcome { Exported, Stay, FocusName, FocusDrive };

// The export of the selected files from the current data directory: the checks, the question,
// the drive check with one retry, ExportFile for each file in list order, the count report, then
// the machine's export settings written with this target.
[[nodiscard]] ExportOutcome ExportOk_Click(Session& session, const ExportRequest& request);

} // namespace kestrova
