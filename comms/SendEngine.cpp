#include "comms/SendEngine.h"

#include "comms/PortSetup.h"
#include "comms/SendStream.h"
#include "platform/ScreenText.h"
#include "platform/TextFile.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QThread>

namespace kestrova {

namespace {

// At most this many characters wait to go out, so that flow control and the abort button act
// within a few characters.
constexpr int OutputLimit = 64;
// How often a long wait for the output looks again at what the device still holds.
constexpr int DrainTickMs = 1;
// A wait for the output first sleeps in short steps, doubling from the first to the last, so
// that a line that drains at once (a fast line, a pseudo-terminal) goes on within microseconds;
// then it waits on the event loop with the drain tick, never blocking the user interface longer.
constexpr unsigned long FirstSleepUs = 20;
constexpr unsigned long LastSleepUs = 640;
// How long the end of a send waits, without any character leaving, for the control to take the
// rest, when the settings give no time-out of their own.
constexpr int DefaultDrainLimitMs = 30000;

constexpr char16_t Cr = 13;
constexpr char16_t Acknowledgement = 55; // "7"

} // namespace

SendMachine SendMachineOf(const GlobalSettings& g) {
    return {g.MachineDir, g.TerminalMode, g.IntermotionType, g.RaskinRt85};
}

SendEngine::SendEngine(SerialLine& line, PauseTimer& pause, QObject* parent)
    : QObject(parent), m_line(line), m_pause(pause), m_drainTick(this) {
    m_drainTick.setInterval(DrainTickMs);
    m_drainTick.setTimerType(Qt::PreciseTimer);
    connect(&m_line, &SerialLine::Comm, this, &SendEngine::OnComm);
    connect(&m_line, &SerialLine::LineLost, this, &SendEngine::OnLineLost);
}

SendEngine::~SendEngine() = default;

void SendEngine::SetSettings(const SendSettings& settings) {
    m_settings = settings;
    m_filtered = SendFilterOf(settings);
    m_phase = SendPhase::Idle;
}

void SendEngine::LetEventsRun() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    m_sinceEvents.start();
}

void SendEngine::LetEventsRunBetweenCharacters() {
    if (m_eventSlice.count() <= 0 || !m_sinceEvents.isValid() ||
        m_sinceEvents.nsecsElapsed() >= qint64(m_eventSlice.count()) * 1000)
        LetEventsRun();
}

