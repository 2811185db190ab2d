#include "exchange/forms/ExternalForm.h"

#include "exchange/ExportFile.h"
#include "exchange/ExportOk.h"
#include "exchange/ImportOk.h"
#include "filestore/DriveCheck.h"
#include "filestore/Listings.h"
#include "filestore/Names.h"
#include "filestore/forms/NameKeyFilter.h"
#include "platform/Blanks.h"
#include "settings/SettingsLine.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kestrova {

namespace {

QLabel* Caption(const QString& text, QWidget* buddy, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

// The pattern of a pattern list entry: its text up to the first blank.
QString PatternOf(const QString& entry) {
    return TrimBlanks(entry).section(u' ', 0, 0);
}

} // namespace

ExternalForm::ExternalForm(Session& session, QWidget* parent) : ExchangeDialog(session, parent) {
    setObjectName(QStringLiteral("ExternalForm"));
    const int mode = session.settings.ImportMode;
    m_exporting = mode == 3 || mode == 4;
    m_singleFile = mode == 4;
    if (m_exporting)
        BuildExport();
    else
        BuildImport();
}

// --- Export half ---------------------------------------------------------------------------

void ExternalForm::BuildExport() {
    setWindowTitle(m_singleFile ? QStringLiteral("Export File") : QStringLiteral("Export Files"));
    ExportSettings settings;
    Guarded([&] { settings = ReadExportSettings(m_session.files, m_session.settings); });

    m_drawings = new QCheckBox(QStringLiteral("&Drawings"), this);
    m_drawings->setObjectName(QStringLiteral("FileCheck1"));
    m_programs = new QCheckBox(QStringLiteral("&Programs"), this);
    m_programs->setObjectName(QStringLiteral("FileCheck2"));
    m_drawings->setChecked(settings.mode & ExportDrawings);
    m_programs->setChecked(settings.mode & ExportPrograms);

    m_exportFileList = new QListWidget(this);
    m_exportFileList->setObjectName(QStringLiteral("ExportFileList"));
    m_exportFileList->setSelectionMode(m_singleFile ? QAbstractItemView::SingleSelection
                                                    : QAbstractItemView::ExtendedSelection);
    m_exportNameBox = new QLineEdit(this);
    m_exportNameBox->setObjectName(QStringLiteral("ExportNameBox"));
    m_exportNameBox->setMaxLength(64);
    NameKeyFilter::Install(m_session, m_exportNameBox, 64);
    m_exportNameBox->setVisible(m_singleFile);

    m_exportDriveList = new QComboBox(this);
    m_exportDriveList->setObjectName(QStringLiteral("ExportDriveList"));
    m_exportDriveList->addItems(DriveChoices(m_session.files));
    m_exportFolderList = new QListWidget(this);
    m_exportFolderList->setObjectName(QStringLiteral("ExportFolderList"));

    m_extentionCombo = new QComboBox(this);
    m_extentionCombo->setObjectName(QStringLiteral("ExtentionCombo"));
    m_extentionCombo->setEditable(true);
    m_extentionCombo->setInsertPolicy(QComboBox::NoInsert);
    m_extentionCombo->addItems({QStringLiteral("prg"), QStringLiteral("nc"), QStringLiteral("cnc"),
                                QStringLiteral("txt"), QStringLiteral("iso")});
    NameKeyFilter::Install(m_session, m_extentionCombo->lineEdit(), -80);
    m_extentionCombo->setEditText(settings.extension);

    auto* formatFrame = new QGroupBox(QStringLiteral("Output Format"), this);
    formatFrame->setObjectName(QStringLiteral("FormatFrame"));
    m_formatOption = new QButtonGroup(this);
    auto* formatLayout = new QVBoxLayout(formatFrame);
    const QStringList formats{QStringLiteral("&Normal"), QStringLiteral("&Lookup"),
                              QStringLiteral("&8 Character")};
    for (int i = 0; i < formats.size(); ++i) {
        auto* option = new QRadioButton(formats.at(i), formatFrame);
        option->setObjectName(QStringLiteral("FormatOption%1").arg(i));
        m_formatOption->addButton(option, i);
        formatLayout->addWidget(option);
    }
    m_formatOption->button(int(settings.format))->setChecked(true);

    QPushButton* ok = Button(this, QStringLiteral("ExportOk"), QStringLiteral("OK"));
    ok->setDefault(true);
    QPushButton* cancel = Button(this, QStringLiteral("ExportCancel"), QStringLiteral("Cancel"));

    auto* layout = new QGridLayout(this);
    auto* checks = new QHBoxLayout;
    checks->addWidget(m_drawings);
    checks->addWidget(m_programs);
    layout->addLayout(checks, 0, 0);
    layout->addWidget(Caption(QStringLiteral("&Files"), m_exportFileList, this), 1, 0);
    layout->addWidget(m_exportFileList, 2, 0, 3, 1);
    if (m_singleFile) {
        layout->addWidget(Caption(QStringLiteral("&As"), m_exportNameBox, this), 5, 0);
        layout->addWidget(m_exportNameBox, 6, 0);
    }
    layout->addWidget(Caption(QStringLiteral("Dri&ve"), m_exportDriveList, this), 1, 1);
    layout->addWidget(m_exportDriveList, 2, 1);
    layout->addWidget(Caption(QStringLiteral("&To Folder"), m_exportFolderList, this), 3, 1);
    layout->addWidget(m_exportFolderList, 4, 1, 3, 1);
    layout->addWidget(Caption(QStringLiteral("Program &Extension"), m_extentionCombo, this), 1, 2);
    layout->addWidget(m_extentionCombo, 2, 2);
    layout->addWidget(formatFrame, 3, 2, 2, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons, 7, 0, 1, 3);

    TabOrder({m_drawings, m_programs, m_exportFileList, m_exportNameBox, m_exportDriveList,
              m_exportFolderList, m_extentionCombo, m_formatOption->button(0), ok, cancel});

    connect(m_drawings, &QCheckBox::toggled, this, &ExternalForm::FileCheck_Click);
    connect(m_programs, &QCheckBox::toggled, this, &ExternalForm::FileCheck_Click);
    connect(m_exportFileList, &QListWidget::currentRowChanged, this, &ExternalForm::ExportFileList_Change);
    connect(m_exportDriveList, &QComboBox::currentIndexChanged, this,
            [this] { DriveList_Change(m_exportDriveList, m_exportFolderList, m_exportTree); });
    connect(m_exportFolderList, &QListWidget::itemActivated, this, [this] {
        ShowFolder(m_exportFolderList, m_exportTree, FolderPath(m_exportFolderList, m_exportTree));
    });
    connect(ok, &QPushButton::clicked, this, &ExternalForm::ExportOk_Click);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    const QString target = settings.target.isEmpty() ? m_session.settings.CurrentPath : settings.target;
    Guarded([&] {
        SelectDrive(m_exportDriveList, target);
        ShowFolder(m_exportFolderList, m_exportTree, target);
    });
    FileCheck_Click();
}

int ExternalForm::ExportMode() const {
    return (m_drawings->isChecked() ? ExportDrawings : 0) + (m_programs->isChecked() ? ExportPrograms : 0);
}

void ExternalForm::FileCheck_Click() {
    Guarded([this] {
        ListModel files;
        const GlobalSettings& g = m_session.settings;
        FillFileList(m_session, files, g.MachineDir, g.CurrentDir, {},
                     m_singleFile ? Selection::First : Selection::None, ExportMode(), {});
        Fill(m_exportFileList, files);
    });
    ExportFileList_Change();
}

void ExternalForm::ExportFileList_Change() {
    if (!m_singleFile)
        return;
    const QListWidgetItem* item = m_exportFileList->currentItem();
    m_exportNameBox->setText(item ? item->text() : QString());
}

void ExternalForm::ExportOk_Click() {
    ExportRequest request;
    request.singleList = m_singleFile;
    if (m_singleFile) {
        if (const QListWidgetItem* item = m_exportFileList->currentItem())
            request.selected << item->text();
    } else {
        request.selected = SelectedTexts(m_exportFileList);
    }
    request.newName = m_exportNameBox->text();
    request.target = FolderPath(m_exportFolderList, m_exportTree);
    request.mode = ExportMode();
    request.format = ExportFormat(qMax(0, m_formatOption->checkedId()));
    request.extension = m_extentionCombo->currentText();
    ExportOutcome outcome = ExportOutcome::Stay;
    if (!Guarded([&] { outcome = kestrova::ExportOk_Click(m_session, request); }))
        return;
    switch (outcome) {
    case ExportOutcome::Exported:
        accept();
        break;
    case ExportOutcome::FocusName:
        m_exportNameBox->setFocus();
        m_exportNameBox->selectAll();
        break;
    case ExportOutcome::FocusDrive:
        m_exportDriveList->setFocus();
        break;
    case ExportOutcome::Stay:
        break;
    }
}

// --- Import half ---------------------------------------------------------------------------

void ExternalForm::BuildImport() {
    const bool subRoutines = m_session.settings.ImportMode == 5;
    setWindowTitle(subRoutines ? QStringLiteral("Import Sub-Routines") : QStringLiteral("Import Files"));

    m_importDriveList = new QComboBox(this);
    m_importDriveList->setObjectName(QStringLiteral("ImportDriveList"));
    m_importDriveList->addItems(DriveChoices(m_session.files));
    m_importFolderList = new QListWidget(this);
    m_importFolderList->setObjectName(QStringLiteral("ImportFolderList"));
    m_importFileList = new QListWidget(this);
    m_importFileList->setObjectName(QStringLiteral("ImportFileList"));
    m_importFileList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_importPatternCombo = new QComboBox(this);
    m_importPatternCombo->setObjectName(QStringLiteral("ImportPatternCombo"));
    m_importPatternCombo->setEditable(true);
    m_importPatternCombo->setInsertPolicy(QComboBox::NoInsert);
    m_importPatternCombo->addItems(
        {QStringLiteral("*.*             All Files "), QStringLiteral("*.drw           Drawings "),
         QStringLiteral("*.prg           Programs "), QStringLiteral("*.dxf           DXF Files "),
         QStringLiteral("*.nc            NC Files ")});
    NameKeyFilter::Install(m_session, m_importPatternCombo->lineEdit(), -322);
    m_importDirectoryList = new QComboBox(this);
    m_importDirectoryList->setObjectName(QStringLiteral("ImportDirectoryList"));
    m_importDirectoryList->setEnabled(!subRoutines);
    QPushButton* selectAll = Button(this, QStringLiteral("SelectAll"), QStringLiteral("Select &All"));
    QPushButton* ok = Button(this, QStringLiteral("ImportOk"), QStringLiteral("OK"));
    ok->setDefault(true);
    QPushButton* cancel = Button(this, QStringLiteral("ImportCancel"), QStringLiteral("Cancel"));

    auto* layout = new QGridLayout(this);
    layout->addWidget(Caption(QStringLiteral("Dri&ve"), m_importDriveList, this), 0, 0);
    layout->addWidget(m_importDriveList, 1, 0);
    layout->addWidget(Caption(QStringLiteral("F&rom Folder"), m_importFolderList, this), 2, 0);
    layout->addWidget(m_importFolderList, 3, 0, 3, 1);
    layout->addWidget(Caption(QStringLiteral("&Files"), m_importFileList, this), 0, 1);
    layout->addWidget(m_importFileList, 1, 1, 3, 1);
    layout->addWidget(Caption(QStringLiteral("File &Type"), m_importPatternCombo, this), 4, 1);
    layout->addWidget(m_importPatternCombo, 5, 1);
    layout->addWidget(Caption(QStringLiteral("&Into Directory"), m_importDirectoryList, this), 6, 0);
    layout->addWidget(m_importDirectoryList, 7, 0);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(selectAll);
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons, 8, 0, 1, 2);
    TabOrder({m_importDriveList, m_importFolderList, m_importFileList, m_importPatternCombo,
              m_importDirectoryList, selectAll, ok, cancel});

