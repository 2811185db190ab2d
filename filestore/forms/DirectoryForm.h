#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kestrova {

// The directory form of the File menu (`DirectoryOperation`: 1 change, 2 create, 3 rename,
// 4 delete): the machine's data directories to choose from and a name box, as the action needs.
// OK runs DirectoryOk of the core and closes the form when the action is done; a refusal or a
// declined question leaves it open. Cancel and Esc close it.
class DirectoryForm : public QDialog {
    Q_OBJECT
public:
    DirectoryForm(Session& session, QWidget* parent = nullptr);

private:
    void DirectoryOk_Click();

    Session& m_session;
    int m_action = 0;
    QLabel* m_listLabel = nullptr;
    QListWidget* m_directoryList = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLineEdit* m_directoryBox = nullptr;
    QPushButton* m_directoryOk = nullptr;
    QPushButton* m_directoryCncl = nullptr;
};

} // namespace kestrova
