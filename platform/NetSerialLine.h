#pragma once

#include "platform/DeviceMap.h"
#include "platform/NetLink.h"
#include "platform/SerialLine.h"

#include <QByteArray>
#include <QTimer>
#include <memory>

namespace kestrova {

// A serial line on a device server of the network: port n is the device map's COMn, of the
// kind tcp or rfc2217.
//
// - Opening connects, waiting a few seconds at most; a device server that cannot be reached
//   raises DeviceUnavailable naming the port, the host and why.
// - XON/XOFF is done by the line itself, as on a local line; RTS/CTS, the framing and the DTR
//   and RTS levels are the device server's (sent to it over rfc2217).
// - OutBufferCount counts what XOFF holds back, what the connection has not taken yet and what
//   has not left this host; closing hands the rest on and never blocks, so a transfer waits
//   for OutBufferCount to reach 0 before it closes, as on a local line.
// - A connection that ends while open closes the port and raises LineLost once.
// - While the device is watched for, a connection is tried in the background every second;
//   once one is made it is kept for the next opening and DeviceMayBeBack is raised.
// - A connection closed is kept a moment for the next opening of the port (SpareLinks).
class NetSerialLine final : public SerialLine {
    Q_OBJECT
public:
    NetSerialLine(PortKind kind, NetAddress address, QObject* parent = nullptr);
    ~NetSerialLine() override;

    void SetPortOpen(bool open) override;
    [[nodiscard]] bool PortOpen() const override { return m_link != nullptr; }
    [[nodiscard]] int InBufferCount() const override { return int(m_input.size()); }
    void SetInBufferCount(int count) override;
    [[nodiscard]] int OutBufferCount() const override;
    void SetOutBufferCount(int count) override;
    [[nodiscard]] QString Input() override;
    void Output(const QString& text) override;
    [[nodiscard]] bool CTSHolding() const override { return m_cts; }
    [[nodiscard]] bool DSRHolding() const override { return m_dsr; }
    [[nodiscard]] bool CDHolding() const override { return m_cd; }
    [[nodiscard]] bool ModemLinesReported() const override { return m_link && m_link->ModemLinesReported(); }
    [[nodiscard]] bool OnDeviceServer() const override { return true; }
    [[nodiscard]] bool OutputHeld() const override { return m_link && m_xoff; }
    void WatchDevice(bool on) override;

    [[nodiscard]] PortKind Kind() const { return m_kind; }
    [[nodiscard]] const NetAddress& Address() const { return m_address; }

protected:
    void PropertyChanged(const char* name) override;

private:
    [[nodiscard]] std::unique_ptr<NetLink> MakeLink();
    void Open();
    void Close();
    // The key of this port's spare connections (SpareLinks).
    [[nodiscard]] QString SpareKey() const;
    // The reason prefixed with the device server's address.
    [[nodiscard]] QString Where(const QString& reason) const;
    void Apply();
    // Hands what waits to the connection as far as it takes it (nothing while XOFF holds).
    void Push();
    void OnArrived(const QByteArray& bytes);
    void OnWritten();
    void OnModemLines(bool cts, bool dsr, bool cd);
    void Lose(const QString& reason);
    void TryInBackground();
    // Ends a link from within its own signal as well: it goes once control is back in the loop.
    static void Discard(std::unique_ptr<NetLink>& link);

    PortKind m_kind;
    NetAddress m_address;
    std::unique_ptr<NetLink> m_link;  // the open connection
    std::unique_ptr<NetLink> m_trial; // a connection being tried while the device is watched for
    QTimer m_retry;
    QByteArray m_input;
    QByteArray m_waiting; // output not yet taken by the connection, or held back by XOFF
    bool m_xoff = false;
    bool m_cts = false;
    bool m_dsr = false;
    bool m_cd = false;
};

} // namespace kestrova
