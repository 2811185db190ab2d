#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace kestrova {

// The file form of the File menu's five file entries (`FileOperation`: 1 delete, 2 rename,
// 3 copy as, 4 move to, 5 copy to). It lists the drawings and/or programs of the current data
// directory by the kinds ticked, takes a new name (rename, copy as) or a destination directory
// and, with several machines, a machine (move to, copy to), and on OK runs FileOk of the core.
// The form stays open for the next action, its lists filled again; Cancel and Esc close it.
class FileForm : public QDialog {
    Q_OBJECT
public:
    FileForm(Session& session, QWidget* parent = nullptr);

private:
    void BuildControls();
    void FileCheck_Click();
    void FillFileList(const QString& nameToSelect);
    void FillDestinations(const QString& machineDir);
    void FileList_CurrentChanged();
    void FileList_DblClick();
    void MachineList_CurrentChanged(int row);
    void DirectoryList_CurrentChanged(int row);
    void FileOk_Click();
    [[nodiscard]] int Kind() const;

    Session& m_session;
    int m_action = 0;
    bool m_filling = false;

    QCheckBox* m_drawingsCheck = nullptr;
    QCheckBox* m_programsCheck = nullptr;
    QLabel* m_fileLabel = nullptr;
    QListWidget* m_fileList = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLineEdit* m_fileBox = nullptr;
    QLabel* m_machineLabel = nullptr;
    QListWidget* m_machineList = nullptr;
    QLabel* m_destinationLabel = nullptr;
    QListWidget* m_directoryList = nullptr;
    QPushButton* m_fileOk = nullptr;
    QPushButton* m_fileCncl = nullptr;
};

} // namespace kestrova
