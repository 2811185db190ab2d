#pragma once

#include "comms/SendEngine.h"
#include "comms/SendFormLogic.h"
#include "comms/forms/TransferDialog.h"

#include <memory>

class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace kestrova {

// "Communications - Send Program": the operator picks a machine (where there are several), a
// data directory and one or more programs, and sends them; the form shows each transmission's
// progress, with the force button (SendFrc) to start a control that does not ask and the abort
// button (SendAbrt). "View" shows the drawing of the current program before it goes.
// Everything but the widgets is SendFormLogic and SendEngine.
class SendForm : public TransferDialog {
    Q_OBJECT
public:
    SendForm(Session& session, const SerialLineFactory& lines, QWidget* parent = nullptr,
             SendKind kind = SendKind::Program);
    ~SendForm() override;

    [[nodiscard]] SendEngine& Engine() { return *m_engine; }

protected:
    void Abort() override;

private:
    void BuildControls();
    void FillLists();
    void MachineCombo_Click(int index);
    void DirectoryList_Click();
    void SendOk_Click();
    void SendSrch_Click();
    void SendView_Click();
    void ShowProgress();

    void ShowPrograms();

    std::unique_ptr<SendEngine> m_engine;
    SendFormLogic m_logic;

    QLabel* m_machineLabel = nullptr;
    QComboBox* m_machineCombo = nullptr;
    QListWidget* m_directoryList = nullptr;
    QListWidget* m_fileList = nullptr;
    QPushButton* m_sendOk = nullptr;
    QPushButton* m_sendCncl = nullptr;
    QPushButton* m_sendFrc = nullptr;
    QPushButton* m_sendAbrt = nullptr;
    QPushButton* m_sendSrch = nullptr;
    QPushButton* m_sendView = nullptr;
    QLabel* m_sendLabel = nullptr;
    QLabel* m_sendRate = nullptr;
    QProgressBar* m_progress = nullptr;
    QWidget* m_choices = nullptr;
};

} // namespace kestrova
