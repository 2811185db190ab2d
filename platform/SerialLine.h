#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace kestrova {

// The events of a serial line, numbered as the communication code has always numbered them.
enum class CommEvent : int {
    Send = 1,      // fewer than SThreshold characters wait in the output buffer
    Receive = 2,   // at least RThreshold characters wait in the input buffer
    CtsChange = 3, // the CTS line changed
    DsrChange = 4, // the DSR line changed
    CdChange = 5,  // the carrier-detect line changed
    Break = 1001,  // a break was received
    CdTimeOut = 1002,
    CtsTimeOut = 1003,
};

// The framing of a settings string such as "9600,E,7,2".
struct LineFraming {
    int baud = 9600;
    char parity = 'N'; // N, E, O, M or S
    int dataBits = 8;  // 5..8
    int stopBits = 1;  // 1, 2, or 3 for one and a half
};

// The framing a settings string stands for; nothing when the line would reject it.
[[nodiscard]] std::optional<LineFraming> ParseFraming(const QString& settings);

// The name of port n in messages: "COM2".
[[nodiscard]] QString PortName(int port);

// One serial line as the communication code drives it: properties set before the port is
// opened, characters taken from the input buffer and put into the output buffer, and events
// raised on the user-interface thread. The line with a real device behind it and the scripted
// line of the tests both implement it, so every transfer can run against either.
//
// Errors: setting a framing the line rejects, or opening a port that is missing or in use,
// raises a SystemError naming the port. A line that hangs up, fails to read or loses its
// device while open is closed at once and reports it once with LineLost.
class SerialLine : public QObject {
    Q_OBJECT
public:
    explicit SerialLine(QObject* parent = nullptr);
    ~SerialLine() override = default;

    // --- Set-up, kept until changed ----------------------------------------------------------
    void SetCommPort(int port);
    [[nodiscard]] int CommPort() const { return m_commPort; }
    void SetSettings(const QString& settings); // rejected framing: DeviceUnavailable
    [[nodiscard]] const QString& Settings() const { return m_settings; }
    // 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both.
    void SetHandshaking(int code);
    [[nodiscard]] int Handshaking() const { return m_handshaking; }
    void SetDTREnable(bool on);
    [[nodiscard]] bool DTREnable() const { return m_dtrEnable; }
    void SetRTSEnable(bool on);
    [[nodiscard]] bool RTSEnable() const { return m_rtsEnable; }
    // 0 raises no receive event; n raises one whenever n or more characters wait.
    void SetRThreshold(int count);
    [[nodiscard]] int RThreshold() const { return m_rThreshold; }
    // 0 raises no send event; n raises one when fewer than n characters wait to go out.
    void SetSThreshold(int count);
    [[nodiscard]] int SThreshold() const { return m_sThreshold; }
    // How many characters Input takes at most; 0 takes all.
    void SetInputLen(int count);
    [[nodiscard]] int InputLen() const { return m_inputLen; }
    // NUL characters received are dropped before they reach the input buffer.
    void SetNullDiscard(bool on);
    [[nodiscard]] bool NullDiscard() const { return m_nullDiscard; }

    // --- The port ------------------------------------------------------------------------------
    // Opening applies the set-up; closing first lets everything written leave the line.
    virtual void SetPortOpen(bool open) = 0;
    [[nodiscard]] virtual bool PortOpen() const = 0;

    // --- Buffers ---------------------------------------------------------------------------------
    [[nodiscard]] virtual int InBufferCount() const = 0;
    // Only 0 is meaningful: it discards what waits.
    virtual void SetInBufferCount(int count) = 0;
    // What the program has queued and the device still holds.
    [[nodiscard]] virtual int OutBufferCount() const = 0;
    virtual void SetOutBufferCount(int count) = 0;
    // Takes up to InputLen characters (all when 0) from the input buffer, each byte as the
    // character the screen shows for it (FromBytes).
    [[nodiscard]] virtual QString Input() = 0;
    // Queues characters for sending, each as its byte (ToBytes).
    virtual void Output(const QString& text) = 0;

