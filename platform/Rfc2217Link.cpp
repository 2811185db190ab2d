#include "platform/Rfc2217Link.h"

#include "platform/GensioLoop.h"

#include <QElapsedTimer>
#include <QThread>
#include <cstdlib>
#include <gensio/gensio.h>
#include <gensio/sergensio.h>
#include <map>

namespace kestrova {

namespace {

// The most output kept for the library before the line is told to wait.
constexpr qsizetype PendingLimit = 4096;
// How long a closing connection is waited for, so that the device server is free for the next.
constexpr int CloseMs = 1000;
// How long the device server may take to answer each setting.
constexpr int AnswerMs = 2000;
// How long a closing line gives the device server to write out what it took.
constexpr int SettleMs = 100;
// How long an opening that the device server turned away waits before it asks again.
constexpr int RetryPauseMs = 100;

gensio_time After(int ms) {
    return {ms / 1000, (ms % 1000) * 1000000};
}

// The link of each connection. The library may still call back for a connection whose link has
// gone (an opening, or a level request that ends with the close): such a call finds no link here
// and does nothing.
std::map<const gensio*, Rfc2217Link*> g_links;

Rfc2217Link* LinkOf(const gensio* io) {
    const auto it = g_links.find(io);
    return it == g_links.end() ? nullptr : it->second;
}

QString ErrorText(int error) {
    return QString::fromUtf8(gensio_err_to_str(error));
}

// A gensio waiter, freed with the loop's functions.
class Waiter {
public:
    explicit Waiter(gensio_os_funcs* o) : m_o(o), m_waiter(gensio_os_funcs_alloc_waiter(o)) {}
    ~Waiter() {
        if (m_waiter)
            gensio_os_funcs_free_waiter(m_o, m_waiter);
    }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;
    [[nodiscard]] gensio_waiter* get() const { return m_waiter; }

private:
    gensio_os_funcs* m_o;
    gensio_waiter* m_waiter;
};

} // namespace

void Rfc2217Link::GensioFree::operator()(gensio* io) const {
    // Closes it first where it is open.
    gensio_free(io);
}

void Rfc2217Link::BlockingFree::operator()(sergensio_b* b) const {
    sergensio_b_free(b);
}

Rfc2217Link::Rfc2217Link(QObject* parent) : NetLink(parent), m_flush(this) {
    m_flush.setSingleShot(true);
    m_flush.setInterval(0);
    connect(&m_flush, &QTimer::timeout, this, &Rfc2217Link::Flush);
}

Rfc2217Link::~Rfc2217Link() {
    Flush(); // what the line handed on goes before the close
    // A device server may throw away what it has not yet written to its port when the connection
    // ends, and one closed with its notices still unread is reset rather than ended: the end of a
    // program would be lost. The device server is given a moment, its notices read meanwhile,
    // before the close. (A question would wait behind a modem-line level it never answers.)
    if (m_io && m_open && !m_dropped) {
        gensio_os_funcs* o = GensioLoop::Instance().Funcs();
        const Waiter waiter(o);
        gensio_time settle = After(SettleMs);
        (void)gensio_os_funcs_wait(o, waiter.get(), 1, &settle);
    }
    Forget();
    m_blocking.reset();
    if (m_io && m_open && !m_dropped)
        GensioLoop::Instance().CloseAndFree(m_io.release(), CloseMs);
    m_io.reset();
}

bool Rfc2217Link::Start(const NetAddress& address, QString& reason) {
    gensio_os_funcs* o = GensioLoop::Instance().Funcs();
    const QString ip = address.host.contains(u':') ? QStringLiteral("ipv6,") : QString();
    const QByteArray chain =
        QStringLiteral("telnet(rfc2217=true),tcp,%1%2,%3").arg(ip, address.host).arg(address.port).toUtf8();
    gensio* io = nullptr;
    if (const int error = str_to_gensio(chain.constData(), o, &Rfc2217Link::OnEvent, this, &io); error != 0) {
        reason = ErrorText(error);
        return false;
    }
    Forget();
    m_io.reset(io);
    g_links[io] = this;
    m_opening = true;
    if (const int error = gensio_open(io, &Rfc2217Link::OnOpenDone, this); error != 0) {
        m_opening = false;
        reason = ErrorText(error);
        return false;
    }
    return true;
}

bool Rfc2217Link::ConnectNow(const NetAddress& address, int ms, QString& reason) {
    m_dropped = true; // a failure here is the caller's to tell
    gensio_os_funcs* o = GensioLoop::Instance().Funcs();
    QElapsedTimer spent;
    spent.start();
    for (;;) {
        if (!Start(address, reason))
            return false;
        const Waiter waiter(o);
        m_openWait = waiter.get();
        gensio_time left = After(int(qMax<qint64>(0, ms - spent.elapsed())));
        while (m_opening) {
            // Runs the library alone until the open is done (Opened wakes the wait) or the time
            // is up.
            if (gensio_os_funcs_wait(o, waiter.get(), 1, &left) == GE_TIMEDOUT && m_opening) {
                m_openWait = nullptr;
                reason = QStringLiteral("no answer");
                Forget();
                m_io.reset();
                m_opening = false;
                return false;
            }
        }
        m_openWait = nullptr;
        if (m_open)
            break;
        Forget();
        m_io.reset();
        // A device server still letting go of the connection just closed turns the next one
        // away at once: asked again a moment later, within the time given.
        if (m_openError != GE_REMCLOSE || spent.elapsed() + RetryPauseMs >= ms) {
            reason = ErrorText(m_openError);
            return false;
        }
        QThread::msleep(RetryPauseMs);
    }
    m_dropped = false;
    return true;
}

void Rfc2217Link::ConnectLater(const NetAddress& address) {
    QString reason;
    if (!Start(address, reason))
        QMetaObject::invokeMethod(
            this, [this, reason] { Drop(reason); }, Qt::QueuedConnection);
}

void Rfc2217Link::OnOpenDone(gensio* io, int error, void* self) {
    Q_UNUSED(self);
    if (Rfc2217Link* link = LinkOf(io))
        link->Opened(error);
}

void Rfc2217Link::Forget() {
    if (m_io)
        g_links.erase(m_io.get());
}

void Rfc2217Link::Opened(int error) {
    m_opening = false;
    if (m_openWait)
        gensio_os_funcs_wake(GensioLoop::Instance().Funcs(), m_openWait);
    m_openError = error;
    m_open = error == 0;
    if (!m_open) {
        Drop(ErrorText(error));
        return;
    }
    gensio_set_read_callback_enable(m_io.get(), true);
    if (sergensio* sio = gensio_to_sergensio(m_io.get())) {
        // The device server is to report the three lines the line events follow.
        (void)sergensio_modemstate(sio, SERGENSIO_MODEMSTATE_CTS | SERGENSIO_MODEMSTATE_DSR |
                                            SERGENSIO_MODEMSTATE_CD);
        sergensio_b* blocking = nullptr;
        if (sergensio_b_alloc(sio, GensioLoop::Instance().Funcs(), &blocking) == 0)
            m_blocking.reset(blocking);
    }
    Q_EMIT Connected();
}

void Rfc2217Link::Drop(const QString& reason) {
    if (m_dropped)
        return;
    m_dropped = true;
    Q_EMIT Dropped(reason);
}

qsizetype Rfc2217Link::Write(const QByteArray& bytes) {
    if (!m_open || m_dropped)
        return 0;
    // Gathered and handed to the library once control is back in the loop: a transfer that
    // writes a character at a time then costs one write to the device server per round of the
    // loop, not one per character.
    const qsizetype taken = qMin(bytes.size(), qMax<qsizetype>(0, PendingLimit - m_pending.size()));
    m_pending += bytes.first(taken);
    if (taken > 0 && !m_flush.isActive())
        m_flush.start();
    return taken;
}

void Rfc2217Link::Flush() {
    if (!m_open || m_dropped || m_pending.isEmpty())
        return;
    gensiods written = 0;
    if (const int error =
            gensio_write(m_io.get(), &written, m_pending.constData(), gensiods(m_pending.size()), nullptr);
        error != 0) {
        Drop(ErrorText(error));
        return;
    }
    m_pending.remove(0, qsizetype(written));
    // The rest goes when the library has room again.
    if (!m_pending.isEmpty())
        gensio_set_write_callback_enable(m_io.get(), true);
    if (written > 0)
        Q_EMIT Written();
}

bool Rfc2217Link::Apply(const LineFraming& framing, int handshaking, bool dtr, bool rts, QString& reason) {
    // Each set-up asks with a waiting state of its own: an answer that never came to the last
    // one (a level the port has no line for) must not be taken for an answer to this one.
    sergensio* sio = gensio_to_sergensio(m_io.get());
    sergensio_b* allocated = nullptr;
    if (!sio || sergensio_b_alloc(sio, GensioLoop::Instance().Funcs(), &allocated) != 0) {
        reason = QStringLiteral("the device server does not take serial settings");
        return false;
    }
    m_blocking.reset(allocated);
    int parity = SERGENSIO_PARITY_NONE;
    switch (framing.parity) {
    case 'E':
        parity = SERGENSIO_PARITY_EVEN;
        break;
    case 'O':
        parity = SERGENSIO_PARITY_ODD;
        break;
    case 'M':
        parity = SERGENSIO_PARITY_MARK;
        break;
    case 'S':
        parity = SERGENSIO_PARITY_SPACE;
        break;
    default:
        break;
    }
    // XON/XOFF is done by the line itself; only RTS/CTS is the device server's.
    const bool hardware = (handshaking & 2) != 0;
    struct Setting {
        const char* what;
        int (*set)(sergensio_b*, int*, gensio_time*);
        int value;
    };
    const Setting settings[] = {
        {"speed", &sergensio_baud_b_timeout, framing.baud},
        {"data bits", &sergensio_datasize_b_timeout, framing.dataBits},
        {"parity", &sergensio_parity_b_timeout, parity},
        {"stop bits", &sergensio_stopbits_b_timeout, framing.stopBits},
        {"flow control", &sergensio_flowcontrol_b_timeout,
         int(hardware ? SERGENSIO_FLOWCONTROL_RTS_CTS : SERGENSIO_FLOWCONTROL_NONE)},
    };
    for (const Setting& s : settings) {
        int value = s.value;
        gensio_time wait = After(AnswerMs);
        if (const int error = s.set(m_blocking.get(), &value, &wait); error != 0) {
            reason = QStringLiteral("%1: %2").arg(QLatin1String(s.what), ErrorText(error));
            return false;
        }
        // A device server may answer with the speed its divisor really makes (19193 for 19200):
        // within 2 % it is the speed asked for, as a UART's tolerance takes it.
        const bool same =
            s.set == &sergensio_baud_b_timeout ? std::abs(value - s.value) * 50 <= s.value : value == s.value;
        if (!same) {
            reason = QStringLiteral("%1 %2 refused (%3)").arg(QLatin1String(s.what)).arg(s.value).arg(value);
            return false;
        }
    }
    // The modem-control levels are sent without waiting: a device server whose port has no
    // such lines (a pseudo-terminal behind ser2net) never answers them, and the settings asked
    // after an unanswered level would wait behind it, so such a connection is not used again.
    if (sergensio_dtr(sio, dtr ? SERGENSIO_DTR_ON : SERGENSIO_DTR_OFF, &Rfc2217Link::OnLevelAnswered, this) ==
        0)
        ++m_unanswered;
    if (!hardware && sergensio_rts(sio, rts ? SERGENSIO_RTS_ON : SERGENSIO_RTS_OFF,
                                   &Rfc2217Link::OnLevelAnswered, this) == 0)
        ++m_unanswered;
    return true;
}

void Rfc2217Link::OnLevelAnswered(sergensio* sio, int error, unsigned level, void* self) {
    Q_UNUSED(error);
    Q_UNUSED(level);
    Q_UNUSED(self);
    if (Rfc2217Link* link = LinkOf(sergensio_to_gensio(sio)))
        --link->m_unanswered;
}

int Rfc2217Link::OnEvent(gensio* io, void* self, int event, int error, unsigned char* buf,
                         unsigned long* length, const char* const* auxdata) {
    Q_UNUSED(auxdata);
    Q_UNUSED(self);
    Rfc2217Link* link = LinkOf(io);
    if (!link)
        return GE_NOTSUP;
    switch (event) {
    case GENSIO_EVENT_READ:
        if (error != 0) {
            gensio_set_read_callback_enable(link->m_io.get(), false);
            link->Drop(error == GE_REMCLOSE ? DeviceServerClosed() : ErrorText(error));
            return 0;
        }
        if (length && *length > 0)
            Q_EMIT link->Arrived(QByteArray(reinterpret_cast<const char*>(buf), qsizetype(*length)));
        return 0;
    case GENSIO_EVENT_WRITE_READY:
        gensio_set_write_callback_enable(link->m_io.get(), false);
        link->Flush();
        return 0;
    case GENSIO_EVENT_SER_MODEMSTATE: {
        const unsigned state = *reinterpret_cast<const unsigned*>(buf);
        link->m_linesReported = true;
        Q_EMIT link->ModemLines(state & SERGENSIO_MODEMSTATE_CTS, state & SERGENSIO_MODEMSTATE_DSR,
                                state & SERGENSIO_MODEMSTATE_CD);
        return 0;
    }
    default:
        return GE_NOTSUP;
    }
}

} // namespace kestrova
