#include "comms/forms/TransferDialog.h"

#include "platform/Errors.h"

#include <QCloseEvent>
#include <QListWidget>
#include <QPushButton>
#include <QScopeGuard>

namespace kestrova {

TransferDialog::TransferDialog(Session& session, const SerialLineFactory& lines, QWidget* parent)
    : QDialog(parent), m_session(session), m_line(lines()) {}

TransferDialog::~TransferDialog() = default;

void TransferDialog::reject() {
    if (m_busy) {
        Abort();
        return;
    }
    QDialog::reject();
}

void TransferDialog::closeEvent(QCloseEvent* event) {
    if (m_busy) {
        Abort();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void TransferDialog::Load(const std::function<void()>& formLoad) {
    m_loaded = Guarded(formLoad);
}

void TransferDialog::Transfer(const std::function<void()>& transfer) {
    m_busy = true;
    const auto done = qScopeGuard([this] { m_busy = false; });
    (void)Guarded(transfer);
}

bool TransferDialog::Guarded(const std::function<void()>& step) {
    try {
        step();
        return true;
    } catch (const SystemError& e) {
        m_session.messages.ShowError(e.text());
        return false;
    }
}

QPushButton* TransferDialog::Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

void TransferDialog::Fill(QListWidget* list, const ListModel& model) {
    list->clear();
    list->addItems(model.entries);
    list->setCurrentRow(model.selected);
}

} // namespace kestrova
