#include "platform/QtSerialLine.h"

#include "platform/Errors.h"
#include "platform/FlowControl.h"
#include "platform/TextFile.h"

#include <QFileInfo>
#include <QScopeGuard>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

namespace kestrova {

namespace {

// A device that reports its modem lines but cannot wait for their changes is looked at this
// often (its counters still catch every pulse in between).
constexpr int ModemPollMs = 500;
// A device that may come back is looked for this often, besides its directory's changes.
constexpr int DeviceRetryMs = 1000;

// Whether an open descriptor is the slave side of a pseudo-terminal (majors 136 to 143).
bool IsPseudoTerminal(int fd) {
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISCHR(st.st_mode))
        return false;
    const unsigned m = major(st.st_rdev);
    return m >= 136 && m <= 143;
}

// The device's counts of modem-line changes and breaks; nothing where it keeps none.
std::optional<LineCounters> ReadCounters(int fd) {
    serial_icounter_struct counts{};
    if (::ioctl(fd, TIOCGICOUNT, &counts) != 0)
        return std::nullopt;
    return LineCounters{counts.cts, counts.dsr, counts.dcd, counts.brk};
}

} // namespace

QtSerialLine::QtSerialLine(DeviceMap devices, QObject* parent)
    : SerialLine(parent), m_devices(std::move(devices)), m_port(this), m_lineWatch(this), m_modemPoll(this),
      m_deviceRetry(this) {
    m_modemPoll.setInterval(ModemPollMs);
    m_deviceRetry.setInterval(DeviceRetryMs);
    connect(&m_deviceRetry, &QTimer::timeout, this, &SerialLine::DeviceMayBeBack);
    connect(&m_modemPoll, &QTimer::timeout, this, &QtSerialLine::LookAtModemLines);
    connect(&m_lineWatch, &ModemLineWatch::Changed, this, &QtSerialLine::LookAtModemLines);
    connect(&m_lineWatch, &ModemLineWatch::Ended, this, &QtSerialLine::OnWatchEnded);
    connect(&m_port, &QSerialPort::readyRead, this, &QtSerialLine::OnReadyRead);
    connect(&m_port, &QSerialPort::bytesWritten, this, &QtSerialLine::OnBytesWritten);
    connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialLine::OnError);
}

QtSerialLine::~QtSerialLine() {
    if (m_port.isOpen())
        Close();
}

void QtSerialLine::SetPortOpen(bool open) {
    if (open == m_port.isOpen())
        return;
    if (open)
        Open();
    else
        Close();
}

void QtSerialLine::Open() {
    const QString device = Device();
    const QString name = PortName(CommPort());
    if (device.isEmpty())
        throw DeviceUnavailableError(name, QStringLiteral("no device"));
    m_port.setPortName(device);
    if (!m_port.open(QIODevice::ReadWrite)) {
        const QString why = m_port.errorString();
        m_port.clearError();
        throw DeviceUnavailableError(name, QStringLiteral("%1: %2").arg(device, why));
    }
    m_lost = false;
    m_xoff = false;
    m_held.clear();
    m_input.clear();
    m_pseudoTerminal = IsPseudoTerminal(int(m_port.handle()));
    m_configuring = true;
    const auto configured = qScopeGuard([this] { m_configuring = false; });
    try {
        ApplyFraming();
    } catch (...) {
        m_port.close();
        throw;
    }
    ApplyFlowAndLines();
    m_port.clear(QSerialPort::AllDirections);
    // The modem lines are watched only where the device answers for them.
    m_refused = false;
    const QSerialPort::PinoutSignals pins = m_port.pinoutSignals();
    m_linesReported = !m_refused && m_port.error() == QSerialPort::NoError;
    m_port.clearError();
    if (m_linesReported) {
        m_cts = pins.testFlag(QSerialPort::ClearToSendSignal);
        m_dsr = pins.testFlag(QSerialPort::DataSetReadySignal);
        m_cd = pins.testFlag(QSerialPort::DataCarrierDetectSignal);
        const std::optional<LineCounters> counters = ReadCounters(int(m_port.handle()));
        m_counted = counters.has_value();
        if (counters)
            m_counters = *counters;
        m_lineWatch.Start(int(m_port.handle()));
    } else {
        m_cts = m_dsr = m_cd = false;
    }
    LookAtLineTimeOuts();
}

void QtSerialLine::OnWatchEnded(int error) {
    Q_UNUSED(error);
    // The device cannot wait for its lines: where it reports them, they are looked at now and
    // then instead; elsewhere nothing depends on them.
    if (m_port.isOpen() && !m_lost && m_linesReported)
        m_modemPoll.start();
}

void QtSerialLine::StopWatchingLines() {
    // Before the descriptor closes: the watch's thread waits on it.
    m_lineWatch.Stop();
    m_modemPoll.stop();
}

