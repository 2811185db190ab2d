#pragma once

#include "comms/GeneralReceive.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/forms/TransferDialog.h"

#include <memory>

class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kestrova {

// "Communications - Receive Program" (or "- Receive Executive"): the operator types the name,
// picks the data directory and presses OK; the form then waits for the control, shows what
// arrives and stores it. Everything but the widgets is ReceiveFormLogic and GeneralReceive.
class ReceiveForm : public TransferDialog {
    Q_OBJECT
public:
    ReceiveForm(Session& session, const SerialLineFactory& lines, QWidget* parent = nullptr);
    ~ReceiveForm() override;

    [[nodiscard]] GeneralReceive& Receive() { return *m_receive; }

protected:
    void Abort() override;

private:
    void BuildControls();
    void FillLists();
    void DirectoryList_Click();
    void ReceiveOk_Click();
    void ShowDisplay();

    std::unique_ptr<GeneralReceive> m_receive;
    ReceiveFormLogic m_logic;

    QLabel* m_nameLabel = nullptr;
    QComboBox* m_receiveCombo = nullptr;
    QFrame* m_directoryFrame = nullptr;
    QListWidget* m_directoryList = nullptr;
    QPushButton* m_receiveOk = nullptr;
    QPushButton* m_receiveCncl = nullptr;
    QPushButton* m_receiveAbrt = nullptr;
    QLabel* m_receiveLabel = nullptr;
    QLineEdit* m_receiveChars = nullptr;
    QLabel* m_receiveRate = nullptr;
};

} // namespace kestrova
