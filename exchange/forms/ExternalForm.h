#pragma once

#include "exchange/ExportSettings.h"
#include "exchange/FolderTree.h"
#include "exchange/forms/ExchangeDialog.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QListWidget;

namespace kestrova {

// The external form: its export half copies drawings and programs of the current data directory
// to any drive and folder ("Export File(s)": several files; "Export File As ...": one file under
// a new name); its import half brings files from any drive and folder into a data directory, or
// sub-routines into the suite's sub-routine directory. The mode is `ImportMode`: 1 and 2 import
// files, 5 sub-routines, 3 and 4 export. Everything but the widgets is ExportOk and ImportOk.
class ExternalForm : public ExchangeDialog {
    Q_OBJECT
public:
    explicit ExternalForm(Session& session, QWidget* parent = nullptr);

    [[nodiscard]] bool Exporting() const { return m_exporting; }

private:
    // --- Export half -----------------------------------------------------------------------
    void BuildExport();
    void FileCheck_Click();
    void ExportFileList_Change();
    void ExportOk_Click();
    [[nodiscard]] int ExportMode() const;

    // --- Import half -----------------------------------------------------------------------
    void BuildImport();
    void FillImportFiles();
    void ImportOk_Click();

    // --- Drive and folder lists of both halves -----------------------------------------------
    void ShowFolder(QListWidget* folders, FolderTree& tree, const QString& folder);
    void DriveList_Change(QComboBox* drives, QListWidget* folders, FolderTree& tree);
    [[nodiscard]] static QString FolderPath(const QListWidget* folders, const FolderTree& tree);
    void SelectDrive(QComboBox* drives, const QString& folder);

    bool m_exporting = false;
    bool m_singleFile = false;

    QCheckBox* m_drawings = nullptr;
    QCheckBox* m_programs = nullptr;
    QListWidget* m_exportFileList = nullptr;
    QLineEdit* m_exportNameBox = nullptr;
    QComboBox* m_exportDriveList = nullptr;
    QListWidget* m_exportFolderList = nullptr;
    FolderTree m_exportTree;
    QComboBox* m_extentionCombo = nullptr;
    QButtonGroup* m_formatOption = nullptr;

    QComboBox* m_importDriveList = nullptr;
    QListWidget* m_importFolderList = nullptr;
    FolderTree m_importTree;
    QListWidget* m_importFileList = nullptr;
    QComboBox* m_importPatternCombo = nullptr;
    QComboBox* m_importDirectoryList = nullptr;
};

} // namespace kestrova
