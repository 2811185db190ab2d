#include "filestore/forms/NameKeyFilter.h"

#include "filestore/KeyFilter.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace kestrova {

NameKeyFilter::NameKeyFilter(Session& session, QLineEdit* box, int mode)
    : QObject(box), m_session(session), m_box(box), m_mode(mode) {}

void NameKeyFilter::Install(Session& session, QLineEdit* box, int mode) {
    box->installEventFilter(new NameKeyFilter(session, box, mode));
}

bool NameKeyFilter::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_box || event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    int code = 0;
    if (key->key() == Qt::Key_Backspace)
        code = 8;
    else if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
        code = 13;
    else if (!key->text().isEmpty() && key->text().at(0).unicode() >= 32)
        code = key->text().at(0).unicode();
    if (code == 0)
        return false;
    m_session.settings.KeyFilterMode = Int16::From(m_mode);
    return FilterNameKey(m_session.messages, code, m_mode, m_box->text(),
                         int(m_box->selectedText().size())) == 0;
}

} // namespace kestrova
