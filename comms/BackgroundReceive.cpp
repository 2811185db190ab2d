#include "comms/BackgroundReceive.h"

#include "comms/DncState.h"
#include "comms/PortSetup.h"
#include "comms/ReceivedHeader.h"
#include "comms/ReceivedOver.h"
#include "comms/TransferLog.h"
#include "comms/UnfiledProgram.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/ScreenText.h"

#include <QDebug>
#include <QStringView>

namespace kestrova {

namespace {

const QString TempName = QStringLiteral("Receive.tmp");
const QString ListName = QStringLiteral("Receive.lst");
const QString DefaultStem = QStringLiteral("New Program ");
const QString UnfiledStem = QStringLiteral("Unfiled ");

// Whether match equals the first n characters of sequence (all of it when n is longer).
bool EqualsStart(const QString& match, const QString& sequence, qsizetype n) {
    return QStringView(sequence).left(n) == match;
}

} // namespace

BackgroundReceive::BackgroundReceive(Session& session, std::unique_ptr<SerialLine> line, QObject* parent)
    : QObject(parent), m_session(session), m_line(std::move(line)) {
    connect(m_line.get(), &SerialLine::Comm, this, &BackgroundReceive::OnComm);
    connect(m_line.get(), &SerialLine::LineLost, this, &BackgroundReceive::OnLineLost);
    connect(m_line.get(), &SerialLine::DeviceMayBeBack, this, &BackgroundReceive::OnDeviceMayBeBack);
    connect(&m_serviceLook, &QTimer::timeout, this, &BackgroundReceive::LookAtService);
}

BackgroundReceive::~BackgroundReceive() {
    try {
        Stop();
    } catch (const std::exception&) {
        // Closing down: a temporary file that cannot be deleted stays behind.
    }
}

void BackgroundReceive::Start() {
    Stop();
    ReceiveLineSetup setup;
    setup.Line = ReadBackgroundSettings(m_session.files, m_session.settings.SystemPath);
    StartLine(setup, true);
}

void BackgroundReceive::Start(const ReceiveLineSetup& setup) {
    StartLine(setup, false);
}

void BackgroundReceive::StartLine(const ReceiveLineSetup& setup, bool besideService) {
    Stop();
    m_besideService = besideService;
    m_setup = setup;
    m_settings = setup.Line;
    m_tempPath = m_session.settings.SystemPath + (setup.CollectName.isEmpty() ? TempName : setup.CollectName);
    m_listPath = m_session.settings.SystemPath + ListName;
    m_receiving = false;
    m_filtered.reset();
    for (const QChar c : m_settings.ReceiveFilter)
        if (const int byte = ByteOfScreenChar(c); byte >= 0)
            m_filtered.set(size_t(byte));
    RefreshReceiveList();
    m_lossTold = false;
    if (!m_settings.Enabled)
        return;
    if (m_besideService && ServiceHoldsPort()) {
        // The service files what arrives; the window shows it and leaves the port alone.
        SetState(BackgroundLineState::Served);
        m_listLength = m_session.files.IsFile(m_listPath) ? m_session.files.Length(m_listPath) : -1;
        m_serviceLook.start(ServiceLookMs);
        return;
    }
    OpenPort(true);
}

bool BackgroundReceive::ServiceHoldsPort() const {
    const std::optional<DncState> service = ReadDncState(m_session.files, m_session.settings.SystemPath);
    return service && service->Holding(m_settings.Port);
}

void BackgroundReceive::LookAtService() {
    if (m_state != BackgroundLineState::Served) {
        m_serviceLook.stop();
        return;
    }
    try {
        const qint64 length = m_session.files.IsFile(m_listPath) ? m_session.files.Length(m_listPath) : -1;
        if (length != m_listLength) {
            m_listLength = length;
            RefreshReceiveList();
        }
    } catch (const SystemError& e) {
        qWarning().noquote() << QStringLiteral("Kestrova: %1").arg(e.text());
    }
    if (!ServiceHoldsPort()) {
        // The service has stopped: the window listens itself again.
        m_serviceLook.stop();
        OpenPort(true);
    }
}

void BackgroundReceive::OpenPort(bool report) {
    try {
        PreparePort(*m_line, PortSetupFor(TransferKind::Background, m_settings.Port, m_settings.Settings,
                                          m_settings.Handshaking));
    } catch (const SystemError& e) {
        Q_EMIT LineTrouble(e.text());
        if (report) {
            m_session.messages.ShowError(e.text());
            m_lossTold = true;
        }
        if (!ParseFraming(m_settings.Settings)) {
            SetState(BackgroundLineState::Off); // no device will make these settings work
            return;
        }
        SetState(BackgroundLineState::WaitingForDevice);
        m_line->WatchDevice(true);
        return;
    }
    m_line->WatchDevice(false);
    SetState(BackgroundLineState::Listening);
}

void BackgroundReceive::OnDeviceMayBeBack() {
    // Tried quietly: the operator has been told once that the device is missing.
    if (m_state == BackgroundLineState::WaitingForDevice)
        OpenPort(false);
}

void BackgroundReceive::SetState(BackgroundLineState state) {
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT LineStateChanged();
}

QString BackgroundReceive::LineStateText() const {
    switch (m_state) {
    case BackgroundLineState::Listening:
        return QStringLiteral("Listening on ") + PortName(m_settings.Port);
    case BackgroundLineState::WaitingForDevice:
        return QStringLiteral("Waiting for ") + PortName(m_settings.Port);
    case BackgroundLineState::Served:
        return PortName(m_settings.Port) + QStringLiteral(" served by the DNC service");
    case BackgroundLineState::Off:
        break;
    }
    return QStringLiteral("Background receive off");
}

void BackgroundReceive::Stop() {
    m_serviceLook.stop();
    m_line->WatchDevice(false);
    SetState(BackgroundLineState::Off);
    CloseLine();
}

bool BackgroundReceive::KeepCutOff(const QString& reason) {
    if (!m_receiving)
        return false;
    const bool keptAlready = !m_keptPath.isEmpty();
    try {
        CloseTemp();
    } catch (const SystemError&) {
    }
    m_receiving = false;
    m_pending.clear();
    if (keptAlready) {
        m_keptPath.clear();
        return false;
    }
    FileSystem& files = m_session.files;
    if (m_collectPath.isEmpty() || !files.IsFile(m_collectPath) || files.Length(m_collectPath) < 1)
        return false;
    KeepUnfiled(reason);
    return true;
}

void BackgroundReceive::CloseLine() {
    if (m_line->PortOpen())
        m_line->SetPortOpen(false);
    m_pending.clear();
    m_keptPath.clear();
    CloseTemp();
    m_receiving = false;
    if (!m_collectPath.isEmpty() && !m_held.contains(m_collectPath) && m_session.files.IsFile(m_collectPath))
        m_session.files.Delete(m_collectPath);
    m_collectPath.clear();
}

void BackgroundReceive::OpenTemp() {
    m_keptPath.clear();
    m_arrivingStart.clear();
    m_arrived = 0;
    MoveHeldAway();
    m_collectPath = FreeCollectPath();
    m_receiving = true;
    try {
        m_temp = std::make_unique<TextWriter>(m_session.files, m_collectPath, TextWriter::Mode::Create);
        m_temp->WriteThrough();
    } catch (const SystemError& e) {
        // Without "Receive.tmp" this program goes to a file of its own from its first character:
        // a program whose beginning is missing must never be filed as if it were whole.
        DivertAfterWriteFailure(e.text());
    }
}

void BackgroundReceive::HoldIfNotMoved(const QString& kept) {
    // Where a program could not be moved out of its collecting file, it stays there: neither the
    // next program nor a stop may replace it, and the next program collects in a file of its own.
    if (kept == m_collectPath && !m_held.contains(kept))
        m_held.append(kept);
}

void BackgroundReceive::MoveHeldAway() {
    // Programs that could not be moved out of their collecting files: tried again, quietly.
    // Oldest first, so that the "Unfiled N.prg" names follow the order the programs came in.
    QStringList stillHeld;
    for (const QString& held : std::as_const(m_held)) {
        QString failure;
        if (kestrova::KeepUnfiled(m_session.files, m_session.settings.ProgramPath, held, failure) == held)
            stillHeld << held;
    }
    m_held = stillHeld;
}

QString BackgroundReceive::FreeCollectPath() const {
    // "Receive.tmp" unless it holds a program that could not be moved away; then "Receive 2.tmp"
    // and on, so that two programs never end up in one file.
    QString path = m_tempPath;
    for (int n = 2; m_held.contains(path); ++n)
        path = m_session.settings.SystemPath + QStringLiteral("Receive ") + NumberText(n) +
               QStringLiteral(".tmp");
    return path;
}

void BackgroundReceive::DropSpareCollectFile() {
    // "Receive.tmp" is left as it always has been, replaced by the next program; a spare one
    // taken while it was held has done its work.
    if (m_collectPath == m_tempPath)
        return;
    try {
        if (m_session.files.IsFile(m_collectPath))
            m_session.files.Delete(m_collectPath);
    } catch (const SystemError& e) {
        qWarning().noquote() << QStringLiteral("Kestrova: %1").arg(e.text());
    }
}

void BackgroundReceive::CloseTemp() {
    if (!m_temp)
        return;
    std::unique_ptr<TextWriter> temp = std::move(m_temp);
    temp->Close();
}

void BackgroundReceive::TakeReceivedText(const QString& chunk) {
    m_lossTold = false; // the line works: its next loss is news
    if (!m_receiving)
        OpenTemp();
    const QString& trailer = m_settings.Trailer;
    const QString& endSequence = m_settings.EndSequence;
    // Characters go to the file in runs; the order of the steps is that of one character at a time.
    QByteArray run;
    auto flush = [this, &run] {
        if (!run.isEmpty())
            WriteReceived(run);
        run.clear();
    };
    for (qsizetype i = 0; i < chunk.size(); ++i) {
        const QChar c = chunk.at(i);
        const int byte = ByteOfScreenChar(c);
        const bool filtered = byte >= 0 && m_filtered.test(size_t(byte));
        // Most characters neither continue a match nor start one: the steps below would leave
        // both matches empty, and the character goes to the file unless filtered.
        if (m_trailerMatch.isEmpty() && (trailer.isEmpty() || c != trailer.at(0))) {
            m_endMatch.clear();
            if (m_receiving && !filtered)
                run += char(byte);
            continue;
        }
        // A match that fails is dropped whole; the character that broke it is not tried as the
        // start of a new one, so a trailer that begins inside a failed match is missed.
        m_trailerMatch += c;
        if (!EqualsStart(m_trailerMatch, trailer, m_trailerMatch.size()))
            m_trailerMatch.clear();
        // Compared over as many characters as the trailer's match holds, as it always has been;
        // the end sequence's match changes nothing else.
        m_endMatch += c;
        if (!EqualsStart(m_endMatch, endSequence, m_trailerMatch.size()))
            m_endMatch.clear();
        if (!trailer.isEmpty() && m_trailerMatch == trailer) {
            // All of the trailer but its last character is in the file by now; the last one
            // goes to the next program when this chunk goes on, and nowhere otherwise.
            flush();
            const bool keptAlready = !m_keptPath.isEmpty();
            try {
                CloseTemp();
            } catch (const SystemError& e) {
                if (!keptAlready)
                    DivertAfterWriteFailure(e.text());
            }
            m_receiving = false;
            if (m_keptPath.isEmpty()) {
                try {
                    FileReceivedProgram();
                    DropSpareCollectFile();
                } catch (const SystemError& e) {
                    // Nothing received is discarded, and the rest of the chunk goes on.
                    KeepUnfiled(e.text());
                }
            }
            m_keptPath.clear();
            m_temp.reset();
            if (!m_taking) {
                // The program was a request, and its answer now reads the line: what came with
                // it (the control's start, often) is the answer's.
                m_trailerMatch.clear();
                m_endMatch.clear();
                if (i + 1 < chunk.size())
                    Q_EMIT LeftForAnotherReader(chunk.mid(i + 1));
                return;
            }
            if (i + 1 < chunk.size())
                OpenTemp();
        }
        if (m_receiving && !filtered)
            run += char(byte);
    }
    flush();
}

void BackgroundReceive::FileReceivedProgram() {
    FileSystem& files = m_session.files;
    const GlobalSettings& g = m_session.settings;
    if (m_collectPath.isEmpty() || !files.IsFile(m_collectPath))
        return;
    if (files.Length(m_collectPath) < 2) {
        files.Delete(m_collectPath);
        return;
    }
    // A request from the control is answered, not filed.
    if (m_programTaker && m_programTaker(m_collectPath))
        return;

    ReceivedHeader header;
    {
        LineReader in(files, m_collectPath);
        for (int index = 0; index < 3 && !in.AtEnd(); ++index)
            header.TakeLine(index, TrimBlanks(in.ReadLine()));
    }

    // A program addressed to a machine the list does not know is filed for the current one.
    // The line's own machine and directory where the header names none: the current ones on the
    // main window, the served machine's on the DNC service.
    const QString defaultMachine = m_setup.MachineDir.isEmpty() ? g.MachineDir : m_setup.MachineDir;
    const QString defaultDirectory = m_setup.Directory.isEmpty() ? g.CurrentDir : m_setup.Directory;
    QString machine = header.Machine.isEmpty() ? defaultMachine : header.Machine;
    QString description;
    bool known = false;
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n) {
        const MachineRecord& record = g.MachineTable.at(n);
        if (TrimBlanks(record.field2).compare(machine, Qt::CaseInsensitive) == 0) {
            machine = TrimBlanks(record.field2);
            description = TrimBlanks(record.field1);
            known = true;
            break;
        }
    }
    if (!known) {
        machine = defaultMachine;
        description = m_setup.MachineDir.isEmpty() ? g.MachineDescription : m_setup.MachineDescription;
    }

