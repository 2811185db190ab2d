#pragma once

#include "comms/DncConfig.h"
#include "comms/DncLine.h"

#include <QObject>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>

namespace kestrova {

// The name of the file through which the service tells what it serves, in the system directory.
inline const QString DncStateName = QStringLiteral("Dnc.state");
// Before a line's last error in "Dnc.state".
inline const QString DncLastErrorLabel = QStringLiteral("last error: ");

// The DNC service: every machine that "Dnc.cfg" names, served on its own line at once, headless.
// Each line files what its control sends by the background receive's rules and answers its
// requests; the state of every line is published in "Dnc.state" for the main window.
class DncService : public QObject {
    Q_OBJECT
public:
    // Makes the line of a port: the host's serial port in the program, a scripted one in tests.
    using LineFactory = std::function<std::unique_ptr<SerialLine>(int port)>;

    DncService(Session& session, LineFactory lines, QObject* parent = nullptr);
    ~DncService() override;

    // Reads "Kestrova.cfg", "Machine.lst", "Dnc.cfg" and each served machine's communication
    // settings, and starts every line. A settings file that cannot serve (missing, a machine the
    // list does not know, two machines on one port) raises DncConfigError naming the file and
    // line; nothing is started then.
    void Start();
    // The settings again (SIGHUP): a line whose settings did not change keeps its transfer; the
    // others start anew, stopped ones keeping what they were receiving. On an error the lines
    // serve on as they were, and the error is raised.
    void Reload();
    // Every line stops: answers end, programs on their way are kept as Unfiled programs.
    void Stop();

    [[nodiscard]] const std::map<int, std::unique_ptr<DncLine>>& Lines() const { return m_lines; }
    // What "Dnc.state" holds now.
    [[nodiscard]] QStringList StateLines() const;

private:
    // The lines the settings ask for, by port.
    [[nodiscard]] std::map<int, DncLineSetup> ReadSetups();
    void StartLines(const std::map<int, DncLineSetup>& setups);
    void PublishSoon();
    void Publish();

    Session& m_session;
    LineFactory m_factory;
    std::map<int, std::unique_ptr<DncLine>> m_lines;
    QTimer m_publish;
};

} // namespace kestrova
