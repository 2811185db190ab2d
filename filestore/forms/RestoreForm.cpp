#include "filestore/forms/RestoreForm.h"

#include "filestore/DrawingRestore.h"
#include "filestore/Listings.h"
#include "filestore/forms/FormParts.h"
#include "filestore/forms/NameKeyFilter.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace kestrova {

RestoreForm::RestoreForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("RestoreForm"));
    setWindowTitle(QStringLiteral("Restore Drawing"));
    m_nameCombo = new QComboBox(this);
    m_nameCombo->setObjectName(QStringLiteral("NameCombo"));
    m_nameCombo->setEditable(true);
    m_nameCombo->setInsertPolicy(QComboBox::NoInsert);
    NameKeyFilter::Install(session, m_nameCombo->lineEdit(), -32);
    auto* nameLabel = new QLabel(QStringLiteral("Restore &As"), this);
    nameLabel->setBuddy(m_nameCombo);
    m_directoryList = new QListWidget(this);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    auto* directoryLabel = new QLabel(QStringLiteral("In &Directory"), this);
    directoryLabel->setBuddy(m_directoryList);
    m_restoreOk = MakeFormButton(this, QStringLiteral("RestoreOk"), QStringLiteral("OK"));
    m_restoreCncl = MakeFormButton(this, QStringLiteral("RestoreCncl"), QStringLiteral("Cancel"));
    m_restoreOk->setDefault(true);

    auto* grid = new QGridLayout(this);
    grid->addWidget(nameLabel, 0, 0);
    grid->addWidget(m_nameCombo, 1, 0);
    grid->addWidget(directoryLabel, 2, 0);
    grid->addWidget(m_directoryList, 3, 0);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_restoreOk);
    buttons->addWidget(m_restoreCncl);
    grid->addLayout(buttons, 4, 0);

    const GlobalSettings& g = session.settings;
    ListModel directories;
    FillDirectoryList(session, directories, g.MachineDir, g.CurrentDir, false, true, Selection::Named);
    FillListWidget(m_directoryList, directories);
    FillNames();
    m_nameCombo->setCurrentText(QString());
    m_nameCombo->setFocus();

    connect(m_directoryList, &QListWidget::currentRowChanged, this, &RestoreForm::FillNames);
    connect(m_restoreOk, &QPushButton::clicked, this, &RestoreForm::RestoreOk_Click);
    connect(m_restoreCncl, &QPushButton::clicked, this, &QDialog::reject);
}

// The drawings of the chosen directory, to restore over one of them; the typed name stays.
void RestoreForm::FillNames() {
    const QString typed = m_nameCombo->currentText();
    const QListWidgetItem* item = m_directoryList->currentItem();
    ListModel drawings;
    if (item)
        FillFileList(m_session, drawings, m_session.settings.MachineDir, item->text(), QString(),
                     Selection::None, 1, {});
    m_nameCombo->clear();
    m_nameCombo->addItems(drawings.entries);
    m_nameCombo->setCurrentText(typed);
}

void RestoreForm::RestoreOk_Click() {
    const QListWidgetItem* item = m_directoryList->currentItem();
    const QString directory = item && item->isSelected() ? item->text() : QString();
    RestoreOutcome outcome = RestoreOutcome::Stay;
    if (!Guarded(m_session.messages,
                 [&] { outcome = RestoreDrawing(m_session, m_nameCombo->currentText(), directory); }))
        return;
    switch (outcome) {
    case RestoreOutcome::FocusName:
        m_nameCombo->setFocus();
        m_nameCombo->lineEdit()->selectAll();
        break;
    case RestoreOutcome::FocusList:
        m_directoryList->setFocus();
        break;
    case RestoreOutcome::Stay:
        break;
    case RestoreOutcome::Done:
        accept();
        break;
    }
}

} // namespace kestrova
