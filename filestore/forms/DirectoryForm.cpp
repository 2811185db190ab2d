#include "filestore/forms/DirectoryForm.h"

#include "filestore/Directories.h"
#include "filestore/Listings.h"
#include "filestore/forms/FormParts.h"
#include "filestore/forms/NameKeyFilter.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

DirectoryForm::DirectoryForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("DirectoryForm"));
    m_action = session.settings.DirectoryOperation;
    if (m_action < 1 || m_action > 4)
        m_action = 1;
    const DirectoryFormLayout layout = DirectoryFormLayoutOf(m_action);
    setWindowTitle(layout.caption);

    m_listLabel = new QLabel(QStringLiteral("&") + layout.listLabel, this);
    m_listLabel->setObjectName(QStringLiteral("DirectoryLabel1"));
    m_directoryList = new QListWidget(this);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    m_listLabel->setBuddy(m_directoryList);
    m_nameLabel = new QLabel(QStringLiteral("&") + layout.nameLabel, this);
    m_nameLabel->setObjectName(QStringLiteral("DirectoryLabel2"));
    m_directoryBox = new QLineEdit(this);
    m_directoryBox->setObjectName(QStringLiteral("DirectoryBox"));
    m_nameLabel->setBuddy(m_directoryBox);
    NameKeyFilter::Install(session, m_directoryBox, -32);
    m_directoryOk = MakeFormButton(this, QStringLiteral("DirectoryOk"), QStringLiteral("OK"));
    m_directoryCncl = MakeFormButton(this, QStringLiteral("DirectoryCncl"), QStringLiteral("Cancel"));
    m_directoryOk->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_directoryOk);
    buttons->addWidget(m_directoryCncl);
    auto* box = new QVBoxLayout(this);
    box->addWidget(m_listLabel);
    box->addWidget(m_directoryList, 1);
    box->addWidget(m_nameLabel);
    box->addWidget(m_directoryBox);
    box->addLayout(buttons);

    const bool list = !layout.listLabel.isEmpty();
    const bool name = !layout.nameLabel.isEmpty();
    m_listLabel->setVisible(list);
    m_directoryList->setVisible(list);
    m_nameLabel->setVisible(name);
    m_directoryBox->setVisible(name);
    if (list) {
        const GlobalSettings& g = session.settings;
        ListModel model;
        FillDirectoryList(session, model, g.MachineDir, g.CurrentDir, layout.withDrives, false,
                          layout.selectFirst ? Selection::First : Selection::None);
        FillListWidget(m_directoryList, model);
        m_directoryList->setFocus();
    } else {
        m_directoryBox->setFocus();
    }

    connect(m_directoryOk, &QPushButton::clicked, this, &DirectoryForm::DirectoryOk_Click);
    connect(m_directoryCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_directoryList, &QListWidget::itemDoubleClicked, this, [this] {
        if (m_action == 3)
            m_directoryBox->setFocus();
        else
            DirectoryOk_Click();
    });
}

void DirectoryForm::DirectoryOk_Click() {
    const QListWidgetItem* item = m_directoryList->currentItem();
    const QString chosen = item && item->isSelected() ? item->text() : QString();
    DirectoryOkOutcome outcome = DirectoryOkOutcome::Stay;
    if (!Guarded(m_session.messages,
                 [&] { outcome = DirectoryOk(m_session, m_action, chosen, m_directoryBox->text()); }))
        return;
    switch (outcome) {
    case DirectoryOkOutcome::FocusList:
        m_directoryList->setFocus();
        break;
    case DirectoryOkOutcome::FocusBox:
        m_directoryBox->setFocus();
        m_directoryBox->selectAll();
        break;
    case DirectoryOkOutcome::Stay:
        break;
    case DirectoryOkOutcome::Done:
        accept();
        break;
    }
}

} // namespace kestrova
