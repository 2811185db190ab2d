#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace kestrova {

// A signal of the host (SIGTERM, SIGHUP, ...) turned into a call in the event loop: the handler
// only writes a byte, and everything else happens where it is safe. One instance per signal at a
// time; the host's default handling returns when it goes. Without such signals (Windows) it is
// never called.
class HostSignal {
public:
    HostSignal(int signal, std::function<void()> onSignal);
    ~HostSignal();
    HostSignal(const HostSignal&) = delete;
    HostSignal& operator=(const HostSignal&) = delete;

private:
    void Drain();
    int m_signal;
    int m_pair[2] = {-1, -1};
    std::function<void()> m_onSignal;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace kestrova
