#pragma once

#include "Frontend/Session.h"

#include <QList>
#include <QString>

namespace kestrova {

// One row found by the file name search: a name without extension and the data directory
// that holds it.
struct SearchRow {
    QString name;
    QString directory;
    bool operator==(const SearchRow&) const = default;
};

// The machine directory a picker opened in this mode searches: the machine chosen for
// communications in mode 22, the current machine otherwise.
[[nodiscard]] QString SearchMachineDir(const GlobalSettings& g, int searchMode);

// The refusal for the criteria, or "" when the search may start: a text of 33 characters or
// more (after trimming), or neither drawings nor programs chosen.
[[nodiscard]] QString SearchRefusal(const QString& text, bool drawings, bool programs);

// Drawings and/or programs of every data directory of a machine ("EXSUBS" never) whose name
// holds the text anywhere, ignoring letter case. The text is plain: "*" and "?" are matched as
// they stand; an empty text matches every name. Directories and files come in name order; with
// both kinds, a drawing and a program of one name in one directory give one row.
[[nodiscard]] QList<SearchRow> SearchFiles(Session& session, const QString& machineDir, const QString& text,
                                           bool drawings, bool programs);

// The report when nothing was found: the text between quotes, or for an empty text the kinds
// that were looked for.
[[nodiscard]] QString NothingFoundMessage(const QString& text, bool drawings, bool programs);

// The two captions of the result page: the text between quotes (empty for an empty text), and
// the kinds (" Drawings ", " Programs ", " All Files ").
[[nodiscard]] QString SearchTextCaption(const QString& text);
[[nodiscard]] QString SearchKindCaption(bool drawings, bool programs);

} // namespace kestrova
