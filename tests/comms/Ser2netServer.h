#pragma once

#include <QProcess>
#include <QString>

namespace kestrova::testing {

// ser2net on the loopback address in front of two serial devices (pseudo-terminals' links): the
// first reached on a raw TCP port, the second on a Telnet port with RFC 2217, each taking one
// connection at a time. Its configuration is written to the given directory. Stopped when
// destroyed.
class Ser2netServer {
public:
    Ser2netServer(const QString& directory, const QString& rawDevice, const QString& rfc2217Device);
    ~Ser2netServer();
    Ser2netServer(const Ser2netServer&) = delete;
    Ser2netServer& operator=(const Ser2netServer&) = delete;

    // Starts it and waits until both ports listen.
    void Start();
    // Stops it at once (as a device server switched off): its connections end.
    void Stop();
    [[nodiscard]] bool Running() const { return m_process.state() != QProcess::NotRunning; }
    [[nodiscard]] qint64 ProcessId() const { return m_process.processId(); }

    [[nodiscard]] quint16 TcpPort() const { return m_tcpPort; }
    [[nodiscard]] quint16 Rfc2217Port() const { return m_rfcPort; }

private:
    QString m_config;
    quint16 m_tcpPort = 0;
    quint16 m_rfcPort = 0;
    QProcess m_process;
};

} // namespace kestrova::testing
