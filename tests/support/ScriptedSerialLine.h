#pragma once

#include "platform/Errors.h"
#include "platform/SerialLine.h"

#include <QByteArray>
#include <QStringList>
#include <optional>

namespace kestrova::testing {

// A serial line driven by the test: what the far end sends, which modem lines change, when the
// line hangs up and how fast output leaves are all scripted, and everything the program does
// to the line is logged, so that every start mode, abort and time-out runs without timing luck.
//
// Log() holds one entry per property set, buffer clear and open or close, in order:
// "CommPort=2", "Settings=9600,E,7,2", "Handshaking=1", "DTREnable=1", "InBufferCount=0",
// "PortOpen=1", ...
class ScriptedSerialLine final : public SerialLine {
public:
    ScriptedSerialLine() = default;

    // --- The line, as the program sees it --------------------------------------------------------
    void SetPortOpen(bool open) override;
    [[nodiscard]] bool PortOpen() const override { return m_open; }
    [[nodiscard]] int InBufferCount() const override { return int(m_input.size()); }
    void SetInBufferCount(int count) override;
    [[nodiscard]] int OutBufferCount() const override {
        ++m_outQueries;
        return int(m_queued.size());
    }
    void SetOutBufferCount(int count) override;
    [[nodiscard]] QString Input() override;
    void Output(const QString& text) override;
    [[nodiscard]] bool CTSHolding() const override { return m_cts; }
    [[nodiscard]] bool DSRHolding() const override { return m_dsr; }
    [[nodiscard]] bool CDHolding() const override { return m_cd; }
    [[nodiscard]] bool OutputHeld() const override { return m_hold; }
    void WatchDevice(bool on) override { m_watching = on; }

    // --- The far end, as the test drives it ------------------------------------------------------
    // Characters arriving: NullDiscard applies, and the receive event is raised once when
    // RThreshold or more wait afterwards.
    void Feed(const QByteArray& bytes);
    void SetCts(bool on); // raises the CTS change event when it changes on an open port
    void SetDsr(bool on); // the same for DSR
    void SetCd(bool on);  // the same for the carrier
    void Raise(CommEvent event);
    // The far end hangs up: an open port is closed and LineLost raised, once.
    void HangUp();
    // Makes the next opening fail with this error.
    void FailNextOpen(SystemError::Kind kind, const QString& detail = QStringLiteral("scripted"));

    // The far end's XOFF (true) and XON (false): held output waits in the queue, and the XON
    // lets all of it leave. As on the host's line, closing the port while output is held loses
    // what waits (see LostAtClose).
    void HoldOutput(bool hold);
    // Lets some of the queue leave (all with -1), as a line slower than the program does.
    void ReleaseOutput(int count = -1);
    // The device goes away (opening then fails as with a missing device) or comes back; when
    // it comes back while the line watches for it, DeviceMayBeBack is raised.
    void SetDevicePresent(bool present);
    // An adapter pulled out of an open line: the line hangs up and the device is gone.
    void Unplug();

    [[nodiscard]] const QByteArray& Sent() const { return m_sent; }
    [[nodiscard]] const QStringList& Log() const { return m_log; }
    void ClearLog() { m_log.clear(); }
    [[nodiscard]] int Opens() const { return m_opens; }
    // What a close threw away because output was held.
    [[nodiscard]] const QByteArray& LostAtClose() const { return m_lostAtClose; }
    // How often the program asked how much waits to go out: a wait that polls asks often.
    [[nodiscard]] int OutBufferQueries() const { return m_outQueries; }
    [[nodiscard]] bool Watching() const { return m_watching; }

protected:
    void PropertyChanged(const char* name) override;

private:
    bool m_open = false;
    bool m_hold = false;
    bool m_cts = true; // a control that is ready to take characters
    bool m_dsr = false;
    bool m_cd = false;
    int m_opens = 0;
    mutable int m_outQueries = 0;
    bool m_present = true;
    bool m_watching = false;
    QByteArray m_lostAtClose;
    QByteArray m_input;
    QByteArray m_queued;
    QByteArray m_sent;
    QStringList m_log;
    std::optional<std::pair<SystemError::Kind, QString>> m_failOpen;
};

} // namespace kestrova::testing