void QtSerialLine::WatchDevice(bool on) {
    delete m_watcher;
    m_watcher = nullptr;
    m_deviceRetry.stop();
    if (!on)
        return;
    // The directory is where a USB adapter's node or a link to it appears; some directories
    // (a pseudo-terminal's) report nothing, and the look every second covers them.
    const QString directory = QFileInfo(Device()).absolutePath();
    m_watcher = new QFileSystemWatcher(this);
    if (QFileInfo(directory).isDir())
        m_watcher->addPath(directory);
    connect(m_watcher, &QFileSystemWatcher::directoryChanged, this, &SerialLine::DeviceMayBeBack);
    m_deviceRetry.start();
}

void QtSerialLine::Close() {
    StopWatchingLines();
    FlushWithoutWaiting();
    if (m_port.isOpen())
        m_port.close();
    m_input.clear();
    m_held.clear();
    m_xoff = false;
    m_linesReported = false;
    LookAtLineTimeOuts();
}

void QtSerialLine::ApplyFraming() {
    const std::optional<LineFraming> f = ParseFraming(Settings());
    const QString name = PortName(CommPort());
    if (!f)
        throw DeviceUnavailableError(name, QStringLiteral("settings \"%1\" rejected").arg(Settings()));
    QSerialPort::Parity parity = QSerialPort::NoParity;
    switch (f->parity) {
    case 'E':
        parity = QSerialPort::EvenParity;
        break;
    case 'O':
        parity = QSerialPort::OddParity;
        break;
    case 'M':
        parity = QSerialPort::MarkParity;
        break;
    case 'S':
        parity = QSerialPort::SpaceParity;
        break;
    default:
        break;
    }
    const auto stop = f->stopBits == 2   ? QSerialPort::TwoStop
                      : f->stopBits == 3 ? QSerialPort::OneAndHalfStop
                                         : QSerialPort::OneStop;
    const bool wasConfiguring = m_configuring;
    m_configuring = true;
    const auto configured = qScopeGuard([this, wasConfiguring] { m_configuring = wasConfiguring; });
    m_refusal.clear();
    bool ok = m_port.setBaudRate(f->baud);
    ok = m_port.setParity(parity) && ok;
    ok = m_port.setDataBits(QSerialPort::DataBits(f->dataBits)) && ok;
    ok = m_port.setStopBits(stop) && ok;
    // A pseudo-terminal carries bytes whatever the framing, and some refuse parity and short
    // characters: that refusal is as harmless as its refusal of the modem lines.
    if (!ok && !m_pseudoTerminal)
        throw DeviceUnavailableError(
            name, QStringLiteral("settings \"%1\" rejected: %2").arg(Settings(), m_refusal));
}

void QtSerialLine::ApplyFlowAndLines() {
    const bool wasConfiguring = m_configuring;
    m_configuring = true;
    const auto configured = qScopeGuard([this, wasConfiguring] { m_configuring = wasConfiguring; });
    // XON/XOFF is done by this layer; the device only ever does RTS/CTS.
    m_port.setFlowControl((Handshaking() & 2) ? QSerialPort::HardwareControl : QSerialPort::NoFlowControl);
    m_port.setDataTerminalReady(DTREnable());
    if (!(Handshaking() & 2))
        m_port.setRequestToSend(RTSEnable());
    // Pseudo-terminals refuse the line requests (OnError notes it); nothing depends on them there.
}

void QtSerialLine::PropertyChanged(const char* name) {
    if (!m_port.isOpen())
        return;
    const QByteArray which(name);
    if (which == "Settings")
        ApplyFraming();
    else if (which == "Handshaking" || which == "DTREnable" || which == "RTSEnable")
        ApplyFlowAndLines();
    if (which == "RThreshold" && RThreshold() > 0 && m_input.size() >= RThreshold())
        Q_EMIT Comm(CommEvent::Receive);
}

void QtSerialLine::SetInBufferCount(int count) {
    if (count != 0)
        return;
    // An XOFF or XON may wait in the kernel's queue unread: it is taken first (without
    // waiting), and only what has been examined is dropped.
    if (m_port.isOpen() && !m_lost) {
        m_discarding = true;
        const auto done = qScopeGuard([this] { m_discarding = false; });
        (void)m_port.waitForReadyRead(0);
        if (m_port.isOpen() && !m_lost)
            (void)TakeArrived();
    }
    m_input.clear();
}

void QtSerialLine::SetOutBufferCount(int count) {
    if (count == 0) {
        m_held.clear();
        if (m_port.isOpen())
            m_port.clear(QSerialPort::Output);
    }
}

int QtSerialLine::KernelOutputCount() const {
    if (!m_port.isOpen())
        return 0;
    int queued = 0;
    if (::ioctl(int(m_port.handle()), TIOCOUTQ, &queued) != 0)
        return 0;
    return queued;
}