    // Header names have been checked as names from outside; the store checks them again where
    // they are joined to a path, as every store does.
    const QString directory = header.Directory.isEmpty() || !StaysInDirectory(header.Directory)
                                  ? defaultDirectory
                                  : header.Directory;
    const QString path = PathJoin(g, machine, directory);
    if (!files.IsDirectory(path.chopped(1)))
        files.MakeDirectory(path.chopped(1));

    QString program = header.Program;
    std::optional<QString> named = FileInDirectory(path, program, QStringLiteral("prg"));
    if (program.isEmpty() || !named) {
        Int16 n = 1;
        while (files.Exists(path + DefaultStem + NumberText(n) + QStringLiteral(".prg")))
            ++n;
        program = DefaultStem + NumberText(n);
        named = FileInDirectory(path, program, QStringLiteral("prg"));
    }
    const QString target = *named;
    const ReceivedOver over(m_session, target, m_settings.Port);
    // The program of that name is replaced whole: it keeps its text until the new one is complete
    // and on the disk, and a link stays a link, so a failure here leaves it as it was and the
    // received program whole in its collecting file.
    if (header.Found) {
        LineReader in(files, m_collectPath);
        TextWriter out(files, target, TextWriter::Mode::Replace);
        while (!in.AtEnd()) {
            const QString line = TrimBlanks(in.ReadLine());
            if (!line.isEmpty() && !HoldsHeaderMarker(line))
                out.WriteLine(line);
        }
        out.Close();
    } else {
        files.Copy(m_collectPath, target);
    }

