#include "SimulatorProcess.h"

#include "TestApplication.h"

#include <stdexcept>

namespace kestrova::testing {

SimulatorProcess::SimulatorProcess(const QString& devicesFile, int port) {
    TestApplication();
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral(KESTROVA_MACHINE_SIMULATOR),
                    {QStringLiteral("--devices"), devicesFile, QStringLiteral("--port"),
                     QString::number(port), QStringLiteral("--commands")});
    if (!m_process.waitForStarted(10000))
        throw std::runtime_error("the simulated machine does not start");
    Finish(QStringLiteral("device"));
}

SimulatorProcess::~SimulatorProcess() {
    if (m_process.state() != QProcess::NotRunning) {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(3000)) {
            m_process.kill();
            m_process.waitForFinished(3000);
        }
    }
}

void SimulatorProcess::Start(const QString& command) {
    m_process.write(command.toLocal8Bit() + '\n');
    m_process.waitForBytesWritten(1000);
}

QStringList SimulatorProcess::Run(const QString& command, int limitMs) {
    Start(command);
    return Finish(command.section(u' ', 0, 0), limitMs);
}

QStringList SimulatorProcess::Finish(const QString& verb, int limitMs) {
    QStringList lines;
    bool done = false;
    const bool ok = RunEventsUntil(
        [&] {
            m_pending += m_process.readAllStandardOutput();
            qsizetype nl;
            while (!done && (nl = m_pending.indexOf('\n')) >= 0) {
                const QString line = QString::fromLocal8Bit(m_pending.left(nl));
                m_pending.remove(0, nl + 1);
                if (line.startsWith(QStringLiteral("error ")))
                    throw std::runtime_error(("simulated machine: " + line).toStdString());
                if (verb == QLatin1String("device") && line.startsWith(QStringLiteral("device "))) {
                    m_device = line.mid(7);
                    done = true;
                } else if (line == QStringLiteral("ok ") + verb) {
                    done = true;
                } else {
                    lines << line;
                }
            }
            return done || m_process.state() == QProcess::NotRunning;
        },
        limitMs);
    if (!ok || !done)
        throw std::runtime_error(("simulated machine: no answer to " + verb).toStdString());
    return lines;
}

} // namespace kestrova::testing
