#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QComboBox;
class QListWidget;
class QPushButton;

namespace kestrova {

// "Restore Drawing": the last drawing the drawing package modified, brought back from its undo
// area under the name typed or chosen in NameCombo into the directory chosen in DirectoryList
// (the current one to start with). OK runs RestoreDrawing of the core.
class RestoreForm : public QDialog {
    Q_OBJECT
public:
    RestoreForm(Session& session, QWidget* parent = nullptr);

private:
    void FillNames();
    void RestoreOk_Click();

    Session& m_session;
    QComboBox* m_nameCombo = nullptr;
    QListWidget* m_directoryList = nullptr;
    QPushButton* m_restoreOk = nullptr;
    QPushButton* m_restoreCncl = nullptr;
};

} // namespace kestrova
