#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QPushButton;
class QTreeWidget;

namespace kestrova {

// "Select Machine": the machines of `Machine.lst` (number, description, directory), the current
// one chosen to start with. OK (Enter, or a double-click) closes the form with the chosen
// machine in ChosenMachine(); Cancel and Esc close it with nothing chosen. The caller makes the
// choice current (SelectMachine).
class MachineForm : public QDialog {
    Q_OBJECT
public:
    MachineForm(Session& session, QWidget* parent = nullptr);

    // The number of the machine chosen with OK; 0 when the form was cancelled.
    [[nodiscard]] int ChosenMachine() const { return m_chosen; }

private:
    void MachineOk_Click();

    Session& m_session;
    int m_chosen = 0;
    QTreeWidget* m_machineList = nullptr;
    QPushButton* m_machineOk = nullptr;
    QPushButton* m_machineCncl = nullptr;
};

} // namespace kestrova
