#include "filestore/forms/MachineForm.h"

#include "filestore/MachineSelection.h"
#include "filestore/forms/FormParts.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kestrova {

MachineForm::MachineForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("MachineForm"));
    setWindowTitle(QStringLiteral("Select Machine"));
    m_machineList = new QTreeWidget(this);
    m_machineList->setObjectName(QStringLiteral("MachineList"));
    m_machineList->setColumnCount(3);
    m_machineList->setHeaderLabels(
        {QStringLiteral("Number"), QStringLiteral("Description"), QStringLiteral("Directory")});
    m_machineList->setRootIsDecorated(false);
    m_machineList->setUniformRowHeights(true);
    m_machineList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_machineList->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_machineList->setMinimumWidth(460);
    auto* label = new QLabel(QStringLiteral("&Machines"), this);
    label->setBuddy(m_machineList);
    m_machineOk = MakeFormButton(this, QStringLiteral("MachineOk"), QStringLiteral("OK"));
    m_machineCncl = MakeFormButton(this, QStringLiteral("MachineCncl"), QStringLiteral("Cancel"));
    m_machineOk->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_machineOk);
    buttons->addWidget(m_machineCncl);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_machineList, 1);
    layout->addLayout(buttons);

    for (const MachineRow& row : MachineRows(session.settings)) {
        auto* item =
            new QTreeWidgetItem(m_machineList, {QString::number(row.number), row.description, row.directory});
        item->setData(0, Qt::UserRole, row.number);
        if (row.number == session.settings.MachineNumber)
            m_machineList->setCurrentItem(item);
    }
    m_machineList->setFocus();

    connect(m_machineOk, &QPushButton::clicked, this, &MachineForm::MachineOk_Click);
    connect(m_machineCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_machineList, &QTreeWidget::itemDoubleClicked, this, &MachineForm::MachineOk_Click);
}

void MachineForm::MachineOk_Click() {
    const QTreeWidgetItem* item = m_machineList->currentItem();
    if (!item) {
        m_session.messages.Refuse(QStringLiteral("No Machine Selected !"));
        m_machineList->setFocus();
        return;
    }
    m_chosen = item->data(0, Qt::UserRole).toInt();
    accept();
}

} // namespace kestrova
