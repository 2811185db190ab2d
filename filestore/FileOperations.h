#pragma once

#include "Frontend/Session.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// The five file actions of the File menu, numbered as its entries: 1 delete, 2 rename, 3 copy
// as, 4 move to, 5 copy to. Each works on whole families (FileFamily.h) of the current data
// directory, of the kind the operator ticked (1 drawings, 2 programs, 3 both).

// What the file form shows for an action.
struct FileFormLayout {
    QString caption;
    QString fileLabel;         // over the file list
    QString directoryLabel;    // "In Directory" / "From Directory": the current directory beside it
    QString nameLabel;         // "As" over the new-name box; "" when there is no such box
    QString destinationLabel;  // "To Directory" over the destination list; "" when there is none
    QString machineLabel;      // "For Machine" when there are several machines to choose from
    bool severalNames = false; // the file list takes more than one name
};
[[nodiscard]] FileFormLayout FileFormLayoutOf(int action, int machineCount);

// What the file form holds when OK is pressed.
struct FileChoice {
    int action = 0;
    int kind = 0;
    QStringList names;          // the chosen families, in list order
    QString newName;            // the new-name box (rename, copy as)
    QString destination;        // the chosen destination entry as shown ("" none)
    bool machineChoice = false; // the machine list is shown
    int machineNumber = 0;      // the chosen machine (0 none)
};

// Where the form puts the focus after OK; Done means the action ran (or was declined at its
// question) and the lists are to be filled again.
enum class FileOkOutcome { FocusFileList, FocusFileBox, FocusDirectoryList, FocusMachineList, Done };

// OK of the file form: checks the choice (each refusal beeps and names what is missing), asks
// the action's question, runs the family operations in list order and reports the count. A
// family operation that fails stops the batch with one message naming the file and the reason;
// the families not reached are left as they are, and a source is never deleted before its copy
// is complete.
[[nodiscard]] FileOkOutcome FileOk(Session& session, const FileChoice& choice);

// "1 File Copied !", "3 Files Copied !", "No Files Copied !" with the verb given.
[[nodiscard]] QString CountMessage(int count, const QString& verb);

// The directory of machine number n of the machine table ("" when there is no such machine).
[[nodiscard]] QString MachineDirOf(const GlobalSettings& g, int number);

} // namespace kestrova
