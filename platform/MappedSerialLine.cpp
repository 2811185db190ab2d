#include "platform/MappedSerialLine.h"

#include "platform/Errors.h"
#include "platform/NetSerialLine.h"
#include "platform/QtSerialLine.h"

namespace kestrova {

namespace {

// The set-up every line takes, in the order a transfer sets it.
const QList<QByteArray> SetUp = {"CommPort",   "Settings",   "Handshaking", "DTREnable",  "RTSEnable",
                                 "RThreshold", "SThreshold", "InputLen",    "NullDiscard"};

bool SameLine(const PortMapping& a, const PortMapping& b) {
    // A host line looks its device up itself at each opening.
    return a.kind == b.kind && (a.kind == PortKind::Device || a.address == b.address);
}

} // namespace

MappedSerialLine::MappedSerialLine(DeviceMap devices, QObject* parent)
    : SerialLine(parent), m_devices(std::move(devices)) {}

MappedSerialLine::~MappedSerialLine() = default;

SerialLine& MappedSerialLine::LineForPort() {
    const PortMapping mapping = m_devices.Port(CommPort());
    if (m_line && (m_line->PortOpen() || SameLine(mapping, m_serving)))
        return *m_line;
    if (m_line) {
        m_line->WatchDevice(false);
        m_line->disconnect(this);
        m_line.release()->deleteLater(); // possibly from within its own signal
    }
    if (mapping.kind == PortKind::Device)
        m_line = std::make_unique<QtSerialLine>(m_devices);
    else
        m_line = std::make_unique<NetSerialLine>(mapping.kind, mapping.address);
    m_serving = mapping;
    for (const QByteArray& property : SetUp)
        Hand(*m_line, property);
    connect(m_line.get(), &SerialLine::Comm, this, [this](CommEvent event) {
        if (event == CommEvent::CtsChange || event == CommEvent::CdChange)
            LookAtLineTimeOuts();
        Q_EMIT Comm(event);
    });
    connect(m_line.get(), &SerialLine::LineLost, this, [this](const QString& message) {
        LookAtLineTimeOuts();
        Q_EMIT LineLost(message);
    });
    connect(m_line.get(), &SerialLine::DeviceMayBeBack, this, &SerialLine::DeviceMayBeBack);
    return *m_line;
}

void MappedSerialLine::Hand(SerialLine& to, const QByteArray& property) {
    if (property == "CommPort")
        to.SetCommPort(CommPort());
    else if (property == "Settings")
        to.SetSettings(Settings());
    else if (property == "Handshaking")
        to.SetHandshaking(Handshaking());
    else if (property == "DTREnable")
        to.SetDTREnable(DTREnable());
    else if (property == "RTSEnable")
        to.SetRTSEnable(RTSEnable());
    else if (property == "RThreshold")
        to.SetRThreshold(RThreshold());
    else if (property == "SThreshold")
        to.SetSThreshold(SThreshold());
    else if (property == "InputLen")
        to.SetInputLen(InputLen());
    else if (property == "NullDiscard")
        to.SetNullDiscard(NullDiscard());
}

void MappedSerialLine::PropertyChanged(const char* name) {
    // A port number changed while closed may be of another kind: LineForPort looks at that when
    // the port opens.
    if (m_line)
        Hand(*m_line, name);
}

void MappedSerialLine::SetPortOpen(bool open) {
    if (open == PortOpen())
        return;
    if (open)
        LineForPort().SetPortOpen(true);
    else
        m_line->SetPortOpen(false);
    LookAtLineTimeOuts();
}

void MappedSerialLine::SetInBufferCount(int count) {
    if (m_line)
        m_line->SetInBufferCount(count);
}

void MappedSerialLine::SetOutBufferCount(int count) {
    if (m_line)
        m_line->SetOutBufferCount(count);
}

QString MappedSerialLine::Input() {
    return m_line ? m_line->Input() : QString();
}

void MappedSerialLine::Output(const QString& text) {
    if (!m_line || !m_line->PortOpen())
        throw DeviceUnavailableError(PortName(CommPort()), QStringLiteral("port is closed"));
    m_line->Output(text);
    LookAtLineTimeOuts();
}

void MappedSerialLine::WatchDevice(bool on) {
    if (on)
        LineForPort().WatchDevice(true);
    else if (m_line)
        m_line->WatchDevice(false);
}

} // namespace kestrova
