#pragma once

#include <QString>

namespace kestrova {

// How the Rainer form looks for its operation (`RainerOperation`: 1 Export, 2 Import, 3 Delete).
struct RainerFormSetup {
    QString caption;
    QString listLabel;
    QString directoryLabel;
    bool listsIndex = false;     // the list shows the floppy's index, else the directory's programs
    bool directoryShown = false; // the directory frame
    bool searchShown = false;
};

[[nodiscard]] inline RainerFormSetup RainerFormSetupFor(int operation) {
    switch (operation) {
    case 1:
        return {QStringLiteral("Rainer - Export"),
                QStringLiteral("Export Programs"),
                QStringLiteral("From Directory"),
                false,
                true,
                true};
    case 2:
        return {QStringLiteral("Rainer - Import"),
                QStringLiteral("Import Programs"),
                QStringLiteral("Into Directory"),
                true,
                true,
                false};
    default:
        return {QStringLiteral("Rainer - Delete"),
                QStringLiteral("Delete Programs"),
                QString(),
                true,
                false,
                false};
    }
}

} // namespace kestrova
