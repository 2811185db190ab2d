#pragma once

#include "platform/NetLink.h"

#include <QTcpSocket>

namespace kestrova {

// A raw TCP connection to a device server: every byte is a character of the line, and the
// device server's own speed and framing hold. Characters go out as they are written (no Nagle
// delay), as they would on a local line.
class TcpLink final : public NetLink {
    Q_OBJECT
public:
    explicit TcpLink(QObject* parent = nullptr);
    ~TcpLink() override;

    [[nodiscard]] bool ConnectNow(const NetAddress& address, int ms, QString& reason) override;
    void ConnectLater(const NetAddress& address) override;
    [[nodiscard]] qsizetype Write(const QByteArray& bytes) override;
    [[nodiscard]] qint64 Queued() const override;

private:
    void OnError();

    QTcpSocket m_socket;
    bool m_dropped = false;
};

} // namespace kestrova
