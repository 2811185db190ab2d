#include "platform/SerialLine.h"

#include "platform/Blanks.h"
#include "platform/Errors.h"
#include "platform/TextFile.h"

#include <QStringList>

namespace kestrova {

std::optional<LineFraming> ParseFraming(const QString& settings) {
    const QStringList parts = settings.split(u',');
    if (parts.size() != 4)
        return std::nullopt;
    LineFraming f;
    bool ok = false;
    f.baud = TrimBlanks(parts.at(0)).toInt(&ok);
    if (!ok || f.baud <= 0)
        return std::nullopt;
    const QString parity = TrimBlanks(parts.at(1)).toUpper();
    if (parity.size() != 1 || !QStringLiteral("NEOMS").contains(parity))
        return std::nullopt;
    f.parity = char(parity.at(0).unicode());
    f.dataBits = TrimBlanks(parts.at(2)).toInt(&ok);
    if (!ok || f.dataBits < 5 || f.dataBits > 8)
        return std::nullopt;
    const QString stop = TrimBlanks(parts.at(3));
    if (stop == QLatin1String("1"))
        f.stopBits = 1;
    else if (stop == QLatin1String("2"))
        f.stopBits = 2;
    else if (stop == QLatin1String("1.5"))
        f.stopBits = 3;
    else
        return std::nullopt;
    return f;
}

QString PortName(int port) {
    return QStringLiteral("COM%1").arg(port);
}

SerialLine::SerialLine(QObject* parent) : QObject(parent) {
    for (LineTimeOut* t : {&m_ctsWatch, &m_cdWatch})
        t->timer.setSingleShot(true);
    connect(&m_ctsWatch.timer, &QTimer::timeout, this,
            [this] { Expired(m_ctsWatch, CtsLow(), CommEvent::CtsTimeOut); });
    connect(&m_cdWatch.timer, &QTimer::timeout, this,
            [this] { Expired(m_cdWatch, CarrierLow(), CommEvent::CdTimeOut); });
}

QString SerialLine::TakeInput(QByteArray& buffer) const {
    const qsizetype take = m_inputLen > 0 ? qMin<qsizetype>(m_inputLen, buffer.size()) : buffer.size();
    const QString text = FromBytes(buffer.left(take));
    buffer.remove(0, take);
    return text;
}

void SerialLine::SetCTSTimeout(int ms) {
    m_ctsTimeout = qMax(0, ms);
    m_ctsWatch.timer.stop();
    LookAtLineTimeOuts();
}

void SerialLine::SetCDTimeout(int ms) {
    m_cdTimeout = qMax(0, ms);
    m_cdWatch.timer.stop();
    LookAtLineTimeOuts();
}

bool SerialLine::CtsLow() const {
    return m_ctsTimeout > 0 && (m_handshaking & 2) && PortOpen() && ModemLinesReported() && !CTSHolding();
}

bool SerialLine::CarrierLow() const {
    return m_cdTimeout > 0 && m_carrierSeen && PortOpen() && ModemLinesReported() && !CDHolding();
}

void SerialLine::LookAtLineTimeOuts() {
    if (!PortOpen())
        m_carrierSeen = false;
    else if (ModemLinesReported() && CDHolding())
        m_carrierSeen = true;
    Arm(m_ctsWatch, CtsLow(), m_ctsTimeout);
    Arm(m_cdWatch, CarrierLow(), m_cdTimeout);
}

void SerialLine::Arm(LineTimeOut& t, bool low, int ms) {
    if (!low) {
        t.timer.stop();
        t.raised = false;
    } else if (!t.raised && !t.timer.isActive()) {
        // Counted from when the line was found low with characters to send; whether any still
        // wait is asked when the time is up.
        t.timer.start(ms);
    }
}

void SerialLine::Expired(LineTimeOut& t, bool low, CommEvent event) {
    // Nothing waiting to go out: the line may stay low; the next character queued arms it again.
    if (!low || OutBufferCount() == 0)
        return;
    t.raised = true;
    Q_EMIT Comm(event);
}

void SerialLine::SetCommPort(int port) {
    if (port < 1 || port > 255)
        throw DeviceUnavailableError(PortName(port), QStringLiteral("no such port"));
    m_commPort = port;
    PropertyChanged("CommPort");
}

void SerialLine::SetSettings(const QString& settings) {
    if (!ParseFraming(settings))
        throw DeviceUnavailableError(PortName(m_commPort),
                                     QStringLiteral("settings \"%1\" rejected").arg(settings));
    m_settings = settings;
    PropertyChanged("Settings");
}

void SerialLine::SetHandshaking(int code) {
    if (code < 0 || code > 3)
        throw DeviceUnavailableError(PortName(m_commPort),
                                     QStringLiteral("handshaking %1 rejected").arg(code));
    m_handshaking = code;
    PropertyChanged("Handshaking");
    LookAtLineTimeOuts();
}

void SerialLine::SetDTREnable(bool on) {
    m_dtrEnable = on;
    PropertyChanged("DTREnable");
}

void SerialLine::SetRTSEnable(bool on) {
    m_rtsEnable = on;
    PropertyChanged("RTSEnable");
}

void SerialLine::SetRThreshold(int count) {
    m_rThreshold = qMax(0, count);
    PropertyChanged("RThreshold");
}

void SerialLine::SetSThreshold(int count) {
    m_sThreshold = qMax(0, count);
    PropertyChanged("SThreshold");
}

void SerialLine::SetInputLen(int count) {
    m_inputLen = qMax(0, count);
    PropertyChanged("InputLen");
}

void SerialLine::SetNullDiscard(bool on) {
    m_nullDiscard = on;
    PropertyChanged("NullDiscard");
}

} // namespace kestrova
