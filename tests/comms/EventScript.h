#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

namespace kestrova::testing {

// Runs an action once, at the first turn of the event loop at which a condition holds: the way
// a test plays the operator or the machine control while a transfer waits and lets events run.
// The check runs at every turn, so it sees each character of a send as it goes out.
inline void When(QObject* owner, std::function<bool()> condition, std::function<void()> action) {
    auto* timer = new QTimer(owner);
    timer->setInterval(0);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, condition, action] {
        if (!condition())
            return;
        timer->stop();
        timer->deleteLater();
        action();
    });
    timer->start();
}

} // namespace kestrova::testing
