#pragma once

#include "Frontend/SendForm.h"
#include "Frontend/Session.h"
#include "comms/GeneralReceive.h"
#include "comms/ReceiveFormLogic.h"

#include <QDialog>
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
class ReceiveForm : public QDialog {
    Q_OBJECT
public:
    ReceiveForm(Session& session, const SerialLineFactory& lines, QWidget* parent = nullptr);
    ~ReceiveForm() override;

    // False when the machine's settings could not be read (the operator has been told): the
    // form is then not to be shown.
    [[nodiscard]] bool Loaded() const { return m_loaded; }
    [[nodiscard]] bool Receiving() const { return m_receiving; }
    [[nodiscard]] GeneralReceive& Receive() { return *m_receive; }

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildControls();
    void FillLists();
    void DirectoryList_Click();
    void ReceiveOk_Click();
    void ShowDisplay();

    Session& m_session;
    std::unique_ptr<SerialLine> m_line;
    std::unique_ptr<GeneralReceive> m_receive;
    ReceiveFormLogic m_logic;
    bool m_loaded = false;
    bool m_receiving = false;

    QLabel* m_nameLabel = nullptr;
    QComboBox* m_receiveCombo = nullptr;
    QFrame* m_directoryFrame = nullptr;
    QListWidget* m_directoryList = nullptr;
    QPushButton* m_receiveOk = nullptr;
    QPushButton* m_receiveCncl = nullptr;
    QPushButton* m_receiveAbrt = nullptr;
    QLabel* m_receiveLabel = nullptr;
    QLineEdit* m_receiveChars = nullptr;
};

} // namespace kestrova
