#pragma once

#include "Frontend/Session.h"
#include "comms/SendEngine.h"
#include "comms/SendFormLogic.h"
#include "platform/SerialLine.h"

#include <QDialog>
#include <functional>
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
// button (SendAbrt). Everything but the widgets is SendFormLogic and SendEngine.
class SendForm : public QDialog {
    Q_OBJECT
public:
    SendForm(Session& session, const SerialLineFactory& lines, QWidget* parent = nullptr,
             SendKind kind = SendKind::Program);
    ~SendForm() override;

    // False when the machine's settings could not be read (the operator has been told): the
    // form is then not to be shown.
    [[nodiscard]] bool Loaded() const { return m_loaded; }
    [[nodiscard]] bool Sending() const { return m_sending; }
    [[nodiscard]] SendEngine& Engine() { return *m_engine; }

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildControls();
    void FillLists();
    void MachineCombo_Click(int index);
    void DirectoryList_Click();
    void SendOk_Click();
    void ShowProgress();

    Session& m_session;
    std::unique_ptr<SerialLine> m_line;
    std::unique_ptr<SendEngine> m_engine;
    SendFormLogic m_logic;
    bool m_loaded = false;
    bool m_sending = false;

    QLabel* m_machineLabel = nullptr;
    QComboBox* m_machineCombo = nullptr;
    QListWidget* m_directoryList = nullptr;
    QListWidget* m_fileList = nullptr;
    QPushButton* m_sendOk = nullptr;
    QPushButton* m_sendCncl = nullptr;
    QPushButton* m_sendFrc = nullptr;
    QPushButton* m_sendAbrt = nullptr;
    QLabel* m_sendLabel = nullptr;
    QProgressBar* m_progress = nullptr;
    QWidget* m_choices = nullptr;
};

} // namespace kestrova
