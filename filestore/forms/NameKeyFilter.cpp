#include "filestore/forms/NameKeyFilter.h"

#include "filestore/KeyFilter.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QValidator>

namespace kestrova {

namespace {

// Holds a box to what its filter could have taken key by key. The box undoes an edit that the
// validator calls invalid (a paste, a drop, an input method's text) and keeps what it held.
class FilterValidator : public QValidator {
public:
    FilterValidator(int mode, QObject* parent) : QValidator(parent), m_mode(mode) {}
    State validate(QString& input, int&) const override {
        return BoxTextFitsFilter(input, m_mode) ? Acceptable : Invalid;
    }

private:
    int m_mode;
};

} // namespace

NameKeyFilter::NameKeyFilter(Session& session, QLineEdit* box, int mode)
    : QObject(box), m_session(session), m_box(box), m_mode(mode) {}

void NameKeyFilter::Install(Session& session, QLineEdit* box, int mode) {
    Attach(session, box, mode);
}

void NameKeyFilter::Install(Session& session, QComboBox* box, int mode) {
    box->installEventFilter(Attach(session, box->lineEdit(), mode));
}

NameKeyFilter* NameKeyFilter::Attach(Session& session, QLineEdit* box, int mode) {
    auto* filter = new NameKeyFilter(session, box, mode);
    box->installEventFilter(filter);
    box->setValidator(new FilterValidator(mode, filter));
    // The box reports a refusal also when a program sets a text the filter would not take; that
    // clears the undo history, while the operator's refused edit is still there to be undone.
    connect(box, &QLineEdit::inputRejected, filter, [filter] {
        if (filter->m_box->isUndoAvailable())
            filter->m_session.messages.Beep();
    });
    return filter;
}

bool NameKeyFilter::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))
        return false; // a shortcut; what it brings in is checked as a whole
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