    connect(m_importDriveList, &QComboBox::currentIndexChanged, this, [this] {
        DriveList_Change(m_importDriveList, m_importFolderList, m_importTree);
        FillImportFiles();
    });
    connect(m_importFolderList, &QListWidget::currentRowChanged, this, &ExternalForm::FillImportFiles);
    connect(m_importFolderList, &QListWidget::itemActivated, this, [this] {
        ShowFolder(m_importFolderList, m_importTree, FolderPath(m_importFolderList, m_importTree));
        FillImportFiles();
    });
    connect(m_importPatternCombo, &QComboBox::currentTextChanged, this, &ExternalForm::FillImportFiles);
    connect(selectAll, &QPushButton::clicked, m_importFileList, &QListWidget::selectAll);
    connect(ok, &QPushButton::clicked, this, &ExternalForm::ImportOk_Click);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    Guarded([this] {
        const GlobalSettings& g = m_session.settings;
        ListModel directories;
        FillDirectoryList(m_session, directories, g.MachineDir, g.CurrentDir, true, true, Selection::Named);
        m_importDirectoryList->addItems(directories.entries);
        m_importDirectoryList->setCurrentIndex(directories.selected);
        const QString source = LastImportSource().isEmpty() ? g.CurrentPath : LastImportSource();
        SelectDrive(m_importDriveList, source);
        ShowFolder(m_importFolderList, m_importTree, source);
    });
    FillImportFiles();
}

