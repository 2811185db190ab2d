#pragma once

#include "platform/NetAddress.h"
#include "platform/SerialLine.h"

#include <QByteArray>
#include <QObject>
#include <QString>

namespace kestrova {

// Why a connection ended when the device server closed it (switched off, restarted, timed out).
[[nodiscard]] QString DeviceServerClosed();

// The connection to a serial device server that a network line runs over: raw TCP, or Telnet
// with the COM port option. Its signals come on the user-interface thread.
class NetLink : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    ~NetLink() override = default;

    // Connects, waiting at most ms (without running the event loop); false with the reason when
    // the device server cannot be reached.
    [[nodiscard]] virtual bool ConnectNow(const NetAddress& address, int ms, QString& reason) = 0;
    // Starts connecting and returns at once: Connected or Dropped follows.
    virtual void ConnectLater(const NetAddress& address) = 0;
    // Hands bytes on; how many were taken (the rest is offered again after Written).
    [[nodiscard]] virtual qsizetype Write(const QByteArray& bytes) = 0;
    // What was taken and has not left this host yet.
    [[nodiscard]] virtual qint64 Queued() const = 0;
    // Sets the device server's port to the line's set-up; false with the reason when it refuses.
    // A raw connection has nothing to set: the device server's own settings hold.
    [[nodiscard]] virtual bool Apply(const LineFraming& framing, int handshaking, bool dtr, bool rts,
                                     QString& reason) {
        Q_UNUSED(framing);
        Q_UNUSED(handshaking);
        Q_UNUSED(dtr);
        Q_UNUSED(rts);
        Q_UNUSED(reason);
        return true;
    }
    // The connection may serve the port's next opening: nothing asked of it waits for an answer.
    [[nodiscard]] virtual bool Reusable() const { return true; }
    // The device server reports the modem lines (ModemLines).
    [[nodiscard]] virtual bool ModemLinesReported() const { return false; }

Q_SIGNALS:
    void Connected();
    // Characters from the far end.
    void Arrived(const QByteArray& bytes);
    // Output left, or room came for more.
    void Written();
    // The levels of CTS, DSR and CD the device server reports.
    void ModemLines(bool cts, bool dsr, bool cd);
    // The connection could not be made, or it ended: why.
    void Dropped(const QString& reason);
};

} // namespace kestrova
