#include "comms/Pause.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QPointer>

namespace kestrova {

PauseTimer::PauseTimer(QObject* parent) : QObject(parent), m_timer(this) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { m_elapsed = true; });
}

void PauseTimer::Pause(int ms) {
    if (ms < 1)
        return;
    if (ms > 65535)
        ms = 65535;
    m_elapsed = false;
    m_timer.stop();
    m_timer.setInterval(ms);
    m_timer.start();
    while (!m_elapsed && m_timer.interval() != 0 && m_timer.isActive())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    m_timer.stop();
    m_timer.setInterval(0);
}

void PauseTimer::Cancel() {
    m_timer.stop();
    m_timer.setInterval(0);
}

PauseTimer& PauseTimer::Shared() {
    // Owned by the application, so it goes with it; a later application gets a new one.
    static QPointer<PauseTimer> shared;
    if (!shared)
        shared = new PauseTimer(QCoreApplication::instance());
    return *shared;
}

} // namespace kestrova
