#pragma once

#include "Frontend/Session.h"
#include "editing/ProgramRewrite.h"
#include "filestore/ListModel.h"
#include "platform/ProgramLauncher.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace kestrova {

// The operations of the edit form, as the Edit menu stores them in `EditOperation`.
enum class EditOperation {
    EditProgram = 1,
    NewProgram = 2,
    SetupSheet = 3,
    NestReport = 4,
    Renumber = 5,
    StripNumbers = 6,
    RemoveSpaces = 7,
};

// Which parts of the form an operation shows.
struct EditFormLayout {
    QString caption; // also the list's label
    bool singleList = false;
    bool multiList = false;
    bool nameBox = false;
    bool directoryFrame = false;
    bool search = false;
    bool renumFrame = false;
};

// What the form's controls hold when OK is pressed. The selected entries of the multi-selection
// list are in list order.
struct EditOkInput {
    QString singleSelection;
    QStringList multiSelection;
    QString nameText;
    QString startText;
    QString incrementText;
};

// What the form does after OK.
enum class EditOkOutcome {
    Close,
    StayOnList,  // nothing (or nothing usable) selected; the focus goes to the list
    StayOnStart, // the start number or the step is refused; the focus goes to "Start No."
    StayOnName,  // the new program's name is invalid; the focus goes to the name box
};

// How far a batch has come: the program being rewritten (1-based, of count), its name, and the
// bytes of it done so far of its length.
struct BatchProgress {
    int program = 0;
    int count = 0;
    QString name;
    qint64 done = 0;
    qint64 total = 0;
};
using BatchProgressReport = std::function<void(const BatchProgress&)>;

// Opens a file in the operator's text editor ("Editor.cfg"), creating it empty when it is
// missing, and does not wait for the editor.
void OpenInEditor(Session& session, ProgramLauncher& launcher, const QString& file);

// The edit form without its widgets: its load, its lists and its OK.
class EditFormLogic {
public:
    EditFormLogic(Session& session, ProgramLauncher& launcher);

    // The operation the menu chose; codes outside 1 to 7 show the form as designed and make OK
    // do nothing but close.
    [[nodiscard]] int Operation() const { return m_operation; }
    [[nodiscard]] EditFormLayout Layout() const;

    // The remembered program's directory is made current and its name preselected.
    void Form_Load();
    void FillDirectories(ListModel& list);
    // The programs (or setup sheets, or nest reports) of the current directory.
    void FillFiles(ListModel& list);
    // The operator chose another data directory.
    void DirectoryChosen(const QString& name);
    // The file name search handed back a program (`SearchResult`): its directory is made
    // current and its name preselected.
    void SearchPicked();

    [[nodiscard]] EditOkOutcome EditOk_Click(const EditOkInput& input,
                                             const BatchProgressReport& progress = {});

private:
    EditOkOutcome OpenSelected(const QString& selection);
    EditOkOutcome OpenNew(const QString& nameText);
    EditOkOutcome Rewrite(const EditOkInput& input, const BatchProgressReport& progress);

    Session& m_session;
    ProgramLauncher& m_launcher;
    int m_operation;
    QString m_preselect;
};

} // namespace kestrova
