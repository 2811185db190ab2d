#include "comms/DncLine.h"

#include "comms/TransferLog.h"
#include "platform/TextFile.h"

namespace kestrova {

bool operator==(const DncLineSetup& a, const DncLineSetup& b) {
    const auto line = [](const BackgroundSettings& s) {
        return std::tuple(int(s.Port), s.Enabled, s.Settings, s.Handshaking, s.Trailer, s.EndSequence,
                          s.ReceiveFilter);
    };
    const auto send = [](const SendSettings& s) {
        return std::tuple(int(s.Port), s.Settings, s.Handshaking, s.StartCharacter, s.Leader, s.LineEnd,
                          s.Trailer, s.SendFilter, s.Dtr, int(s.Start), s.PauseAfterStart, s.PauseAfterLeader,
                          s.PauseAfterLine, s.PauseAfterTrailer, s.TimeOut);
    };
    const auto machine = [](const SendMachine& m) {
        return std::tuple(m.Name, m.TerminalMode, int(m.IntermotionType), m.RaskinRt85);
    };
    return line(a.Receive.Line) == line(b.Receive.Line) && a.Receive.MachineDir == b.Receive.MachineDir &&
           a.Receive.MachineDescription == b.Receive.MachineDescription &&
           a.Receive.Directory == b.Receive.Directory && a.Receive.CollectName == b.Receive.CollectName &&
           a.Receive.ListShown == b.Receive.ListShown && send(a.Send) == send(b.Send) &&
           machine(a.Machine) == machine(b.Machine) && a.Request == b.Request;
}

DncLine::DncLine(Session& session, std::unique_ptr<SerialLine> line, const DncLineSetup& setup,
                 QObject* parent)
    : QObject(parent), m_session(session), m_setup(setup) {
    SerialLine& l = *line;
    m_receive = std::make_unique<BackgroundReceive>(session, std::move(line));
    m_sender = std::make_unique<AnswerSender>(l);
    m_receive->SetProgramTaker([this](const QString& collectPath) { return TakeRequest(collectPath); });
    connect(m_receive.get(), &BackgroundReceive::LineStateChanged, this, &DncLine::OnLineState);
    connect(m_receive.get(), &BackgroundReceive::LineTrouble, this, [this](const QString& text) {
        m_lastError = text;
        Q_EMIT StateChanged();
    });
    connect(m_receive.get(), &BackgroundReceive::ProgramFiled, this, &DncLine::StateChanged);
    // Every arrival may change what the monitor shows; the service gathers them before it writes.
    connect(&l, &SerialLine::Comm, this, &DncLine::StateChanged);
    connect(m_sender.get(), &AnswerSender::Finished, this, &DncLine::AnswerFinished);
    connect(m_receive.get(), &BackgroundReceive::LeftForAnotherReader, m_sender.get(), &AnswerSender::Offer);
}

DncLine::~DncLine() = default;

void DncLine::OnLineState() {
    const BackgroundLineState now = m_receive->LineState();
    // The device's loss was told when it happened; its return is told too, so that the journal
    // shows how long the line was not served.
    if (m_lineState == BackgroundLineState::WaitingForDevice && now == BackgroundLineState::Listening)
        m_session.messages.Show({PortName(m_setup.Receive.Line.Port) +
                                     QStringLiteral(": the device is back; listening for ") +
                                     m_setup.Receive.MachineDir,
                                 Buttons::Ok, Icon::Information, 1});
    m_lineState = now;
    Q_EMIT StateChanged();
}

void DncLine::Start() {
    m_receive->Start(m_setup.Receive);
}

void DncLine::Stop(const QString& reason) {
    m_sender->Abort();
    m_receive->KeepCutOff(reason);
    m_receive->Stop();
}

DncLineState DncLine::State() const {
    if (m_sender->Busy())
        return DncLineState::Sending;
    switch (m_receive->LineState()) {
    case BackgroundLineState::WaitingForDevice:
        return DncLineState::WaitingForDevice;
    case BackgroundLineState::Off:
    case BackgroundLineState::Served:
        return DncLineState::Off;
    case BackgroundLineState::Listening:
        break;
    }
    return m_receive->Receiving() ? DncLineState::Receiving : DncLineState::Listening;
}

QString DncLine::StateText() const {
    switch (State()) {
    case DncLineState::WaitingForDevice:
        return QStringLiteral("waiting for the device");
    case DncLineState::Off:
        return QStringLiteral("off");
    case DncLineState::Receiving: {
        const QString name = m_receive->ArrivingName();
        return (name.isEmpty() ? QStringLiteral("receiving") : QStringLiteral("receiving ") + name) +
               QStringLiteral(", %1 characters").arg(m_receive->ArrivedCount());
    }
    case DncLineState::Listening:
        return QStringLiteral("listening");
    case DncLineState::Sending: {
        if (m_sender->Waiting())
            return QStringLiteral("sending %1, waiting for the control's start").arg(m_sender->Program());
        const qint64 rate = m_sender->Rate();
        QString text = QStringLiteral("sending %1, %2 of %3 characters")
                           .arg(m_sender->Program())
                           .arg(m_sender->Written())
                           .arg(m_sender->Total());
        if (rate > 0)
            text += QStringLiteral(", %1 characters/s, %2 s left")
                        .arg(rate)
                        .arg((m_sender->Total() - m_sender->Written()) / rate);
        return text;
    }
    }
    return {};
}

bool DncLine::TakeRequest(const QString& collectPath) {
    if (m_sender->Busy())
        return false;
    const std::optional<DncRequest> request =
        ReadDncRequest(ReadAllBytes(m_session.files, collectPath), m_setup.Request);
    if (!request)
        return false;
    const QString machineDir = m_setup.Receive.MachineDir;
    DncAnswer answer = AnswerDncRequest(m_session.files, m_session.settings, machineDir, *request);
    m_asked =
        request->What == DncRequest::Kind::List
            ? QStringLiteral("(DIR)")
            : (request->Directory.isEmpty() ? request->Name : request->Directory + u'\\' + request->Name);
    m_answerResult = answer.Result;
    // While the answer waits for its start, what the control sends is the send's to read.
    m_receive->SetTaking(false);
    m_sender->Start(m_setup.Send, m_setup.Machine, answer.Directory, answer.Program, answer.Text);
    Q_EMIT StateChanged();
    return true;
}

void DncLine::AnswerFinished(SendEnd end, const QString& reason) {
    QString result = QStringLiteral("request ") + m_asked + QStringLiteral(": ") + m_answerResult;
    if (end != SendEnd::Sent) {
        result = QStringLiteral("failed: request ") + m_asked + QStringLiteral(": ") + reason;
        m_lastError = reason;
    }
    AppendTransferLog(m_session, {m_setup.Receive.MachineDir, m_setup.Send.Port, m_sender->Program(),
                                  m_sender->Written(), result});
    // Logged first: what the control sent next is received after its answer.
    m_receive->SetTaking(true);
    Q_EMIT StateChanged();
}

} // namespace kestrova
