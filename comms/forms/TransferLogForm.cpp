#include "comms/forms/TransferLogForm.h"

#include "comms/TransferLog.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace kestrova {

TransferLogForm::TransferLogForm(Session& session, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("TransferLogForm"));
    setWindowTitle(QStringLiteral("Transfer Log"));
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("TransferLogText"));
    m_text->setReadOnly(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    QStringList lines;
    try {
        lines = LastTransferLogLines(session, Shown);
    } catch (const SystemError& e) {
        lines << e.text();
    }
    m_text->setPlainText(lines.isEmpty() ? QStringLiteral("No transfers logged yet.") : lines.join(u'\n'));
    m_text->verticalScrollBar()->setValue(m_text->verticalScrollBar()->maximum());

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(720, 360);
}

QString TransferLogForm::Text() const {
    return m_text->toPlainText();
}

} // namespace kestrova
