#include "platform/NetSerialLine.h"

#include "platform/Errors.h"
#include "platform/FlowControl.h"
#include "platform/LineCounters.h"
#include "platform/Rfc2217Link.h"
#include "platform/SpareLinks.h"
#include "platform/TcpLink.h"
#include "platform/TextFile.h"

namespace kestrova {

namespace {

// How long an opening waits for the device server to answer.
constexpr int ConnectMs = 3000;
// A device server that may be back is tried this often while it is watched for.
constexpr int RetryMs = 1000;

} // namespace

NetSerialLine::NetSerialLine(PortKind kind, NetAddress address, QObject* parent)
    : SerialLine(parent), m_kind(kind), m_address(std::move(address)), m_retry(this) {
    m_retry.setInterval(RetryMs);
    connect(&m_retry, &QTimer::timeout, this, &NetSerialLine::TryInBackground);
}

NetSerialLine::~NetSerialLine() {
    if (m_link)
        Push();
}

std::unique_ptr<NetLink> NetSerialLine::MakeLink() {
    if (m_kind == PortKind::Rfc2217)
        return std::make_unique<Rfc2217Link>();
    return std::make_unique<TcpLink>();
}

void NetSerialLine::Discard(std::unique_ptr<NetLink>& link) {
    if (!link)
        return;
    link->disconnect();
    link.release()->deleteLater();
}

QString NetSerialLine::SpareKey() const {
    return QString::number(int(m_kind)) + u' ' + m_address.Text();
}

QString NetSerialLine::Where(const QString& reason) const {
    return m_address.Text() + QStringLiteral(": ") + reason;
}

void NetSerialLine::SetPortOpen(bool open) {
    if (open == PortOpen())
        return;
    if (open)
        Open();
    else
        Close();
}

void NetSerialLine::Open() {
    const QString name = PortName(CommPort());
    if (!ParseFraming(Settings()))
        throw DeviceUnavailableError(name, QStringLiteral("settings \"%1\" rejected").arg(Settings()));
    std::unique_ptr<NetLink> link = SpareLinks::Instance().Take(SpareKey());
    if (!link) {
        link = MakeLink();
        QString reason;
        if (!link->ConnectNow(m_address, ConnectMs, reason))
            throw DeviceUnavailableError(name, Where(reason));
    }
    m_link = std::move(link);
    connect(m_link.get(), &NetLink::Arrived, this, &NetSerialLine::OnArrived);
    connect(m_link.get(), &NetLink::Written, this, &NetSerialLine::OnWritten);
    connect(m_link.get(), &NetLink::ModemLines, this, &NetSerialLine::OnModemLines);
    m_input.clear();
    m_waiting.clear();
    m_xoff = false;
    m_cts = m_dsr = m_cd = false;
    // A device server that turns the connection away (busy with another) ends it while the
    // settings go out: that is an opening that failed, not a line lost.
    QString turnedAway;
    const QMetaObject::Connection opening = connect(
        m_link.get(), &NetLink::Dropped, this, [&turnedAway](const QString& reason) { turnedAway = reason; });
    try {
        Apply();
    } catch (...) {
        disconnect(opening);
        Discard(m_link);
        throw;
    }
    disconnect(opening);
    if (!turnedAway.isEmpty()) {
        Discard(m_link);
        throw DeviceUnavailableError(name, Where(turnedAway));
    }
    connect(m_link.get(), &NetLink::Dropped, this, &NetSerialLine::Lose);
    LookAtLineTimeOuts();
}

void NetSerialLine::Close() {
    // What XOFF still holds back is lost, as on a local line; the rest goes on its way.
    Push();
    if (m_link->Reusable())
        SpareLinks::Instance().Keep(SpareKey(), std::move(m_link));
    else
        m_link.reset();
    m_input.clear();
    m_waiting.clear();
    m_xoff = false;
    LookAtLineTimeOuts();
}

void NetSerialLine::Apply() {
    const std::optional<LineFraming> framing = ParseFraming(Settings());
    QString reason;
    if (!framing || !m_link->Apply(*framing, Handshaking(), DTREnable(), RTSEnable(), reason))
        throw DeviceUnavailableError(PortName(CommPort()),
                                     Where(QStringLiteral("settings \"%1\" rejected").arg(Settings()) +
                                           (reason.isEmpty() ? QString() : QStringLiteral(": ") + reason)));
}

void NetSerialLine::PropertyChanged(const char* name) {
    if (!m_link)
        return;
    const QByteArray which(name);
    if (which == "Settings" || which == "Handshaking" || which == "DTREnable" || which == "RTSEnable")
        Apply();
    if (which == "RThreshold" && RThreshold() > 0 && m_input.size() >= RThreshold())
        Q_EMIT Comm(CommEvent::Receive);
}

void NetSerialLine::SetInBufferCount(int count) {
    if (count == 0)
        m_input.clear();
}

void NetSerialLine::SetOutBufferCount(int count) {
    if (count == 0)
        m_waiting.clear();
}

int NetSerialLine::OutBufferCount() const {
    if (!m_link)
        return 0;
    return int(m_waiting.size() + m_link->Queued());
}

QString NetSerialLine::Input() {
    return TakeInput(m_input);
}

void NetSerialLine::Output(const QString& text) {
    if (!m_link)
        throw DeviceUnavailableError(PortName(CommPort()), QStringLiteral("port is closed"));
    m_waiting += ToBytes(text);
    Push();
    LookAtLineTimeOuts();
}

void NetSerialLine::Push() {
    if (!m_link || m_xoff || m_waiting.isEmpty())
        return;
    m_waiting.remove(0, m_link->Write(m_waiting));
}

void NetSerialLine::OnArrived(const QByteArray& bytes) {
    QByteArray data = bytes;
    if ((Handshaking() & 1) && TakeFlowControl(data, m_xoff) && !m_xoff)
        Push();
    if (NullDiscard())
        data.removeIf([](char c) { return c == '\0'; });
    if (data.isEmpty())
        return;
    m_input += data;
    if (RThreshold() > 0 && m_input.size() >= RThreshold())
        Q_EMIT Comm(CommEvent::Receive);
}

void NetSerialLine::OnWritten() {
    Push();
    if (SThreshold() > 0 && OutBufferCount() < SThreshold())
        Q_EMIT Comm(CommEvent::Send);
}

void NetSerialLine::OnModemLines(bool cts, bool dsr, bool cd) {
    const QList<CommEvent> events =
        EventsBetween(LevelsAsCounters(m_cts, m_dsr, m_cd), LevelsAsCounters(cts, dsr, cd));
    m_cts = cts;
    m_dsr = dsr;
    m_cd = cd;
    LookAtLineTimeOuts();
    for (const CommEvent event : events)
        Q_EMIT Comm(event);
}

void NetSerialLine::Lose(const QString& reason) {
    if (!m_link)
        return;
    Discard(m_link);
    m_input.clear();
    m_waiting.clear();
    m_xoff = false;
    LookAtLineTimeOuts();
    Q_EMIT LineLost(DeviceIoError(PortName(CommPort()), Where(reason)).text());
}

void NetSerialLine::WatchDevice(bool on) {
    m_retry.stop();
    Discard(m_trial);
    if (on)
        m_retry.start();
}

void NetSerialLine::TryInBackground() {
    // A connection made in the background is what the next opening takes; trying once more
    // while one is on its way or waiting would only take the device server's one connection.
    if (m_trial || m_link)
        return;
    if (SpareLinks::Instance().Has(SpareKey())) {
        Q_EMIT DeviceMayBeBack();
        return;
    }
    m_trial = MakeLink();
    connect(m_trial.get(), &NetLink::Connected, this, [this] {
        SpareLinks::Instance().Keep(SpareKey(), std::move(m_trial));
        Q_EMIT DeviceMayBeBack();
    });
    connect(m_trial.get(), &NetLink::Dropped, this, [this] { Discard(m_trial); });
    m_trial->ConnectLater(m_address);
}

} // namespace kestrova