    const QString told = over.Told();
    QString entry = program + QStringLiteral(" in ") + directory;
    if (g.MachineCount >= 2)
        entry += QStringLiteral(" for ") + description;
    entry += told;
    try {
        AddListLine(entry);
        RefreshReceiveList();
    } catch (const SystemError& e) {
        // The program is filed whole; only the list of received programs lacks its line.
        m_session.messages.ShowError(e.text());
    }

    AppendTransferLog(m_session, {machine, m_settings.Port, program, files.Length(target),
                                  QStringLiteral("received") + told});
    Q_EMIT ProgramFiled(target);
    CloseTemp();
    m_receiving = false;
}

void BackgroundReceive::AddListLine(const QString& entry) {
    FileSystem& files = m_session.files;
    const bool fresh = !files.IsFile(m_listPath) || files.Length(m_listPath) < 4;
    TextWriter list(files, m_listPath, fresh ? TextWriter::Mode::Create : TextWriter::Mode::Append);
    list.WriteLine(entry);
    list.Close();
}

void BackgroundReceive::KeepUnfiled(const QString& reason) {
    FileSystem& files = m_session.files;
    QString failure;
    const QString kept = kestrova::KeepUnfiled(files, m_session.settings.ProgramPath, m_collectPath, failure);
    HoldIfNotMoved(kept);
    TellUnfiled(kept, reason, failure);
}

