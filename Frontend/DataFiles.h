#pragma once

#include "Frontend/GlobalSettings.h"

#include <QList>
#include <QString>

namespace kestrova {

// One entry of the "Edit Data Files" menu and the settings file it opens.
struct DataFileEntry {
    QString submenu; // control name of the submenu that holds it ("" for items directly in the menu)
    QString entry;   // control name with index ("DataFileMachine2")
    QString caption;
    QString file; // full path of the file, for the current machine
};

// The entries of "Edit Data Files" in menu order, with the files they open for the current
// machine: front-end files in the program directory, machine files by the data file stem.
[[nodiscard]] QList<DataFileEntry> DataFileEntries(const GlobalSettings& g);

} // namespace kestrova
