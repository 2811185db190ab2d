#pragma once

#include <functional>
#include <memory>

namespace kestrova {

class HostSignal;

// SIGTERM and SIGINT, turned into a signal of the event loop, so that a front end asked to end
// by the host closes its window the ordinary way and everything that closing does still runs.
// One instance at a time; the host's default handling returns when it goes.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> onRequest);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    std::function<void()> m_onRequest;
    std::unique_ptr<HostSignal> m_term;
    std::unique_ptr<HostSignal> m_interrupt;
};

} // namespace kestrova
