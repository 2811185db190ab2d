#pragma once

#include "platform/Int16.h"

#include <QList>
#include <QString>

namespace kestrova {

// One record of `Machine.lst` or `Reverse.lst`: a number and four texts. In the tables,
// element 0 holds the count in its number.
struct MachineRecord {
    Int16 number;
    QString field1; // description
    QString field2; // file name: the machine's directory name
    QString field3; // settings manager base name
    QString field4; // kept for the packages
};

// The file a picker form handed back.
struct SearchResultRecord {
    Int16 flag;         // -1 when the operator chose an entry
    QString machineDir; // the machine directory searched
    QString name;       // without extension
    QString directory;  // the data directory that holds it
};

// Where the suite lives, which machine is current, what is installed and what kind of control
// the machine has; also the modes the menu hands to the forms and the answers the forms hand
// back. One record, owned by start-up and passed by reference to everything that reads it.
// Directory paths in it end in "\" once loaded.
struct GlobalSettings {
    // --- From "Kestrova.cfg" ----------------------------------------------------------------
    QString SystemPath;
    QString ProgramPath;
    QString ProgramDrive;
    QString SetupPath;
    QString RootPath;
    Int16 MachineNumber = 1;
    QString CurrentDir;

    // --- Derived paths ----------------------------------------------------------------------
    QString RevSubsPath;
    QString RestoreStem;
    QString MachineFileName;
    QString MachineDir;
    QString MachineDataStem;
    QString MaterialPath;
    QString StockListFile;
    QString FinishListFile;
    QString BendEquationFile;
    QString CurrentPath;
    QString ProfilesPath; // set for punching machines
    QString ShapesPath;

    // --- Installed packages -----------------------------------------------------------------
    bool CamPackagesPresent = false;
    bool ReversePresent = false;
    Int16 NestingState = 0;
    QString LogoPicturePath;
    QString AcrobatPath;
    QString ManualsPath;
    bool ManualsAvailable = false;

    // --- Machine and reverse lists ----------------------------------------------------------
    QList<MachineRecord> MachineTable{MachineRecord{}};
    Int16 MachineCount = 0;
    QList<MachineRecord> ReverseTable{MachineRecord{}};
    Int16 ReverseCount = 0;

    // --- The current machine ----------------------------------------------------------------
    QString MachineDescription;
    QString SettingsManagerName;
    QString MachineField4;

    // --- Machine options --------------------------------------------------------------------
    bool Imperial = false;
    bool ImperialCopy = false;
    bool PrmEnabled = false;
    Int16 MachineTypeCode = 0;
    bool PunchingMachine = false;
    bool ProfilingMachine = false;
    bool CombinationMachine = false;

    // --- Machine type -----------------------------------------------------------------------
    bool TerminalMode = false;
    Int16 IntermotionType = 0;
    Int16 RhodesModel = 0;
    bool WestinghouseProducer = false;
    bool Ge550Control = false;
    bool RaskinRt85 = false;
    bool ViprosMachine = false;
    Int16 RainerType = 0;
    bool IbhBehren = false;
    bool TrumfBoschTc = false;
    bool PullmaxMachine = false;
    bool LvdRs = false;

    // --- Modes set by the menu, answers handed back by the forms ----------------------------
    Int16 LastAnswer = 0; // 6 Yes, 7 No, 1 OK, 2 Cancel
    SearchResultRecord SearchResult;
    Int16 SearchMode = 0;
    Int16 DirectoryOperation = 0;
    Int16 FileOperation = 0;
    Int16 EditOperation = 0;
    Int16 RainerOperation = 0;
    Int16 ImportMode = 0;
    Int16 ReceiveOperation = 0;
    QString CommsMachineDir;
    QString CommsDirectory;
    Int16 KeyFilterMode = 0;
};

// A machine data file: the data file stem followed by its three-letter extension ("msr").
[[nodiscard]] inline QString MachineFile(const GlobalSettings& g, const QString& extension) {
    return g.MachineDataStem + extension;
}

} // namespace kestrova