void ExternalForm::FillImportFiles() {
    Guarded([this] {
        const QSignalBlocker quiet(m_importFileList);
        m_importFileList->clear();
        const QString folder = FolderPath(m_importFolderList, m_importTree);
        const QString pattern = PatternOf(m_importPatternCombo->currentText());
        if (folder.isEmpty() || pattern.isEmpty())
            return;
        m_importFileList->addItems(m_session.files.List(folder, pattern, EntryKinds::Files));
    });
}

void ExternalForm::ImportOk_Click() {
    ImportRequest request;
    request.mode = m_session.settings.ImportMode;
    // The directory list shows drives as "A: [Floppy Disk]": the drive is its first two characters.
    const QString target = m_importDirectoryList->currentText();
    request.targetDirectory = HasColon(target) ? target.left(2) : target;
    request.source = FolderPath(m_importFolderList, m_importTree);
    request.selected = SelectedTexts(m_importFileList);
    ImportOutcome outcome = ImportOutcome::Stay;
    if (!Guarded([&] { outcome = kestrova::ImportOk_Click(m_session, request); }))
        return;
    switch (outcome) {
    case ImportOutcome::Done:
        accept();
        break;
    case ImportOutcome::FocusTarget:
        m_importDirectoryList->setFocus();
        break;
    case ImportOutcome::FocusDrive:
        m_importDriveList->setFocus();
        break;
    case ImportOutcome::Stay:
        break;
    }
}

