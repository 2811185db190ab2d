#include "filestore/forms/FileForm.h"

#include "filestore/DriveCheck.h"
#include "filestore/FileOperations.h"
#include "filestore/LastFile.h"
#include "filestore/Listings.h"
#include "filestore/Names.h"
#include "filestore/forms/FormParts.h"
#include "filestore/forms/NameKeyFilter.h"
#include "platform/Blanks.h"
#include "settings/SettingsLine.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

namespace kestrova {

FileForm::FileForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("FileForm"));
    m_action = session.settings.FileOperation;
    if (m_action < 1 || m_action > 5)
        m_action = 1;
    BuildControls();

    const GlobalSettings& g = session.settings;
    if (!m_machineList->isHidden()) {
        const QSignalBlocker quiet(m_machineList);
        for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n) {
            const MachineRecord& m = g.MachineTable.at(n);
            auto* item = new QListWidgetItem(TrimBlanks(m.field1), m_machineList);
            item->setData(Qt::UserRole, int(m.number));
            if (m.number == g.MachineNumber)
                m_machineList->setCurrentItem(item);
        }
    }
    if (!m_directoryList->isHidden())
        FillDestinations(g.MachineDir);

    QString lastDir;
    QString lastName;
    const bool remembered = RecallLastFile(session, lastDir, lastName, 3) &&
                            lastDir.compare(g.CurrentDir, Qt::CaseInsensitive) == 0;
    FillFileList(remembered ? lastName : QString());
    m_fileList->setFocus();
}

void FileForm::BuildControls() {
    const GlobalSettings& g = m_session.settings;
    const FileFormLayout layout = FileFormLayoutOf(m_action, g.MachineCount);
    setWindowTitle(layout.caption);
    const bool destinations = !layout.destinationLabel.isEmpty();

    m_drawingsCheck = new QCheckBox(QStringLiteral("&Drawings"), this);
    m_drawingsCheck->setObjectName(QStringLiteral("FileCheck1"));
    m_programsCheck = new QCheckBox(QStringLiteral("&Programs"), this);
    m_programsCheck->setObjectName(QStringLiteral("FileCheck2"));
    m_drawingsCheck->setChecked(true);
    m_programsCheck->setChecked(true);

    m_fileLabel = new QLabel(layout.fileLabel, this);
    m_fileLabel->setObjectName(QStringLiteral("FileLabel"));
    m_fileList = new QListWidget(this);
    m_fileList->setObjectName(QStringLiteral("FileList"));
    m_fileList->setSelectionMode(layout.severalNames ? QAbstractItemView::ExtendedSelection
                                                     : QAbstractItemView::SingleSelection);
    auto* files = new QLabel(QStringLiteral("&Files"), this);
    files->setBuddy(m_fileList);
    auto* inDirectory = new QLabel(layout.directoryLabel, this);
    auto* currentDir = new QLabel(QStringLiteral("\"") + g.CurrentDir + QStringLiteral("\""), this);
    currentDir->setObjectName(QStringLiteral("CurrentDirLabel"));

    m_nameLabel = new QLabel(QStringLiteral("&") + layout.nameLabel, this);
    m_fileBox = new QLineEdit(this);
    m_fileBox->setObjectName(QStringLiteral("FileBox"));
    m_nameLabel->setBuddy(m_fileBox);
    NameKeyFilter::Install(m_session, m_fileBox, -32);

    m_machineLabel = new QLabel(QStringLiteral("For &Machine"), this);
    m_machineList = new QListWidget(this);
    m_machineList->setObjectName(QStringLiteral("MachineList"));
    m_machineLabel->setBuddy(m_machineList);
    m_destinationLabel = new QLabel(QStringLiteral("&To Directory"), this);
    m_directoryList = new QListWidget(this);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    m_destinationLabel->setBuddy(m_directoryList);

    m_fileOk = MakeFormButton(this, QStringLiteral("FileOk"), QStringLiteral("OK"));
    m_fileCncl = MakeFormButton(this, QStringLiteral("FileCncl"), QStringLiteral("Cancel"));
    m_fileOk->setDefault(true);

    auto* grid = new QGridLayout(this);
    grid->addWidget(m_fileLabel, 0, 0, 1, 2);
    grid->addWidget(inDirectory, 1, 0);
    grid->addWidget(currentDir, 1, 1);
    auto* checks = new QHBoxLayout;
    checks->addWidget(m_drawingsCheck);
    checks->addWidget(m_programsCheck);
    checks->addStretch(1);
    grid->addLayout(checks, 2, 0, 1, 2);
    grid->addWidget(files, 3, 0);
    grid->addWidget(m_fileList, 4, 0, 1, 2);
    grid->addWidget(m_nameLabel, 5, 0);
    grid->addWidget(m_fileBox, 5, 1);
    auto* side = new QVBoxLayout;
    side->addWidget(m_machineLabel);
    side->addWidget(m_machineList);
    side->addWidget(m_destinationLabel);
    side->addWidget(m_directoryList, 1);
    grid->addLayout(side, 3, 2, 3, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_fileOk);
    buttons->addWidget(m_fileCncl);
    grid->addLayout(buttons, 6, 0, 1, 3);

    const bool newName = !layout.nameLabel.isEmpty();
    m_nameLabel->setVisible(newName);
    m_fileBox->setVisible(newName);
    const bool machines = !layout.machineLabel.isEmpty();
    m_machineLabel->setVisible(machines);
    m_machineList->setVisible(machines);
    m_destinationLabel->setVisible(destinations);
    m_directoryList->setVisible(destinations);

    setTabOrder(m_drawingsCheck, m_programsCheck);
    setTabOrder(m_programsCheck, m_fileList);
    setTabOrder(m_fileList, m_fileBox);
    setTabOrder(m_fileBox, m_machineList);
    setTabOrder(m_machineList, m_directoryList);
    setTabOrder(m_directoryList, m_fileOk);
    setTabOrder(m_fileOk, m_fileCncl);

    connect(m_drawingsCheck, &QCheckBox::toggled, this, &FileForm::FileCheck_Click);
    connect(m_programsCheck, &QCheckBox::toggled, this, &FileForm::FileCheck_Click);
    connect(m_fileList, &QListWidget::currentRowChanged, this, &FileForm::FileList_CurrentChanged);
    connect(m_fileList, &QListWidget::itemDoubleClicked, this, &FileForm::FileList_DblClick);
    // However a machine is chosen (arrows, typing its first letter, a click, even on the machine
    // chosen already), the operator goes on in its directories.
    connect(m_machineList, &QListWidget::currentRowChanged, this, &FileForm::MachineList_CurrentChanged);
    connect(m_machineList, &QListWidget::itemClicked, this, [this] { m_directoryList->setFocus(); });
    connect(m_machineList, &QListWidget::itemDoubleClicked, this, [this] { m_directoryList->setFocus(); });
    connect(m_directoryList, &QListWidget::currentRowChanged, this, &FileForm::DirectoryList_CurrentChanged);
    connect(m_fileOk, &QPushButton::clicked, this, &FileForm::FileOk_Click);
    connect(m_fileCncl, &QPushButton::clicked, this, &QDialog::reject);
}