int QtSerialLine::OutBufferCount() const {
    if (!m_port.isOpen())
        return 0;
    return int(m_held.size() + m_port.bytesToWrite()) + KernelOutputCount();
}

QString QtSerialLine::Input() {
    return TakeInput(m_input);
}

void QtSerialLine::Output(const QString& text) {
    if (!m_port.isOpen())
        throw DeviceUnavailableError(PortName(CommPort()), QStringLiteral("port is closed"));
    const QByteArray bytes = ToBytes(text);
    if (m_xoff)
        m_held += bytes;
    else
        m_port.write(bytes);
    LookAtLineTimeOuts();
}

void QtSerialLine::FlushWithoutWaiting() {
    // What Qt still queues goes to the kernel as far as it takes it now; nothing waits here.
    if (m_port.isOpen() && !m_lost && !m_xoff)
        m_port.flush();
}

void QtSerialLine::OnReadyRead() {
    if (m_lost)
        return;
    // A break comes with a character (a NUL): its count is read with what arrived.
    if (m_counted)
        LookAtModemLines();
    if (m_lost || !m_port.isOpen())
        return;
    if (TakeArrived() && !m_discarding && RThreshold() > 0 && m_input.size() >= RThreshold())
        Q_EMIT Comm(CommEvent::Receive);
}

bool QtSerialLine::TakeArrived() {
    QByteArray data = m_port.readAll();
    if ((Handshaking() & 1) && TakeFlowControl(data, m_xoff) && !m_xoff && !m_held.isEmpty()) {
        m_port.write(m_held);
        m_held.clear();
    }
    if (NullDiscard())
        data.removeIf([](char c) { return c == '\0'; });
    if (data.isEmpty())
        return false;
    m_input += data;
    return true;
}

void QtSerialLine::OnBytesWritten() {
    if (SThreshold() > 0 && OutBufferCount() < SThreshold())
        Q_EMIT Comm(CommEvent::Send);
}

void QtSerialLine::OnError(QSerialPort::SerialPortError error) {
    if (error == QSerialPort::NoError)
        return;
    if (m_configuring) {
        // A request of the set-up or of the modem-line poll that the device refused; QSerialPort
        // reports those as write errors too, so they are told apart by when they happen.
        m_refused = true;
        m_refusal = m_port.errorString();
        m_port.clearError();
        return;
    }
    switch (error) {
    case QSerialPort::UnsupportedOperationError:
        // Modem-line and line requests that pseudo-terminals refuse.
        m_refused = true;
        m_port.clearError();
        return;
    case QSerialPort::ResourceError:
        Lose(QStringLiteral("the line hung up or the device was removed"));
        return;
    case QSerialPort::ReadError:
        Lose(QStringLiteral("read error"));
        return;
    case QSerialPort::WriteError:
        Lose(QStringLiteral("write error"));
        return;
    case QSerialPort::DeviceNotFoundError:
        Lose(QStringLiteral("the device was removed"));
        return;
    default:
        // Errors of open() and of the set-up are raised where they happen.
        return;
    }
}

void QtSerialLine::Lose(const QString& reason) {
    if (m_lost || !m_port.isOpen())
        return;
    m_lost = true;
    StopWatchingLines();
    m_port.close();
    m_port.clearError();
    m_input.clear();
    m_held.clear();
    m_xoff = false;
    m_linesReported = false;
    LookAtLineTimeOuts();
    Q_EMIT LineLost(DeviceIoError(PortName(CommPort()), reason).text());
}

void QtSerialLine::LookAtModemLines() {
    if (!m_port.isOpen() || m_lost || !m_linesReported)
        return;
    m_refused = false;
    m_configuring = true;
    const QSerialPort::PinoutSignals pins = m_port.pinoutSignals();
    m_configuring = false;
    if (m_refused || m_port.error() != QSerialPort::NoError) {
        m_port.clearError();
        return;
    }
    const bool cts = pins.testFlag(QSerialPort::ClearToSendSignal);
    const bool dsr = pins.testFlag(QSerialPort::DataSetReadySignal);
    const bool cd = pins.testFlag(QSerialPort::DataCarrierDetectSignal);
    QList<CommEvent> events;
    if (const std::optional<LineCounters> now = ReadCounters(int(m_port.handle())); now && m_counted) {
        events = EventsBetween(m_counters, *now);
        m_counters = *now;
    } else {
        events = EventsBetween(LevelsAsCounters(m_cts, m_dsr, m_cd), LevelsAsCounters(cts, dsr, cd));
    }
    m_cts = cts;
    m_dsr = dsr;
    m_cd = cd;
    LookAtLineTimeOuts();
    for (const CommEvent event : events)
        Q_EMIT Comm(event);
}

} // namespace kestrova