void SendEngine::WaitForEvent() {
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void SendEngine::Publish(const SendProgress& next) {
    if (next == m_progress)
        return;
    m_progress = next;
    Q_EMIT ProgressChanged();
}

SendEnd SendEngine::SendProgram(const FileSystem& files, const QString& directory, const QString& program,
                                const QString& path, qint64 count) {
    m_started = false;
    m_aborted = false;
    m_lostMessage.clear();
    m_stopEvent.reset();
    m_undrained = 0;
    // The program is read before the line is touched: a file that cannot be read costs the
    // control no leader.
    const QByteArray text = ReadAllBytes(files, path);
    // However the send ends, even by an error of the line or the file, the port is closed and
    // the form is left as it was before.
    auto finish = qScopeGuard([this] { Finish(); });

    const ProgressScale scale(count);
    SendProgress p;
    p.Label = program + u'\n' + QString::number(count) + u'\n' + QStringLiteral("Characters");
    p.LabelVisible = true;
    p.Total = scale.Total();
    p.AbortVisible = true;
    p.ForceVisible = true;
    Publish(p);
    LetEventsRun();

    // Waiting for the start. An XON-only handshake is held back, so that the XON a control sends
    // as its request arrives as data.
    m_phase = SendPhase::Waiting;
    PreparePort(m_line, PortSetupFor(TransferKind::SendWaiting, m_settings.Port, m_settings.Settings,
                                     m_settings.Handshaking));
    if ((m_settings.Handshaking & 2) && m_settings.Start == StartMode::Immediate)
        m_started = true;
    while (!m_started) {
        if (m_aborted)
            return m_lostMessage.isEmpty() ? SendEnd::Aborted : SendEnd::LineLost;
        WaitForEvent();
    }

    m_line.SetPortOpen(false);
    m_room = 0;
    m_phase = SendPhase::Transmitting;
    PreparePort(m_line, PortSetupFor(TransferKind::SendTransmitting, m_settings.Port, m_settings.Settings,
                                     m_settings.Handshaking));

    p.Label = program;
    p.ForceVisible = false;
    Publish(p);
    LetEventsRun();

    m_pause.Pause(m_settings.PauseAfterStart);
    p.BarVisible = true;
    Publish(p);
    m_rate.Start();

    SendHeaderOrLeader(directory, program);
    m_pause.Pause(m_settings.PauseAfterLeader);
    if (m_machine.RaskinRt85)
        WaitForAcknowledgement();

    SendFileText(text, count);

    // A control that drops CTS or the carrier now, for longer than the transfer's time-out, ends
    // the send: the line raises its time-out, as it raises a break.
    m_phase = SendPhase::Trailer;
    m_line.SetCTSTimeout(DrainLimitMs());
    m_line.SetCDTimeout(DrainLimitMs());
    SendText(m_settings.Trailer);
    m_pause.Pause(m_settings.PauseAfterTrailer);
    // The port closes only once everything written has left: the control may still hold the
    // last characters back with XOFF.
    if (!m_aborted)
        WaitForDrain();

    if (!m_lostMessage.isEmpty())
        return SendEnd::LineLost;
    if (m_aborted)
        return SendEnd::Aborted;
    return m_undrained > 0 ? SendEnd::Undrained : SendEnd::Sent;
}

int SendEngine::DrainLimitMs() const {
    return m_settings.TimeOut > 0 ? m_settings.TimeOut : DefaultDrainLimitMs;
}

void SendEngine::Finish() {
    m_drainTick.stop();
    m_phase = SendPhase::Idle;
    m_line.SetCTSTimeout(0);
    m_line.SetCDTimeout(0);
    // Closing lets everything written leave the line first: the trailer is never cut off.
    if (m_line.PortOpen())
        m_line.SetPortOpen(false);
    SendProgress p = m_progress;
    p.Label.clear();
    p.AbortVisible = false;
    p.ForceVisible = false;
    p.BarVisible = false;
    p.Steps = 0;
    p.Percent = 0;
    p.Rate.clear();
    Publish(p);
}

void SendEngine::SendHeaderOrLeader(const QString& directory, const QString& program) {
    SendText(kestrova::SendHeaderOrLeader(m_settings, m_machine, directory, program));
}

void SendEngine::SendFileText(const QByteArray& text, qint64 count) {
    const ProgressScale scale(count);
    int steps = 0;
    qint64 read = 0;
    for (const char byte : text) {
        LetEventsRunBetweenCharacters();
        if (m_aborted)
            break;
        const quint8 c = quint8(byte);
        SendText(SendFormOf(c, m_settings.LineEnd, m_filtered));
        if (c == Cr) {
            m_pause.Pause(m_settings.PauseAfterLine);
            if (m_machine.RaskinRt85)
                WaitForAcknowledgement();
        }
        ++read;
        SendProgress p = m_progress;
        if (const std::optional<QString> rate = m_rate.Update(read, count))
            p.Rate = *rate;
        const int next = scale.StepsAfter(read, steps);
        if (next != steps) {
            steps = next;
            p.Steps = steps;
            p.Percent = scale.PercentOf(steps);
        }
        Publish(p);
    }
}

void SendEngine::SendText(const QString& text) {
    for (const QChar c : text) {
        LetEventsRunBetweenCharacters();
        if (m_room <= 0)
            WaitForRoom();
        if (m_aborted)
            return;
        m_line.Output(QString(c));
        --m_room;
    }
}

void SendEngine::WaitForRoom() {
    unsigned long sleepUs = FirstSleepUs;
    for (;;) {
        LetEventsRun();
        if (m_aborted)
            break;
        m_room = OutputLimit - m_line.OutBufferCount();
        if (m_room > 0)
            break;
        if (m_line.OutputHeld()) {
            // Held by the control (for as long as a tool change takes): only its XON, the
            // operator's abort or a lost line can change anything, and each is an event.
            m_drainTick.stop();
            WaitForEvent();
        } else if (sleepUs <= LastSleepUs) {
            QThread::usleep(sleepUs);
            sleepUs *= 2;
        } else {
            m_drainTick.start();
            WaitForEvent();
        }
    }
    m_drainTick.stop();
}

void SendEngine::WaitForDrain() {
    const int limitMs = DrainLimitMs();
    QTimer limit;
    limit.setSingleShot(true);
    int last = -1;
    for (;;) {
        LetEventsRun();
        if (m_aborted)
            break;
        m_undrained = m_line.OutBufferCount();
        if (m_undrained == 0)
            break;
        // The limit counts from the last character that left: a slow line is never cut off.
        if (m_undrained != last) {
            last = m_undrained;
            limit.start(limitMs);
        } else if (!limit.isActive()) {
            break;
        }
        // What the device itself still holds leaves without an event; what XOFF holds waits
        // for the XON, which is one.
        if (m_line.OutputHeld())
            m_drainTick.stop();
        else
            m_drainTick.start();
        WaitForEvent();
    }
    m_drainTick.stop();
}

void SendEngine::WaitForAcknowledgement() {
    for (;;) {
        LetEventsRun();
        while (!m_aborted && m_line.InBufferCount() < 1)
            WaitForEvent();
        if (m_aborted)
            return;
        if (m_line.Input().contains(QChar(Acknowledgement)))
            return;
    }
}

void SendEngine::SendFrc_Click() {
    m_line.SetRThreshold(0);
    m_line.SetSThreshold(0);
    m_started = true;
}

void SendEngine::SendAbrt_Click() {
    m_aborted = true;
}

bool SendEngine::StartConditionMet(CommEvent event) {
    switch (m_settings.Start) {
    case StartMode::Auto: {
        if (m_line.InBufferCount() < 1)
            return false;
        const QString waiting = m_line.Input();
        return m_settings.StartCharacter.isEmpty() || waiting.contains(m_settings.StartCharacter);
    }
    case StartMode::Any:
        if (m_line.InBufferCount() < 1)
            return false;
        (void)m_line.Input();
        return true;
    case StartMode::Cts:
        return event == CommEvent::CtsChange;
    case StartMode::Dsr:
        return event == CommEvent::DsrChange;
    case StartMode::Event:
    case StartMode::Immediate:
        return true;
    case StartMode::Manual:
        return false;
    }
    return false;
}

void SendEngine::OnComm(CommEvent event) {
    switch (m_phase) {
    case SendPhase::Waiting:
        if (!m_started && StartConditionMet(event)) {
            m_line.SetRThreshold(0);
            m_line.SetSThreshold(0);
            m_started = true;
        }
        break;
    case SendPhase::Transmitting:
        // What the control sends meanwhile is thrown away; a Raskin acknowledgement is read by
        // the wait for it, since this event comes only once 128 characters wait.
        if (m_line.InBufferCount() > 0) {
            (void)m_line.Input();
            m_line.SetInBufferCount(0);
        }
        break;
    case SendPhase::Trailer:
        if (event == CommEvent::Break || event == CommEvent::CdTimeOut || event == CommEvent::CtsTimeOut) {
            if (!m_aborted)
                m_stopEvent = event;
            m_aborted = true;
        }
        break;
    case SendPhase::Idle:
        break;
    }
}

void SendEngine::OnLineLost(const QString& message) {
    // The line is closed already; the program is cut off where it stands.
    m_lostMessage = message;
    m_aborted = true;
}

} // namespace kestrova
