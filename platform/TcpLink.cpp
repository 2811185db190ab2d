#include "platform/TcpLink.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>

namespace kestrova {

TcpLink::TcpLink(QObject* parent) : NetLink(parent), m_socket(this) {
    connect(&m_socket, &QTcpSocket::connected, this, [this] {
        m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
        Q_EMIT Connected();
    });
    connect(&m_socket, &QTcpSocket::readyRead, this, [this] { Q_EMIT Arrived(m_socket.readAll()); });
    connect(&m_socket, &QTcpSocket::bytesWritten, this, &NetLink::Written);
    connect(&m_socket, &QTcpSocket::errorOccurred, this, &TcpLink::OnError);
}

TcpLink::~TcpLink() {
    // What the socket still holds goes to the kernel, which delivers it after the close.
    if (m_socket.state() == QAbstractSocket::ConnectedState)
        m_socket.flush();
    m_socket.close();
}

bool TcpLink::ConnectNow(const NetAddress& address, int ms, QString& reason) {
    m_socket.connectToHost(address.host, address.port);
    if (m_socket.waitForConnected(ms))
        return true;
    reason = m_socket.error() == QAbstractSocket::SocketTimeoutError ? QStringLiteral("no answer")
                                                                     : m_socket.errorString();
    m_dropped = true; // told by the caller
    m_socket.abort();
    return false;
}

void TcpLink::ConnectLater(const NetAddress& address) {
    m_socket.connectToHost(address.host, address.port);
}

qsizetype TcpLink::Write(const QByteArray& bytes) {
    return qsizetype(qMax<qint64>(0, m_socket.write(bytes)));
}

qint64 TcpLink::Queued() const {
    // Bytes in the kernel not yet sent on the wire count; those sent and waiting for the device
    // server's acknowledgement have left this host.
    int unsent = 0;
    if (m_socket.socketDescriptor() < 0 ||
        ::ioctl(int(m_socket.socketDescriptor()), SIOCOUTQNSD, &unsent) != 0)
        unsent = 0;
    return m_socket.bytesToWrite() + unsent;
}

void TcpLink::OnError() {
    if (m_dropped)
        return;
    m_dropped = true;
    const QString reason = m_socket.error() == QAbstractSocket::RemoteHostClosedError
                               ? DeviceServerClosed()
                               : m_socket.errorString();
    Q_EMIT Dropped(reason);
}

} // namespace kestrova
