#pragma once

#include "Frontend/Session.h"
#include "comms/GeneralReceive.h"
#include "filestore/ListModel.h"

#include <QString>

namespace kestrova {

// The text shown where a control's dialogue send or receive would be needed.
inline const QString DialogueNotSupported =
    QStringLiteral("The Control-Character Dialogue Of This Control Is Not Supported !");

// What the receive form does after OK.
enum class ReceiveOkOutcome {
    Close,      // the form closes
    StayOnName, // the form stays, with the focus on the name box
};

// The receive form without its widgets: its load, its directory list and its OK. The form
// (ReceiveForm) gathers what its controls hold, calls these and mirrors the receive's display.
//
// `ReceiveOperation` chooses the receive: 2 a program from an ordinary control; 4 a program
// and 6 an executive by the control-character dialogue, which this system does not support.
class ReceiveFormLogic {
public:
    ReceiveFormLogic(Session& session, GeneralReceive& receive);

    // Reads the current machine's receive settings (a missing or short file raises its error)
    // and makes the current machine and directory the place received programs go.
    void Form_Load();

    [[nodiscard]] bool ExecutiveMode() const;
    [[nodiscard]] QString Caption() const;
    [[nodiscard]] QString NameLabel() const;
    [[nodiscard]] const QString& TempPath() const { return m_tempPath; }

    // The data directories of the receiving machine, the current one selected.
    void FillDirectories(ListModel& list);
    // The operator chose another data directory.
    void DirectoryChosen(const QString& name);

    // OK with the name box's text: validates the name, asks before overwriting, receives and
    // stores the program, and tells the operator how it went.
    [[nodiscard]] ReceiveOkOutcome ReceiveOk_Click(const QString& nameText);

private:
    Session& m_session;
    GeneralReceive& m_receive;
    QString m_tempPath;
};

} // namespace kestrova
