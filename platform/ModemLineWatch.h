#pragma once

#include <QObject>
#include <atomic>
#include <future>
#include <memory>
#include <thread>

namespace kestrova {

// Waits for the modem lines of an open serial device on a thread of its own, in the kernel's
// wait for a line change (TIOCMIWAIT), so that a change of any length wakes it and the
// user-interface thread never polls. Each change raises Changed there (a queued signal); the
// receiver reads the kernel's counters and levels itself, so that every reading of them comes
// from one thread, in order.
//
// A device that refuses the wait (a pseudo-terminal, a driver without it) ends the thread at
// once, quietly: Ended tells why, and nothing else happens. Stop wakes the wait with a signal of
// its own, sent again every few milliseconds until the thread has ended, so a signal that comes
// just before the thread enters the wait cannot leave it asleep.
class ModemLineWatch : public QObject {
    Q_OBJECT
public:
    explicit ModemLineWatch(QObject* parent = nullptr);
    ~ModemLineWatch() override;
    ModemLineWatch(const ModemLineWatch&) = delete;
    ModemLineWatch& operator=(const ModemLineWatch&) = delete;

    // Watches the open descriptor fd until Stop; a watch already running is stopped first. The
    // descriptor must stay open until Stop returns.
    void Start(int fd);
    // Ends the watch and waits for its thread; nothing is raised afterwards.
    void Stop();
    [[nodiscard]] bool Running() const { return m_thread.joinable(); }

Q_SIGNALS:
    // A modem line changed (maybe more than once) since the last look.
    void Changed();
    // The device refused the wait or failed: the error number. The watch is over.
    void Ended(int error);

private:
    void Run(int fd, unsigned generation);

    std::thread m_thread;
    std::atomic<bool> m_stop{false};
    std::future<void> m_done;
    // Changes posted by a watch that has been stopped since are dropped when they arrive.
    unsigned m_generation = 0;
};

} // namespace kestrova
