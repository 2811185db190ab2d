#include "ScriptedSerialLine.h"

#include "platform/TextFile.h"

namespace kestrova::testing {

void ScriptedSerialLine::PropertyChanged(const char* name) {
    const QByteArray which(name);
    QString value;
    if (which == "CommPort")
        value = QString::number(CommPort());
    else if (which == "Settings")
        value = Settings();
    else if (which == "Handshaking")
        value = QString::number(Handshaking());
    else if (which == "DTREnable")
        value = QString::number(DTREnable());
    else if (which == "RTSEnable")
        value = QString::number(RTSEnable());
    else if (which == "RThreshold")
        value = QString::number(RThreshold());
    else if (which == "SThreshold")
        value = QString::number(SThreshold());
    else if (which == "InputLen")
        value = QString::number(InputLen());
    else if (which == "NullDiscard")
        value = QString::number(NullDiscard());
    m_log << QString::fromLatin1(which) + u'=' + value;
}

void ScriptedSerialLine::SetPortOpen(bool open) {
    if (open && !m_open && m_failOpen) {
        const auto [kind, detail] = *m_failOpen;
        m_failOpen.reset();
        ThrowSystemError(kind, PortName(CommPort()), detail);
    }
    if (open && !m_open && !m_present)
        throw DeviceUnavailableError(PortName(CommPort()), QStringLiteral("no such device"));
    m_log << QStringLiteral("PortOpen=%1").arg(int(open));
    if (open && !m_open)
        ++m_opens;
    if (!open && m_open) {
        // Closing lets everything queued leave first, unless the far end holds it back: then it
        // is lost, as on the host's line.
        if (m_hold)
            m_lostAtClose += m_queued;
        else
            m_sent += m_queued;
        m_queued.clear();
        m_input.clear();
    }
    m_open = open;
    LookAtLineTimeOuts();
}

void ScriptedSerialLine::SetInBufferCount(int count) {
    m_log << QStringLiteral("InBufferCount=%1").arg(count);
    if (count == 0)
        m_input.clear();
}

void ScriptedSerialLine::SetOutBufferCount(int count) {
    m_log << QStringLiteral("OutBufferCount=%1").arg(count);
    if (count == 0)
        m_queued.clear();
}

QString ScriptedSerialLine::Input() {
    const qsizetype take = InputLen() > 0 ? qMin<qsizetype>(InputLen(), m_input.size()) : m_input.size();
    const QString text = FromBytes(m_input.left(take));
    m_input.remove(0, take);
    return text;
}

void ScriptedSerialLine::Output(const QString& text) {
    if (!m_open)
        throw DeviceUnavailableError(PortName(CommPort()), QStringLiteral("port is closed"));
    const QByteArray bytes = ToBytes(text);
    if (m_hold)
        m_queued += bytes;
    else
        m_sent += bytes;
    LookAtLineTimeOuts();
}

void ScriptedSerialLine::Feed(const QByteArray& bytes) {
    if (!m_open)
        return;
    QByteArray data = bytes;
    // As the real line: under XON/XOFF the two characters hold and release the output, and the
    // program never reads them.
    if (Handshaking() & 1) {
        for (const char c : bytes)
            if (c == 19)
                HoldOutput(true);
            else if (c == 17)
                HoldOutput(false);
        data.removeIf([](char c) { return c == 17 || c == 19; });
    }
    if (NullDiscard())
        data.removeIf([](char c) { return c == '\0'; });
    m_input += data;
    if (!data.isEmpty() && RThreshold() > 0 && m_input.size() >= RThreshold())
        Q_EMIT Comm(CommEvent::Receive);
}

void ScriptedSerialLine::SetCts(bool on) {
    const bool changed = on != m_cts;
    m_cts = on;
    LookAtLineTimeOuts();
    if (changed && m_open)
        Q_EMIT Comm(CommEvent::CtsChange);
}

void ScriptedSerialLine::SetDsr(bool on) {
    const bool changed = on != m_dsr;
    m_dsr = on;
    if (changed && m_open)
        Q_EMIT Comm(CommEvent::DsrChange);
}

void ScriptedSerialLine::SetCd(bool on) {
    const bool changed = on != m_cd;
    m_cd = on;
    LookAtLineTimeOuts();
    if (changed && m_open)
        Q_EMIT Comm(CommEvent::CdChange);
}

void ScriptedSerialLine::Raise(CommEvent event) {
    if (m_open)
        Q_EMIT Comm(event);
}

void ScriptedSerialLine::HangUp() {
    if (!m_open)
        return;
    m_open = false;
    m_input.clear();
    m_queued.clear();
    m_log << QStringLiteral("PortOpen=0");
    LookAtLineTimeOuts();
    Q_EMIT LineLost(DeviceIoError(PortName(CommPort()), QStringLiteral("the line hung up")).text());
}

void ScriptedSerialLine::FailNextOpen(SystemError::Kind kind, const QString& detail) {
    m_failOpen = std::make_pair(kind, detail);
}

void ScriptedSerialLine::HoldOutput(bool hold) {
    m_hold = hold;
    if (!hold)
        ReleaseOutput();
}

void ScriptedSerialLine::SetDevicePresent(bool present) {
    const bool back = present && !m_present;
    m_present = present;
    if (back && m_watching)
        Q_EMIT DeviceMayBeBack();
}

void ScriptedSerialLine::Unplug() {
    m_present = false;
    HangUp();
}

void ScriptedSerialLine::ReleaseOutput(int count) {
    const qsizetype n = count < 0 ? m_queued.size() : qMin<qsizetype>(count, m_queued.size());
    m_sent += m_queued.left(n);
    m_queued.remove(0, n);
}

} // namespace kestrova::testing