int FileForm::Kind() const {
    return (m_drawingsCheck->isChecked() ? 1 : 0) + (m_programsCheck->isChecked() ? 2 : 0);
}

void FileForm::FillFileList(const QString& nameToSelect) {
    const GlobalSettings& g = m_session.settings;
    m_filling = true;
    ListModel model;
    kestrova::FillFileList(m_session, model, g.MachineDir, g.CurrentDir, nameToSelect, Selection::Named,
                           Kind(), {});
    FillListWidget(m_fileList, model);
    if (model.selected >= 0)
        m_fileList->item(model.selected)->setSelected(true);
    m_filling = false;
    FileList_CurrentChanged();
}

void FileForm::FillDestinations(const QString& machineDir) {
    const QSignalBlocker quiet(m_directoryList);
    ListModel model;
    FillDirectoryList(m_session, model, machineDir, m_session.settings.CurrentDir, true, true,
                      Selection::Named);
    FillListWidget(m_directoryList, model);
}

void FileForm::FileCheck_Click() {
    if (m_filling)
        return;
    FillFileList(m_fileList->currentItem() ? m_fileList->currentItem()->text() : QString());
}

void FileForm::FileList_CurrentChanged() {
    // The name to rename or copy from starts as the new name, for the operator to change.
    if (m_filling || m_fileBox->isHidden())
        return;
    m_fileBox->setText(m_fileList->currentItem() ? m_fileList->currentItem()->text() : QString());
}

void FileForm::FileList_DblClick() {
    if (m_action == 1)
        FileOk_Click();
    else if (m_action <= 3)
        m_fileBox->setFocus();
    else
        m_directoryList->setFocus();
}

void FileForm::MachineList_CurrentChanged(int row) {
    if (row < 0)
        return;
    const int number = m_machineList->item(row)->data(Qt::UserRole).toInt();
    FillDestinations(MachineDirOf(m_session.settings, number));
    m_directoryList->setFocus();
}

void FileForm::DirectoryList_CurrentChanged(int row) {
    if (row < 0)
        return;
    const QString entry = TrimBlanks(m_directoryList->item(row)->text());
    if (HasColon(entry) && !DriveReadyOrRefused(m_session, entry, DiscNotReady)) {
        const QSignalBlocker quiet(m_directoryList);
        m_directoryList->setCurrentRow(-1);
        m_directoryList->clearSelection();
    }
}

void FileForm::FileOk_Click() {
    FileChoice choice;
    choice.action = m_action;
    choice.kind = Kind();
    for (int row = 0; row < m_fileList->count(); ++row)
        if (m_fileList->item(row)->isSelected())
            choice.names << m_fileList->item(row)->text();
    choice.newName = m_fileBox->text();
    if (const QListWidgetItem* item = m_directoryList->currentItem(); item && item->isSelected())
        choice.destination = item->text();
    choice.machineChoice = !m_machineList->isHidden();
    if (const QListWidgetItem* item = m_machineList->currentItem(); item && item->isSelected())
        choice.machineNumber = item->data(Qt::UserRole).toInt();

    FileOkOutcome outcome = FileOkOutcome::Done;
    (void)Guarded(m_session.messages, [&] { outcome = FileOk(m_session, choice); });
    switch (outcome) {
    case FileOkOutcome::FocusFileList:
        m_fileList->setFocus();
        break;
    case FileOkOutcome::FocusFileBox:
        m_fileBox->setFocus();
        m_fileBox->selectAll();
        break;
    case FileOkOutcome::FocusDirectoryList:
        m_directoryList->setFocus();
        break;
    case FileOkOutcome::FocusMachineList:
        m_machineList->setFocus();
        break;
    case FileOkOutcome::Done:
        FillFileList(m_action == 2 || m_action == 3 ? TrimBlanks(m_fileBox->text()) : QString());
        m_fileList->setFocus();
        break;
    }
}

} // namespace kestrova
