#pragma once

#include "tests/comms/EventScript.h"

#include <QApplication>
#include <QDialog>
#include <functional>

namespace kestrova::testing {

// Plays the operator on the next modal form of that name ("SearchForm") that opens: the action
// runs once the form shows, inside its own event loop. A form still open after the action is
// cancelled, so that a test that fails ends instead of waiting for a hand that never comes.
inline void OnModal(QObject* owner, const QString& formName, std::function<void(QDialog*)> action) {
    const auto open = [formName] {
        auto* form = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        return form && form->objectName() == formName ? form : nullptr;
    };
    When(
        owner, [open] { return open() != nullptr; },
        [open, action] {
            QDialog* form = open();
            action(form);
            if (form->isVisible())
                form->reject();
        });
}

} // namespace kestrova::testing
