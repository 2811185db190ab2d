#include "platform/ModemLineWatch.h"

#include <QMetaObject>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <mutex>
#include <pthread.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace kestrova {

namespace {

// The signal that wakes a waiting thread. Its handler does nothing; installed without
// SA_RESTART, it makes the wait return EINTR instead of going on.
int WakeSignal() {
    return SIGRTMIN + 4;
}

void InstallWakeHandler() {
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0;
        ::sigaction(WakeSignal(), &action, nullptr);
    });
}

// How often Stop sends its signal again while the thread has not ended.
constexpr auto WakeAgain = std::chrono::milliseconds(5);

} // namespace

ModemLineWatch::ModemLineWatch(QObject* parent) : QObject(parent) {}

ModemLineWatch::~ModemLineWatch() {
    Stop();
}

void ModemLineWatch::Start(int fd) {
    Stop();
    InstallWakeHandler();
    m_stop = false;
    std::promise<void> done;
    m_done = done.get_future();
    m_thread = std::thread([this, fd, generation = m_generation, done = std::move(done)]() mutable {
        Run(fd, generation);
        done.set_value();
    });
}

void ModemLineWatch::Run(int fd, unsigned generation) {
    constexpr int Lines = TIOCM_CTS | TIOCM_DSR | TIOCM_CD | TIOCM_RNG;
    int error = 0;
    while (!m_stop.load()) {
        if (::ioctl(fd, TIOCMIWAIT, Lines) == 0) {
            QMetaObject::invokeMethod(
                this,
                [this, generation] {
                    if (generation == m_generation)
                        Q_EMIT Changed();
                },
                Qt::QueuedConnection);
            continue;
        }
        if (errno == EINTR)
            continue; // Stop's signal, or another one: the flag decides
        error = errno;
        break;
    }
    if (error != 0)
        QMetaObject::invokeMethod(
            this,
            [this, generation, error] {
                if (generation == m_generation)
                    Q_EMIT Ended(error);
            },
            Qt::QueuedConnection);
}

void ModemLineWatch::Stop() {
    if (!m_thread.joinable())
        return;
    ++m_generation;
    m_stop = true;
    const pthread_t handle = m_thread.native_handle();
    do
        ::pthread_kill(handle, WakeSignal());
    while (m_done.wait_for(WakeAgain) != std::future_status::ready);
    m_thread.join();
}

} // namespace kestrova
