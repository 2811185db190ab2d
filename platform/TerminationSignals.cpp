#include "platform/TerminationSignals.h"

#include <QSocketNotifier>

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace kestrova {

#ifndef _WIN32

namespace {

// The handler may only write a byte; everything else happens in the event loop.
int g_pair[2] = {-1, -1};

extern "C" void OnTerminationSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_pair[0], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onRequest) : m_onRequest(std::move(onRequest)) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pair) != 0) {
        qWarning("Kestrova: SIGTERM and SIGINT will end the program without closing its window");
        return;
    }
    ::fcntl(g_pair[0], F_SETFL, ::fcntl(g_pair[0], F_GETFL) | O_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(g_pair[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { Drain(); });

    struct sigaction action = {};
    action.sa_handler = OnTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
    if (!m_notifier)
        return;
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
    m_notifier.reset();
    ::close(g_pair[0]);
    ::close(g_pair[1]);
    g_pair[0] = g_pair[1] = -1;
}

void TerminationSignals::Drain() {
    char bytes[16];
    [[maybe_unused]] const ssize_t got = ::read(g_pair[1], bytes, sizeof bytes);
    m_onRequest();
}

#else

TerminationSignals::TerminationSignals(std::function<void()> onRequest) : m_onRequest(std::move(onRequest)) {}
TerminationSignals::~TerminationSignals() = default;
void TerminationSignals::Drain() {}

#endif

} // namespace kestrova
