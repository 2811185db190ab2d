#include "Frontend/QtMessageService.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMessageBox>

namespace kestrova {

namespace {

// An operator pastes a refusal or an error into a mail to the office: Ctrl+C copies the whole
// text, title aside, and the mouse can select part of it, on every host alike.
class CopyableMessageBox final : public QMessageBox {
public:
    CopyableMessageBox(Icon icon, const QString& title, const QString& text, QWidget* parent)
        : QMessageBox(icon, title, text, QMessageBox::NoButton, parent) {
        setTextInteractionFlags(Qt::TextSelectableByMouse);
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Copy)) {
            QGuiApplication::clipboard()->setText(text());
            event->accept();
            return;
        }
        QMessageBox::keyPressEvent(event);
    }
};

struct ButtonSet {
    QList<QMessageBox::StandardButton> buttons;
};

ButtonSet ButtonsFor(Buttons buttons) {
    switch (buttons) {
    case Buttons::Ok:
        return {{QMessageBox::Ok}};
    case Buttons::OkCancel:
        return {{QMessageBox::Ok, QMessageBox::Cancel}};
    case Buttons::AbortRetryIgnore:
        return {{QMessageBox::Abort, QMessageBox::Retry, QMessageBox::Ignore}};
    case Buttons::YesNoCancel:
        return {{QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel}};
    case Buttons::YesNo:
        return {{QMessageBox::Yes, QMessageBox::No}};
    case Buttons::RetryCancel:
        return {{QMessageBox::Retry, QMessageBox::Cancel}};
    }
    return {{QMessageBox::Ok}};
}

QMessageBox::Icon IconFor(Icon icon) {
    switch (icon) {
    case Icon::None:
        return QMessageBox::NoIcon;
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

Answer AnswerFor(int button) {
    switch (button) {
    case QMessageBox::Ok:
        return Answer::Ok;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    case QMessageBox::Abort:
        return Answer::Abort;
    case QMessageBox::Retry:
        return Answer::Retry;
    case QMessageBox::Ignore:
        return Answer::Ignore;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

} // namespace

Answer QtMessageService::Show(const Message& message) {
    // Texts are single-byte; on screen they are Windows-1252, whose printable characters the
    // message box shows as they are.
    CopyableMessageBox box(IconFor(message.icon), message.title, message.text, m_parent);
    const ButtonSet set = ButtonsFor(message.buttons);
    QMessageBox::StandardButtons all;
    for (auto b : set.buttons)
        all |= b;
    box.setStandardButtons(all);
    const int index = qBound(1, message.defaultButton, int(set.buttons.size())) - 1;
    box.setDefaultButton(set.buttons.at(index));
    return AnswerFor(box.exec());
}

void QtMessageService::Beep() {
    QApplication::beep();
}

void QtMessageService::SetBusy(bool busy) {
    if (busy)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}

} // namespace kestrova