void BackgroundReceive::TellUnfiled(const QString& kept, const QString& reason, const QString& failure) {
    FileSystem& files = m_session.files;
    try {
        AddListLine(LastComponent(kept) + QStringLiteral(" not filed: ") + reason);
        RefreshReceiveList();
    } catch (const SystemError& e) {
        qWarning().noquote() << QStringLiteral("Kestrova: %1").arg(e.text());
    }
    AppendTransferLog(m_session,
                      {m_setup.MachineDir.isEmpty() ? m_session.settings.MachineDir : m_setup.MachineDir,
                       m_settings.Port, LastComponent(kept), files.IsFile(kept) ? files.Length(kept) : 0,
                       QStringLiteral("failed: ") + reason});
    m_session.messages.ShowError(KeptUnfiledText(reason, kept, failure));
}

QString BackgroundReceive::ArrivingName() const {
    return m_receiving ? HeaderOfStart(m_arrivingStart).Program : QString();
}

void BackgroundReceive::WriteReceived(const QByteArray& bytes) {
    // Three header lines are short: what is kept of the start is bounded.
    constexpr qsizetype HeaderRoom = 400;
    m_arrived += bytes.size();
    if (m_arrivingStart.size() < HeaderRoom)
        m_arrivingStart += bytes.left(HeaderRoom - m_arrivingStart.size());
    m_pending += bytes;
    if (m_pending.isEmpty() || !m_temp)
        return;
    try {
        WritePending();
        return;
    } catch (const SystemError& e) {
        if (m_keptPath.isEmpty())
            DivertAfterWriteFailure(e.text());
        // else: the program's own file failed too; what did not reach it waits here and goes
        // with the next characters.
    }
}

