#include "platform/HostSignal.h"

#include <QSocketNotifier>
#include <atomic>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace kestrova {

#ifndef _WIN32

namespace {

// The writing end of each signal's pair; the handler may only write a byte.
std::atomic<int> g_writeEnds[NSIG];

extern "C" void OnHostSignal(int signal) {
    const char byte = 1;
    if (signal > 0 && signal < NSIG) [[maybe_unused]]
        const ssize_t written = ::write(g_writeEnds[signal].load(), &byte, 1);
}

} // namespace

HostSignal::HostSignal(int signal, std::function<void()> onSignal)
    : m_signal(signal), m_onSignal(std::move(onSignal)) {
    if (signal <= 0 || signal >= NSIG || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_pair) != 0) {
        qWarning("Kestrova: signal %d keeps the host's default handling", signal);
        return;
    }
    ::fcntl(m_pair[0], F_SETFL, ::fcntl(m_pair[0], F_GETFL) | O_NONBLOCK);
    g_writeEnds[signal] = m_pair[0];
    m_notifier = std::make_unique<QSocketNotifier>(m_pair[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { Drain(); });

    struct sigaction action = {};
    action.sa_handler = OnHostSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

HostSignal::~HostSignal() {
    if (!m_notifier)
        return;
    ::signal(m_signal, SIG_DFL);
    m_notifier.reset();
    g_writeEnds[m_signal] = -1;
    ::close(m_pair[0]);
    ::close(m_pair[1]);
}

void HostSignal::Drain() {
    char bytes[16];
    [[maybe_unused]] const ssize_t got = ::read(m_pair[1], bytes, sizeof bytes);
    m_onSignal();
}

#else

HostSignal::HostSignal(int signal, std::function<void()> onSignal)
    : m_signal(signal), m_onSignal(std::move(onSignal)) {}
HostSignal::~HostSignal() = default;
void HostSignal::Drain() {}

#endif

} // namespace kestrova
