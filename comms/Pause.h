#pragma once

#include <QObject>
#include <QTimer>

namespace kestrova {

// The millisecond pause between the pieces of a transmission, on one one-shot timer shared by
// every transfer. While it waits, pending events run (the abort button, the port's events), so
// it never blocks the user interface and never spins: the loop sleeps until the next event.
// One pause runs at a time; a pause started from an event handler during another takes the
// timer over, and the outer one ends with it.
class PauseTimer : public QObject {
public:
    explicit PauseTimer(QObject* parent = nullptr);

    // Waits ms milliseconds (below 1: not at all; above 65535: 65535).
    void Pause(int ms);
    // Ends a running pause at once, as stopping the timer always has.
    void Cancel();
    [[nodiscard]] bool Elapsed() const { return m_elapsed; }
    // The running pause's length; 0 when none runs.
    [[nodiscard]] int Interval() const { return m_timer.isActive() ? m_timer.interval() : 0; }

    // The timer every transfer shares; made on first use, on the user-interface thread.
    [[nodiscard]] static PauseTimer& Shared();

private:
    QTimer m_timer;
    bool m_elapsed = false;
};

} // namespace kestrova