// --- Drive and folder lists ------------------------------------------------------------------

void ExternalForm::ShowFolder(QListWidget* folders, FolderTree& tree, const QString& folder) {
    tree = FolderTreeOf(m_session.files, folder);
    const QSignalBlocker quiet(folders);
    folders->clear();
    folders->addItems(tree.captions);
    folders->setCurrentRow(tree.open);
}

QString ExternalForm::FolderPath(const QListWidget* folders, const FolderTree& tree) {
    return tree.paths.value(folders->currentRow());
}

void ExternalForm::SelectDrive(QComboBox* drives, const QString& folder) {
    const QSignalBlocker quiet(drives);
    const QString drive = m_session.files.FullPath(folder).left(2);
    for (int i = 0; i < drives->count(); ++i) {
        if (drives->itemText(i).left(2).compare(drive, Qt::CaseInsensitive) == 0)
            drives->setCurrentIndex(i);
    }
}

void ExternalForm::DriveList_Change(QComboBox* drives, QListWidget* folders, FolderTree& tree) {
    const QString drive = drives->currentText().left(2);
    if (!DriveReadyOrRefused(m_session, drive, DiscNotReady)) {
        SelectDrive(drives, FolderPath(folders, tree));
        return;
    }
    Guarded([&] { ShowFolder(folders, tree, drive + u'\\'); });
}

} // namespace kestrova
