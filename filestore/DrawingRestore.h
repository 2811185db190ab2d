#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// The drawing package leaves a copy of the last drawing it modified in its undo area, files
// "Restore." + extension under `RestoreStem`. The restore brings that drawing back under a name
// into a data directory of the current machine: the drawing itself ("drw") and its companions
// whose extension begins with "b"; no other undo file, deliberately.

// Whether the undo area holds a drawing to restore.
[[nodiscard]] bool RestorableDrawing(Session& session);

enum class RestoreOutcome { FocusName, FocusList, Stay, Done };

// OK of the restore form: the name (1 to 32 characters, not "Auto-Reposition" as spelled, which
// the drawing package keeps for itself) and the directory chosen ("" none). An existing drawing
// of that name is overwritten only after the operator says Yes. After a restore the directory
// is made current when it is another, and the drawing is remembered as the last file. Done
// means the form is to close (a restore, or nothing in the undo area to restore).
[[nodiscard]] RestoreOutcome RestoreDrawing(Session& session, const QString& name, const QString& directory);

} // namespace kestrova
