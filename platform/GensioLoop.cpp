#include "platform/GensioLoop.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <gensio/gensio.h>
#include <gensio/gensio_os_funcs.h>
#include <gensio/gensio_unix.h>
#include <stdexcept>

namespace kestrova {

namespace {

// The library's own functions that the wrappers hand each request on to.
struct Originals {
    decltype(gensio_os_funcs::set_fd_handlers) setFdHandlers = nullptr;
    decltype(gensio_os_funcs::clear_fd_handlers) clearFdHandlers = nullptr;
    decltype(gensio_os_funcs::clear_fd_handlers_norpt) clearFdHandlersNoReport = nullptr;
    decltype(gensio_os_funcs::set_read_handler) setReadHandler = nullptr;
    decltype(gensio_os_funcs::set_write_handler) setWriteHandler = nullptr;
    decltype(gensio_os_funcs::start_timer) startTimer = nullptr;
    decltype(gensio_os_funcs::start_timer_abs) startTimerAbs = nullptr;
    decltype(gensio_os_funcs::stop_timer_with_done) stopTimerWithDone = nullptr;
    decltype(gensio_os_funcs::run) run = nullptr;
};

Originals g_originals;
QPointer<GensioLoop> g_loop;

std::chrono::nanoseconds ToDuration(const gensio_time& t) {
    return std::chrono::seconds(t.secs) + std::chrono::nanoseconds(t.nsecs);
}

} // namespace

GensioLoop& GensioLoop::Instance() {
    if (!g_loop) {
        if (!QCoreApplication::instance())
            throw std::logic_error("the network lines need the application object");
        // Owned by the application object, which outlives every line.
        g_loop = new GensioLoop(QCoreApplication::instance());
    }
    return *g_loop;
}

GensioLoop::GensioLoop(QObject* parent) : QObject(parent), m_wake(this) {
    // No wake-up signal: this thread alone makes gensio calls.
    if (gensio_unix_funcs_alloc(nullptr, 0, &m_funcs) != 0)
        throw std::runtime_error("gensio: the operating system functions cannot be set up");
    gensio_os_funcs* o = m_funcs;
    g_originals = {o->set_fd_handlers,  o->clear_fd_handlers,    o->clear_fd_handlers_norpt,
                   o->set_read_handler, o->set_write_handler,    o->start_timer,
                   o->start_timer_abs,  o->stop_timer_with_done, o->run};
    o->set_fd_handlers = &GensioLoop::SetFdHandlers;
    o->clear_fd_handlers = &GensioLoop::ClearFdHandlers;
    o->clear_fd_handlers_norpt = &GensioLoop::ClearFdHandlersNoReport;
    o->set_read_handler = &GensioLoop::SetReadHandler;
    o->set_write_handler = &GensioLoop::SetWriteHandler;
    o->start_timer = [](gensio_timer* timer, gensio_time* timeout) {
        const int result = g_originals.startTimer(timer, timeout);
        if (result == 0 && g_loop)
            g_loop->WakeAfter(ToDuration(*timeout));
        return result;
    };
    o->start_timer_abs = [](gensio_timer* timer, gensio_time* when) {
        const int result = g_originals.startTimerAbs(timer, when);
        if (result == 0 && g_loop) {
            gensio_time now{};
            gensio_os_funcs_get_monotonic_time(g_loop->m_funcs, &now);
            g_loop->WakeAfter(ToDuration(*when) - ToDuration(now));
        }
        return result;
    };
    o->stop_timer_with_done = [](gensio_timer* timer, void (*done)(gensio_timer*, void*), void* data) {
        const int result = g_originals.stopTimerWithDone(timer, done, data);
        if (g_loop)
            g_loop->WakeAfter({}); // the done call is made by the next service
        return result;
    };
    o->run = [](gensio_runner* runner) {
        const int result = g_originals.run(runner);
        if (g_loop)
            g_loop->WakeAfter({});
        return result;
    };
    m_closed = gensio_os_funcs_alloc_waiter(m_funcs);
    if (!m_closed)
        throw std::runtime_error("gensio: no memory for a waiter");
    m_wake.setSingleShot(true);
    m_wake.setTimerType(Qt::PreciseTimer);
    connect(&m_wake, &QTimer::timeout, this, &GensioLoop::OnWake);
}

GensioLoop::~GensioLoop() {
    // Lines that were still open when the program ended have freed their gensios by now, or
    // will never run again.
    m_watches.clear();
    gensio_os_funcs_free_waiter(m_funcs, m_closed);
    gensio_os_funcs_free(m_funcs);
}

void GensioLoop::Service() {
    gensio_time none{0, 0};
    // Each call handles what is ready once; a few rounds take what the first one made ready
    // (a deferred call, a write that freed room).
    for (int round = 0; round < 4; ++round)
        if (gensio_os_funcs_service(m_funcs, &none) != 0)
            break;
}

void GensioLoop::CloseAndFree(gensio* io, int ms) {
    gensio_set_callback(
        io, [](gensio*, void*, int, int, unsigned char*, gensiods*, const char* const*) { return GE_NOTSUP; },
        nullptr);
    gensio_set_read_callback_enable(io, false);
    gensio_set_write_callback_enable(io, false);
    if (gensio_close(io, &GensioLoop::Closed, this) != 0) {
        gensio_free(io); // not open: nothing to wait for
        return;
    }
    m_closing.insert(io);
    gensio_time left{ms / 1000, (ms % 1000) * 1000000};
    while (m_closing.contains(io))
        if (gensio_os_funcs_wait(m_funcs, m_closed, 1, &left) == GE_TIMEDOUT)
            break;
}

void GensioLoop::Closed(gensio* io, void* loop) {
    auto* self = static_cast<GensioLoop*>(loop);
    self->m_closing.erase(io);
    gensio_free(io);
    gensio_os_funcs_wake(self->m_funcs, self->m_closed);
}

void GensioLoop::WakeAfter(std::chrono::nanoseconds delay) {
    const auto when = std::chrono::steady_clock::now() + std::max(delay, std::chrono::nanoseconds(0));
    m_wakes.insert(when);
    const auto first = *m_wakes.begin();
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(first - std::chrono::steady_clock::now());
    const int wait = int(std::max<std::chrono::milliseconds::rep>(0, ms.count()));
    if (!m_wake.isActive() || m_wake.remainingTime() > wait)
        m_wake.start(wait);
}

void GensioLoop::OnWake() {
    Service();
    const auto now = std::chrono::steady_clock::now();
    m_wakes.erase(m_wakes.begin(), m_wakes.upper_bound(now));
    if (!m_wakes.empty()) {
        const auto ms = std::chrono::ceil<std::chrono::milliseconds>(*m_wakes.begin() - now);
        m_wake.start(int(std::max<std::chrono::milliseconds::rep>(0, ms.count())));
    }
}

void GensioLoop::Watched(gensio_iod* iod) {
    const int fd = m_funcs->iod_get_fd(iod);
    Watch& w = m_watches[fd];
    for (auto [notifier, type] :
         {std::pair{&w.read, QSocketNotifier::Read}, {&w.write, QSocketNotifier::Write}}) {
        if (*notifier)
            continue;
        *notifier = new QSocketNotifier(fd, type, this);
        (*notifier)->setEnabled(false);
        connect(*notifier, &QSocketNotifier::activated, this, &GensioLoop::Service);
    }
}

void GensioLoop::Unwatched(gensio_iod* iod) {
    const auto it = m_watches.find(m_funcs->iod_get_fd(iod));
    if (it == m_watches.end())
        return;
    // Possibly from within the notifier's own signal: it goes once control is back in the loop.
    for (QSocketNotifier* n : {it->second.read, it->second.write}) {
        n->setEnabled(false);
        n->deleteLater();
    }
    m_watches.erase(it);
}

void GensioLoop::Enable(gensio_iod* iod, bool write, bool on) {
    const auto it = m_watches.find(m_funcs->iod_get_fd(iod));
    if (it != m_watches.end())
        (write ? it->second.write : it->second.read)->setEnabled(on);
}

int GensioLoop::SetFdHandlers(gensio_iod* iod, void* data, void (*read)(gensio_iod*, void*),
                              void (*write)(gensio_iod*, void*), void (*except)(gensio_iod*, void*),
                              void (*cleared)(gensio_iod*, void*)) {
    const int result = g_originals.setFdHandlers(iod, data, read, write, except, cleared);
    if (result == 0 && g_loop)
        g_loop->Watched(iod);
    return result;
}

void GensioLoop::ClearFdHandlers(gensio_iod* iod) {
    if (g_loop)
        g_loop->Unwatched(iod);
    g_originals.clearFdHandlers(iod);
    // The cleared handler is called by the next service.
    if (g_loop)
        g_loop->WakeAfter({});
}

void GensioLoop::ClearFdHandlersNoReport(gensio_iod* iod) {
    if (g_loop)
        g_loop->Unwatched(iod);
    g_originals.clearFdHandlersNoReport(iod);
}

void GensioLoop::SetReadHandler(gensio_iod* iod, bool enable) {
    g_originals.setReadHandler(iod, enable);
    if (g_loop)
        g_loop->Enable(iod, false, enable);
}

void GensioLoop::SetWriteHandler(gensio_iod* iod, bool enable) {
    g_originals.setWriteHandler(iod, enable);
    if (g_loop)
        g_loop->Enable(iod, true, enable);
}

} // namespace kestrova
