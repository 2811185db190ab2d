#include "Ser2netServer.h"

#include <QFile>
#include <QTcpServer>
#include <QThread>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

namespace kestrova::testing {

namespace {

// A port the system has free now.
quint16 FreePort() {
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        throw std::runtime_error("no free port");
    return probe.serverPort();
}

// Whether something listens on the loopback port, from the kernel's table (a test connection
// would take the device server's one connection).
bool Listening(quint16 port) {
    QFile table(QStringLiteral("/proc/net/tcp"));
    if (!table.open(QIODevice::ReadOnly))
        return false;
    const QByteArray local = ":" + QByteArray::number(port, 16).toUpper().rightJustified(4, '0') + " ";
    for (const QByteArray& line : table.readAll().split('\n'))
        if (line.contains(local) && line.simplified().split(' ').value(3) == "0A")
            return true;
    return false;
}

} // namespace

Ser2netServer::Ser2netServer(const QString& directory, const QString& rawDevice, const QString& rfc2217Device)
    : m_config(directory + QStringLiteral("/ser2net.yaml")), m_tcpPort(FreePort()), m_rfcPort(FreePort()) {
    QFile f(m_config);
    if (!f.open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write the ser2net configuration");
    f.write(QStringLiteral("%YAML 1.1\n---\n"
                           "connection: &raw\n"
                           "  accepter: tcp,127.0.0.1,%1\n"
                           "  connector: serialdev,%3,9600n81,local\n"
                           "connection: &rfc2217\n"
                           "  accepter: telnet(rfc2217),tcp,127.0.0.1,%2\n"
                           "  connector: serialdev,%4,9600n81,local\n")
                .arg(m_tcpPort)
                .arg(m_rfcPort)
                .arg(rawDevice, rfc2217Device)
                .toUtf8());
}

Ser2netServer::~Ser2netServer() {
    Stop();
}

void Ser2netServer::Start() {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    // A test that crashes takes its device server with it, or ser2net would hold the test's
    // output open and the run would wait for it.
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(QStringLiteral("ser2net"), {QStringLiteral("-n"), QStringLiteral("-c"), m_config});
    if (!m_process.waitForStarted(5000))
        throw std::runtime_error("ser2net does not start (is it installed?)");
    for (int waited = 0; !(Listening(m_tcpPort) && Listening(m_rfcPort)); waited += 20) {
        if (waited >= 5000 || m_process.state() != QProcess::Running)
            throw std::runtime_error("ser2net does not listen");
        QThread::msleep(20);
    }
}

void Ser2netServer::Stop() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(5000);
}

} // namespace kestrova::testing
