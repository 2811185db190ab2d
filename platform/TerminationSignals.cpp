#include "platform/TerminationSignals.h"

#include "platform/HostSignal.h"

#include <csignal>

namespace kestrova {

TerminationSignals::TerminationSignals(std::function<void()> onRequest) : m_onRequest(std::move(onRequest)) {
    m_term = std::make_unique<HostSignal>(SIGTERM, [this] { m_onRequest(); });
    m_interrupt = std::make_unique<HostSignal>(SIGINT, [this] { m_onRequest(); });
}

TerminationSignals::~TerminationSignals() = default;

} // namespace kestrova
