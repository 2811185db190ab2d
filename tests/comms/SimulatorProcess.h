#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace kestrova::testing {

// The simulated machine control as a child process, driven command by command: each command
// waits (letting events run, so the program under test takes what arrives) until the machine
// has reported it done.
class SimulatorProcess {
public:
    // Starts the machine; it enters its device as COM<port> in the given device map.
    SimulatorProcess(const QString& devicesFile, int port);
    ~SimulatorProcess();

    [[nodiscard]] const QString& Device() const { return m_device; }
    // Sends one command and waits for its "ok" line; the lines it printed before, in order.
    QStringList Run(const QString& command, int limitMs = 20000);
    // Sends a command without waiting.
    void Start(const QString& command);
    // Waits for the "ok" or "error" line of a command started earlier.
    QStringList Finish(const QString& verb, int limitMs = 20000);

private:
    QProcess m_process;
    QString m_device;
    QByteArray m_pending;
};

} // namespace kestrova::testing
