#include "comms/forms/DncMonitorForm.h"

#include "comms/DncMonitor.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kestrova {

DncMonitorForm::DncMonitorForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("DncMonitorForm"));
    setWindowTitle(QStringLiteral("DNC Monitor"));
    m_heading = new QLabel(this);
    m_heading->setObjectName(QStringLiteral("DncHeading"));

    m_lines = new QTableWidget(0, 4, this);
    m_lines->setObjectName(QStringLiteral("DncLines"));
    m_lines->setHorizontalHeaderLabels({QStringLiteral("Machine"), QStringLiteral("Port"),
                                        QStringLiteral("State"), QStringLiteral("Last Error")});
    m_lines->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_lines->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_lines->setSelectionMode(QAbstractItemView::SingleSelection);
    m_lines->setTabKeyNavigation(false); // Tab leaves the list, as in every other form
    m_lines->verticalHeader()->hide();
    m_lines->horizontalHeader()->setStretchLastSection(true);
    auto* linesLabel = new QLabel(QStringLiteral("Served &Lines"), this);
    linesLabel->setBuddy(m_lines);

    m_transfers = new QPlainTextEdit(this);
    m_transfers->setObjectName(QStringLiteral("DncTransfers"));
    m_transfers->setReadOnly(true);
    m_transfers->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_transfers->setTabChangesFocus(true);
    auto* transfersLabel = new QLabel(QStringLiteral("Last &Transfers"), this);
    transfersLabel->setBuddy(m_transfers);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_heading);
    layout->addWidget(linesLabel);
    layout->addWidget(m_lines, 2);
    layout->addWidget(transfersLabel);
    layout->addWidget(m_transfers, 1);
    layout->addWidget(buttons);
    setTabOrder(m_lines, m_transfers);
    setTabOrder(m_transfers, buttons->button(QDialogButtonBox::Close));
    resize(860, 480);

    Refresh();
    m_lines->setFocus();
    connect(&m_look, &QTimer::timeout, this, &DncMonitorForm::Refresh);
    m_look.start(LookMs);
}

void DncMonitorForm::Refresh() {
    const DncMonitorView view = LookAtDncService(m_session, Transfers);
    m_heading->setText(view.Heading);
    // The operator's place in the list stays where it was while the states change under it.
    const int current = m_lines->currentRow();
    m_lines->setRowCount(int(view.Rows.size()));
    for (int row = 0; row < view.Rows.size(); ++row) {
        const DncMonitorRow& line = view.Rows.at(row);
        const QString cells[] = {line.Machine, line.Port, line.State, line.LastError};
        for (int column = 0; column < 4; ++column) {
            QTableWidgetItem* item = m_lines->item(row, column);
            if (!item) {
                item = new QTableWidgetItem;
                m_lines->setItem(row, column, item);
            }
            item->setText(cells[column]);
        }
    }
    if (!view.Rows.isEmpty())
        m_lines->setCurrentCell(current >= 0 && current < view.Rows.size() ? current : 0, 0);
    m_lines->resizeColumnsToContents();

    const QString text = view.LastTransfers.isEmpty() ? QStringLiteral("No transfers logged yet.")
                                                      : view.LastTransfers.join(u'\n');
    if (m_transfers->toPlainText() != text) {
        m_transfers->setPlainText(text);
        m_transfers->verticalScrollBar()->setValue(m_transfers->verticalScrollBar()->maximum());
    }
}

} // namespace kestrova