void BackgroundReceive::WritePending() {
    const std::int64_t before = m_temp->Written();
    try {
        m_temp->WriteBytes(m_pending);
    } catch (const SystemError&) {
        // What the file took is in it; only the rest waits, and none of it twice.
        m_pending.remove(0, qsizetype(m_temp->Written() - before));
        throw;
    }
    m_pending.clear();
}

void BackgroundReceive::DivertAfterWriteFailure(const QString& reason) {
    // "Receive.tmp" cannot take more: what it holds is moved to a file of its own, and the rest
    // of this program follows it there.
    FileSystem& files = m_session.files;
    try {
        CloseTemp();
    } catch (const SystemError&) {
    }
    QString failure;
    const QString kept =
        files.IsFile(m_collectPath)
            ? kestrova::KeepUnfiled(files, m_session.settings.ProgramPath, m_collectPath, failure)
            : FreeUnfiledName(files, m_session.settings.ProgramPath);
    HoldIfNotMoved(kept);
    m_keptPath = kept;
    try {
        m_temp = std::make_unique<TextWriter>(files, kept, TextWriter::Mode::Append);
        m_temp->WriteThrough();
        WritePending();
    } catch (const SystemError& e) {
        if (failure.isEmpty())
            failure = e.text();
    }
    TellUnfiled(kept, reason, failure);
}

void BackgroundReceive::RefreshReceiveList() {
    if (!m_setup.ListShown)
        return;
    FileSystem& files = m_session.files;
    m_list.Clear();
    if (m_listPath.isEmpty() || !files.IsFile(m_listPath)) {
        m_frameVisible = false;
    } else if (files.Length(m_listPath) < 4) {
        files.Delete(m_listPath);
        m_frameVisible = false;
    } else {
        for (const QString& line : ReadAllLines(files, m_listPath)) {
            const QString entry = TrimBlanks(line);
            if (!entry.isEmpty())
                m_list.Add(entry);
        }
        m_frameVisible = true;
    }
    Q_EMIT ReceiveListChanged();
}

void BackgroundReceive::ReceiveButton_Click() {
    if (!m_listPath.isEmpty() && m_session.files.IsFile(m_listPath))
        m_session.files.Delete(m_listPath);
    m_frameVisible = false;
    Q_EMIT ReceiveListChanged();
}

bool BackgroundReceive::ReceiveList_GotFocus() {
    m_list.selected = -1;
    return m_frameVisible;
}

void BackgroundReceive::SetTaking(bool on) {
    m_taking = on;
    // What came while another reader had the line (a control that sends its next program as soon
    // as an answer has reached it) is taken now: no event may come for it again.
    if (on && m_line->PortOpen() && m_line->InBufferCount() > 0)
        OnComm(CommEvent::Receive);
}

void BackgroundReceive::OnComm(CommEvent event) {
    if (!m_taking || event != CommEvent::Receive || m_line->InBufferCount() < 1)
        return;
    try {
        TakeReceivedText(m_line->Input());
    } catch (const SystemError& e) {
        // The edge of the port's event: shown once, and the receive goes on.
        m_session.messages.ShowError(e.text());
    }
}

void BackgroundReceive::OnLineLost(const QString& message) {
    // The line is closed already; the program it was bringing is incomplete and is not filed.
    // A device server's dropped connection keeps it as an Unfiled program, told with the loss.
    // One message says all, and the receive comes back by itself with the device.
    QString text = message;
    bool told = false;
    try {
        told = m_line->OnDeviceServer() && KeepCutOff(message);
        CloseLine();
    } catch (const SystemError& e) {
        text += u'\n' + e.text();
    }
    SetState(BackgroundLineState::WaitingForDevice);
    m_line->WatchDevice(true);
    Q_EMIT LineTrouble(text);
    if (!m_lossTold && !told)
        m_session.messages.ShowError(text);
    m_lossTold = true;
}

} // namespace kestrova