    // --- Modem lines, where the device reports them ----------------------------------------------
    [[nodiscard]] virtual bool CTSHolding() const = 0;
    [[nodiscard]] virtual bool DSRHolding() const = 0;
    [[nodiscard]] virtual bool CDHolding() const = 0;
    // The device tells the levels of the modem lines (a pseudo-terminal does not).
    [[nodiscard]] virtual bool ModemLinesReported() const { return true; }
    // The port is a device server on the network, whose connection can drop in the middle of a
    // program (switched off, an idle time-out) where a cable rarely does.
    [[nodiscard]] virtual bool OnDeviceServer() const { return false; }

    // How long, in milliseconds, CTS (with RTS/CTS handshaking) or the carrier (once it has been
    // seen since the port opened) may stay low while characters wait to go out: then CtsTimeOut
    // or CdTimeOut is raised, once until the line rises again. 0, as at first, never raises it.
    // Only the levels a device reports count: a line that reports none never times out.
    void SetCTSTimeout(int ms);
    [[nodiscard]] int CTSTimeout() const { return m_ctsTimeout; }
    void SetCDTimeout(int ms);
    [[nodiscard]] int CDTimeout() const { return m_cdTimeout; }

    // --- Flow control and the device ---------------------------------------------------------
    // The far end's XOFF holds the output back: nothing leaves until its XON, and a close now
    // would lose what waits. A wait for room or for the output to drain sleeps on the line's
    // events then, not on a clock.
    [[nodiscard]] virtual bool OutputHeld() const { return false; }
    // While on, DeviceMayBeBack is raised whenever the port's device may have appeared (the
    // host line watches the device's directory, and looks again every second or more).
    virtual void WatchDevice(bool on) { Q_UNUSED(on); }

Q_SIGNALS:
    // The line's event, on the user-interface thread.
    void Comm(kestrova::CommEvent event);
    // The line hung up, failed or lost its device: the port is already closed. Raised once per
    // opening; the text names the port and the reason, ready for the operator.
    void LineLost(const QString& message);
    // The port's device may be there again (see WatchDevice); an opening may now succeed.
    void DeviceMayBeBack();

protected:
    // Takes what Input returns from the line's input buffer: up to InputLen characters (all when 0).
    [[nodiscard]] QString TakeInput(QByteArray& buffer) const;
    // Called after a set-up property changed, so that an open port can take the new value.
    virtual void PropertyChanged(const char* name) { Q_UNUSED(name); }
    // Called by a line whenever the port opened or closed, a modem line changed, the handshaking
    // changed or characters were queued: arms or stops the CD and CTS time-outs.
    void LookAtLineTimeOuts();

private:
    // One of the two time-outs: the line it watches, and whether it has been raised already.
    struct LineTimeOut {
        QTimer timer;
        bool raised = false;
    };
    void Arm(LineTimeOut& t, bool low, int ms);
    void Expired(LineTimeOut& t, bool low, CommEvent event);
    [[nodiscard]] bool CtsLow() const;
    [[nodiscard]] bool CarrierLow() const;

    int m_ctsTimeout = 0;
    int m_cdTimeout = 0;
    LineTimeOut m_ctsWatch;
    LineTimeOut m_cdWatch;
    bool m_carrierSeen = false; // since the port opened

    int m_commPort = 1;
    QString m_settings = QStringLiteral("9600,N,8,1");
    int m_handshaking = 0;
    bool m_dtrEnable = false;
    bool m_rtsEnable = false;
    int m_rThreshold = 0;
    int m_sThreshold = 0;
    int m_inputLen = 0;
    bool m_nullDiscard = false;
};

// Opens a fresh line for each transfer of a form: the host's serial port, or a test's line.
using SerialLineFactory = std::function<std::unique_ptr<SerialLine>()>;

} // namespace kestrova
