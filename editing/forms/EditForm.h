#pragma once

#include "editing/EditFormLogic.h"

#include <QDialog>

class QFrame;
class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;

namespace kestrova {

// The one form behind the Edit menu: it arranges itself for the operation in `EditOperation`
// (edit, new program, the two reports, renumber, strip numbers, remove spaces) and carries it
// out on OK. Everything but the widgets is EditFormLogic. A batch of rewrites shows which
// program and how far, and keeps the windows painting while it runs.
class EditForm : public QDialog {
    Q_OBJECT
public:
    EditForm(Session& session, ProgramLauncher& launcher, QWidget* parent = nullptr);

    // False when the load met an error (already shown): the form is then not to be shown.
    [[nodiscard]] bool Loaded() const { return m_loaded; }
    // A batch of rewrites is running.
    [[nodiscard]] bool Busy() const { return m_busy; }

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildControls();
    void Arrange();
    void FillFiles();
    void DirectoryList_Change();
    void Search_Click();
    void History_Click();
    void FillLists();
    void EditOk_Click();
    void ShowProgress(const BatchProgress& progress);
    [[nodiscard]] QListWidget* FileList() const;

    Session& m_session;
    EditFormLogic m_logic;
    EditFormLayout m_layout;
    bool m_loaded = false;
    bool m_busy = false;

    QLabel* m_listLabel = nullptr;
    QListWidget* m_editList1 = nullptr;
    QListWidget* m_editList2 = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLineEdit* m_editBox = nullptr;
    QFrame* m_directoryFrame = nullptr;
    QListWidget* m_directoryList = nullptr;
    QFrame* m_renumFrame = nullptr;
    QLineEdit* m_renumBox1 = nullptr;
    QLineEdit* m_renumBox2 = nullptr;
    QLabel* m_progressLabel = nullptr;
    QProgressBar* m_progressBar = nullptr;
    QPushButton* m_search = nullptr;
    QPushButton* m_history = nullptr;
    QPushButton* m_editOk = nullptr;
    QPushButton* m_editCncl = nullptr;
};

} // namespace kestrova
