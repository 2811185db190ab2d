#pragma once

#include "platform/DeviceMap.h"
#include "platform/LineCounters.h"
#include "platform/ModemLineWatch.h"
#include "platform/SerialLine.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QSerialPort>
#include <QTimer>

namespace kestrova {

// A serial line on a host device: port n is the device map's COMn.
//
// - Received characters are moved into the line's own input buffer as they arrive; NullDiscard
//   drops NULs there, and the receive event is raised while RThreshold or more wait.
// - With XON/XOFF in the handshaking, the line does the flow control itself (many USB adapters
//   ignore it in their drivers): an XOFF received holds the output back until an XON, and
//   neither reaches the input buffer. RTS/CTS is left to the device.
// - OutBufferCount counts what is held back, what Qt still queues and what the kernel still
//   holds (TIOCOUTQ). Closing never blocks: what XOFF still holds back is lost then, so a
//   transfer waits (on the event loop) for OutBufferCount to reach 0 before it closes.
// - Emptying the input buffer drops only what has been read and examined for XON and XOFF; the
//   kernel's queue is read first, never thrown away, so no flow control is eaten.
// - While the device is watched for (WatchDevice), its directory is watched and looked at
//   again every second, and DeviceMayBeBack raised.
// - Modem-line changes are waited for on a thread of its own (ModemLineWatch), where the device
//   allows it; each one wakes the user-interface thread, which reads the kernel's counts of
//   changes and breaks (TIOCGICOUNT), so a pulse of any length raises its event. A break arrives
//   with a character, so the counts are read again whenever characters arrive, and every break
//   raises Break. A device that reports the levels but refuses the wait is looked at twice a
//   second instead; pseudo-terminals refuse both, and that refusal is harmless: no line event.
// - The CD and CTS time-outs (SerialLine) count on the levels found at each look.
// - The first hang-up, read error or removed device closes the port and raises LineLost once.
//   (On a pseudo-terminal whose far end closed, QSerialPort would otherwise repeat ReadError
//   for as long as the port stays open.)
class QtSerialLine final : public SerialLine {
    Q_OBJECT
public:
    explicit QtSerialLine(DeviceMap devices, QObject* parent = nullptr);
    ~QtSerialLine() override;

    void SetPortOpen(bool open) override;
    [[nodiscard]] bool PortOpen() const override { return m_port.isOpen(); }
    [[nodiscard]] int InBufferCount() const override { return int(m_input.size()); }
    void SetInBufferCount(int count) override;
    [[nodiscard]] int OutBufferCount() const override;
    void SetOutBufferCount(int count) override;
    [[nodiscard]] QString Input() override;
    void Output(const QString& text) override;
    [[nodiscard]] bool CTSHolding() const override { return m_cts; }
    [[nodiscard]] bool DSRHolding() const override { return m_dsr; }
    [[nodiscard]] bool CDHolding() const override { return m_cd; }
    [[nodiscard]] bool ModemLinesReported() const override { return m_linesReported; }
    [[nodiscard]] bool OutputHeld() const override { return m_port.isOpen() && m_xoff; }
    void WatchDevice(bool on) override;

    // The host device the current CommPort stands for.
    [[nodiscard]] QString Device() const { return m_devices.PortDevice(CommPort()); }

protected:
    void PropertyChanged(const char* name) override;

private:
    void Open();
    void Close();
    void ApplyFraming();
    void ApplyFlowAndLines();
    void FlushWithoutWaiting();
    // Moves what the port has received into the input buffer, doing XON/XOFF on the way;
    // true when anything reached the buffer.
    bool TakeArrived();
    void OnReadyRead();
    void OnBytesWritten();
    void OnError(QSerialPort::SerialPortError error);
    // Reads the modem lines and the kernel's counts, raising an event for each change found.
    void LookAtModemLines();
    void OnWatchEnded(int error);
    void StopWatchingLines();
    void Lose(const QString& reason);
    [[nodiscard]] int KernelOutputCount() const;

    DeviceMap m_devices;
    QSerialPort m_port;
    ModemLineWatch m_lineWatch;
    QTimer m_modemPoll;                      // only where the device reports the lines but refuses the wait
    QFileSystemWatcher* m_watcher = nullptr; // the device's directory, while watched
    QTimer m_deviceRetry;
    QByteArray m_input;
    QByteArray m_held; // output held back by an XOFF
    bool m_xoff = false;
    bool m_cts = false;
    bool m_dsr = false;
    bool m_cd = false;
    bool m_linesReported = false;
    bool m_counted = false; // the device counts modem-line changes and breaks
    LineCounters m_counters;
    bool m_lost = false;
    bool m_refused = false;     // the device refused a request of the set-up
    QString m_refusal;          // and why
    bool m_configuring = false; // errors now are refusals of the set-up, not a lost line
    bool m_pseudoTerminal = false;
    bool m_discarding = false; // the input is being emptied: what arrives meanwhile raises nothing
};

} // namespace kestrova
