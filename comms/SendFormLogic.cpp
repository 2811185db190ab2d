#include "comms/SendFormLogic.h"

#include "comms/DncState.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/TransferLog.h"
#include "filestore/Listings.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "settings/MachineType.h"
#include "settings/SettingsFile.h"

namespace kestrova {

namespace {

// What the control did to stop a send in its trailer, as the operator is told it.
QString StopEventText(std::optional<CommEvent> event) {
    if (!event)
        return {};
    switch (*event) {
    case CommEvent::Break:
        return QStringLiteral("A Break Arrived");
    case CommEvent::CdTimeOut:
        return QStringLiteral("The Carrier Stayed Off");
    case CommEvent::CtsTimeOut:
        return QStringLiteral("CTS Stayed Off");
    default:
        return {};
    }
}

} // namespace

SendFormLogic::SendFormLogic(Session& session, SendEngine& engine, SendKind kind)
    : m_session(session), m_engine(engine), m_kind(kind) {}

void SendFormLogic::Form_Load() {
    GlobalSettings& g = m_session.settings;
    LoadMachine(g.MachineDir, g.MachineDescription);
    g.CommsDirectory = g.CurrentDir;
}

QString SendFormLogic::SettingsPath() const {
    const GlobalSettings& g = m_session.settings;
    return g.SetupPath + QStringLiteral("Data\\") + g.CommsMachineDir + QStringLiteral(".cms");
}

void SendFormLogic::LoadMachine(const QString& machineDir, const QString& description) {
    GlobalSettings& g = m_session.settings;
    const QString path = g.SetupPath + QStringLiteral("Data\\") + machineDir + QStringLiteral(".cms");
    const SendSettings settings = ReadSendSettings(m_session.files, path);
    // The kind of header and acknowledgement comes from the control type of that machine's file,
    // read the way the machine load reads the current machine's.
    GlobalSettings flags;
    SetMachineType(flags, ReadFirstKeyword(m_session.files, path), description);
    m_engine.SetSettings(settings);
    m_engine.SetMachine({machineDir, flags.TerminalMode, flags.IntermotionType, flags.RaskinRt85});
    m_producer = flags.WestinghouseProducer;
    g.CommsMachineDir = machineDir;
}

QStringList SendFormLogic::Machines() const {
    const GlobalSettings& g = m_session.settings;
    QStringList names;
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n)
        names << TrimBlanks(g.MachineTable.at(n).field1);
    return names;
}

int SendFormLogic::MachineIndex() const {
    const GlobalSettings& g = m_session.settings;
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n)
        if (TrimBlanks(g.MachineTable.at(n).field2).compare(g.CommsMachineDir, Qt::CaseInsensitive) == 0)
            return n - 1;
    return -1;
}

void SendFormLogic::MachineChosen(int index) {
    const GlobalSettings& g = m_session.settings;
    if (index < 0 || index + 1 >= g.MachineTable.size() || index + 1 > g.MachineCount)
        return;
    const MachineRecord& record = g.MachineTable.at(index + 1);
    LoadMachine(TrimBlanks(record.field2), TrimBlanks(record.field1));
    ListModel directories;
    FillDirectoryList(m_session, directories, g.CommsMachineDir, QString(), false, true, Selection::First);
    m_session.settings.CommsDirectory = directories.SelectedText();
}

void SendFormLogic::FillDirectories(ListModel& list) {
    const GlobalSettings& g = m_session.settings;
    FillDirectoryList(m_session, list, g.CommsMachineDir, g.CommsDirectory, false, true, Selection::Named);
}

void SendFormLogic::DirectoryChosen(const QString& name) {
    if (!TrimBlanks(name).isEmpty())
        m_session.settings.CommsDirectory = TrimBlanks(name);
}

void SendFormLogic::FillPrograms(ListModel& list) {
    const GlobalSettings& g = m_session.settings;
    FillFileList(m_session, list, g.CommsMachineDir, g.CommsDirectory, QString(), Selection::None, 2,
                 QString());
}

bool SendFormLogic::Supported() const {
    return m_kind == SendKind::Program && !m_producer;
}

void SendFormLogic::SendOk_Click(const QStringList& names) {
    MessageService& messages = m_session.messages;
    if (!Supported()) {
        messages.Report(DialogueNotSupported);
        return;
    }
    if (names.isEmpty()) {
        messages.Refuse(QStringLiteral("No Files Selected !"));
        return;
    }
    const GlobalSettings& g = m_session.settings;
    // A port the DNC service holds cannot be opened here: say who holds it.
    if (const std::optional<DncState> service = ReadDncState(m_session.files, g.SystemPath);
        service && service->Holding(m_engine.Settings().Port)) {
        messages.Refuse(service->HeldText(m_engine.Settings().Port));
        return;
    }
    const QString directory = PathJoin(g, g.CommsMachineDir, g.CommsDirectory);
    for (const QString& name : names) {
        const QString path = directory + name + QStringLiteral(".prg");
        const qint64 count = m_session.files.Length(path);
        TransferRecord record{g.CommsMachineDir, m_engine.Settings().Port, name, count,
                              QStringLiteral("sent")};
        SendEnd end = SendEnd::Sent;
        try {
            end = m_engine.SendProgram(m_session.files, g.CommsDirectory, name, path, count);
        } catch (const SystemError& e) {
            record.Result = QStringLiteral("failed: ") + e.text();
            AppendTransferLog(m_session, record);
            throw;
        }
        const QString stopped = end == SendEnd::Aborted ? StopEventText(m_engine.StopEvent()) : QString();
        if (end == SendEnd::Aborted)
            record.Result =
                stopped.isEmpty() ? QStringLiteral("aborted") : QStringLiteral("aborted: ") + stopped;
        else if (end == SendEnd::LineLost)
            record.Result = QStringLiteral("failed: ") + m_engine.LostMessage();
        else if (end == SendEnd::Undrained)
            record.Result = QStringLiteral("failed: %1 characters did not leave").arg(m_engine.Undrained());
        AppendTransferLog(m_session, record);
        if (end == SendEnd::LineLost) {
            messages.ShowError(m_engine.LostMessage());
            return;
        }
        if (end == SendEnd::Aborted) {
            // The operator's abort ends the run silently; the control's is told.
            if (!stopped.isEmpty())
                messages.Report(QStringLiteral("\"%1\" Was Not Sent Completely: %2 On \"%3\" !")
                                    .arg(name, stopped, PortName(m_engine.Settings().Port)));
            return;
        }
        if (end == SendEnd::Undrained) {
            messages.Report(
                QStringLiteral("\"%1\" Was Not Sent Completely: %2 Characters Did Not Leave \"%3\" !")
                    .arg(name)
                    .arg(m_engine.Undrained())
                    .arg(PortName(m_engine.Settings().Port)));
            return;
        }
    }
}

} // namespace kestrova
