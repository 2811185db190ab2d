#include "comms/DncService.h"

#include "comms/PortSetup.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/KestrovaCfg.h"
#include "settings/MachineList.h"
#include "settings/MachineType.h"
#include "settings/SettingsFile.h"

#include <QCoreApplication>

namespace kestrova {

namespace {

// The state file is written at most this often, however busy the lines.
constexpr int PublishMs = 250;
// How often the state is written while a line transfers.
constexpr int BusyPublishMs = 1000;

} // namespace

DncService::DncService(Session& session, LineFactory lines, QObject* parent)
    : QObject(parent), m_session(session), m_factory(std::move(lines)), m_publish(this) {
    m_publish.setSingleShot(true);
    connect(&m_publish, &QTimer::timeout, this, &DncService::Publish);
}

DncService::~DncService() {
    try {
        Stop();
    } catch (const std::exception&) {
        // Closing down: what could not be kept has been told already.
    }
}

std::map<int, DncLineSetup> DncService::ReadSetups() {
    GlobalSettings& g = m_session.settings;
    FileSystem& files = m_session.files;
    try {
        ReadKestrovaCfg(m_session);
        g.ProgramPath = g.SystemPath;
        const MachineList machines = ReadMachineList(files, g.ProgramPath + QStringLiteral("Machine.lst"));
        g.MachineTable = machines.table;
        g.MachineCount = machines.count;
    } catch (const SystemError& e) {
        throw DncConfigError(e.text());
    }
    const QString configPath = files.FullPath(g.SystemPath + DncConfigName);
    const DncConfig config = ReadDncConfig(files, configPath);
    std::map<int, DncLineSetup> setups;
    std::map<int, int> portLines;
    for (const DncMachine& served : config.Machines) {
        const auto refuse = [&](const QString& reason) {
            throw DncConfigError(
                QStringLiteral("%1, line %2: %3").arg(configPath).arg(served.Line).arg(reason));
        };
        if (served.Number > g.MachineCount)
            refuse(QStringLiteral("there is no machine %1 in \"%2Machine.lst\"")
                       .arg(served.Number)
                       .arg(g.ProgramPath));
        const MachineRecord& record = g.MachineTable.at(served.Number);
        const QString machineDir = TrimBlanks(record.field2);
        const QString description = TrimBlanks(record.field1);
        const QString cms = g.SetupPath + QStringLiteral("Data\\") + machineDir + QStringLiteral(".cms");
        DncLineSetup setup;
        setup.Request = served.Request;
        try {
            setup.Send = ReadSendSettings(files, cms);
            GlobalSettings machineType = g;
            SetMachineType(machineType, ReadFirstKeyword(files, cms), description);
            setup.Machine = {machineDir, machineType.TerminalMode, machineType.IntermotionType,
                             machineType.RaskinRt85};
        } catch (const SystemError& e) {
            refuse(e.text());
        }
        const int port = setup.Send.Port;
        if (port < 1)
            refuse(QStringLiteral("machine %1 has no port in \"%2\"").arg(served.Number).arg(cms));
        if (const auto other = portLines.find(port); other != portLines.end())
            refuse(QStringLiteral("%1 is served already for the machine of line %2")
                       .arg(PortName(port))
                       .arg(other->second));
        portLines[port] = served.Line;

        QString directory = served.Directory;
        if (directory.isEmpty()) {
            // The machine's first data directory in name order.
            for (const QString& entry :
                 files.List(g.RootPath + machineDir + u'\\', QStringLiteral("*"), EntryKinds::Directories))
                if (entry.compare(QLatin1String("EXSUBS"), Qt::CaseInsensitive) != 0) {
                    directory = entry;
                    break;
                }
            if (directory.isEmpty())
                refuse(QStringLiteral("machine %1 has no data directory below \"%2%3\"")
                           .arg(served.Number)
                           .arg(g.RootPath, machineDir));
        }
        setup.Receive.Line.Port = setup.Send.Port;
        setup.Receive.Line.Enabled = true;
        setup.Receive.Line.Settings = setup.Send.Settings;
        // A served line answers too, and the control's XON is the start of an answer: the line
        // listens with XON/XOFF held back, as a send does while it waits for its start, and the
        // two characters are kept out of received programs, being flow control and never text.
        setup.Receive.Line.Handshaking =
            PortSetupFor(TransferKind::SendWaiting, port, setup.Send.Settings, setup.Send.Handshaking)
                .Handshaking;
        setup.Receive.Line.Trailer = setup.Send.Trailer;
        setup.Receive.Line.EndSequence = setup.Send.EndSequence;
        setup.Receive.Line.ReceiveFilter = setup.Send.ReceiveFilter;
        if (setup.Send.Handshaking & 1)
            for (const QChar flow : {QChar(17), QChar(19)})
                if (!setup.Receive.Line.ReceiveFilter.contains(flow))
                    setup.Receive.Line.ReceiveFilter << flow;
        setup.Receive.MachineDir = machineDir;
        setup.Receive.MachineDescription = description;
        setup.Receive.Directory = directory;
        // Each line collects in a file of its own: two lines never share one.
        setup.Receive.ListShown = false;
        setup.Receive.CollectName = QStringLiteral("Receive ") + PortName(port) + QStringLiteral(".tmp");
        setups.emplace(port, setup);
    }
    return setups;
}

void DncService::StartLines(const std::map<int, DncLineSetup>& setups) {
    for (const auto& [port, setup] : setups) {
        auto line = std::make_unique<DncLine>(m_session, m_factory(port), setup);
        connect(line.get(), &DncLine::StateChanged, this, &DncService::PublishSoon);
        line->Start();
        m_lines.emplace(port, std::move(line));
    }
    Publish();
}

void DncService::Start() {
    std::map<int, DncLineSetup> setups = ReadSetups();
    Stop();
    StartLines(setups);
}

void DncService::Reload() {
    std::map<int, DncLineSetup> setups = ReadSetups();
    for (auto it = m_lines.begin(); it != m_lines.end();) {
        const auto wanted = setups.find(it->first);
        if (wanted != setups.end() && wanted->second == it->second->Setup()) {
            setups.erase(wanted); // unchanged: it keeps its transfer
            ++it;
            continue;
        }
        it->second->Stop(QStringLiteral("The settings of the DNC service changed"));
        it = m_lines.erase(it);
    }
    StartLines(setups);
}

void DncService::Stop() {
    for (auto& [port, line] : m_lines)
        line->Stop(QStringLiteral("The DNC service stopped"));
    const bool served = !m_lines.empty();
    m_lines.clear();
    m_publish.stop();
    if (served) {
        try {
            const QString path = m_session.settings.SystemPath + DncStateName;
            if (m_session.files.IsFile(path))
                m_session.files.Delete(path);
        } catch (const SystemError& e) {
            std::fprintf(stderr, "kestrova-dnc: %s\n", qPrintable(e.text()));
        }
    }
}

QStringList DncService::StateLines() const {
    QStringList lines{QStringLiteral("Process : %1").arg(QCoreApplication::applicationPid())};
    for (const auto& [port, line] : m_lines) {
        const DncLineSetup& setup = line->Setup();
        QString text = PortName(port) + u'\t' + setup.Receive.MachineDir + u'\t' + line->StateText();
        if (!line->LastError().isEmpty())
            text += u'\t' + DncLastErrorLabel + line->LastError();
        lines << text;
    }
    return lines;
}

void DncService::PublishSoon() {
    if (!m_publish.isActive())
        m_publish.start(PublishMs);
}

void DncService::Publish() {
    // A transfer's progress and rate change with every second even when no event comes.
    for (const auto& [port, line] : m_lines)
        if (line->State() == DncLineState::Receiving || line->State() == DncLineState::Sending) {
            m_publish.start(BusyPublishMs);
            break;
        }
    try {
        WriteSettingsFile(m_session.files, m_session.settings.SystemPath + DncStateName, StateLines());
    } catch (const SystemError& e) {
        // The monitor shows an older state; the lines serve on.
        std::fprintf(stderr, "kestrova-dnc: %s\n", qPrintable(e.text()));
    }
}

} // namespace kestrova
