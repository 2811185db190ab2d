#include "comms/AnswerSender.h"

#include "comms/PortSetup.h"
#include "comms/SendStream.h"

namespace kestrova {

namespace {

// As the send engine: never more than this many characters waiting to go out.
constexpr int OutputLimit = 64;
// How often a send that waits for room or for the output to drain looks again.
constexpr int PollMs = 1;
// How long a send waits for its start or for a character to leave when the settings give no
// time-out of their own.
constexpr int DefaultLimitMs = 30000;

} // namespace

AnswerSender::AnswerSender(SerialLine& line, QObject* parent)
    : QObject(parent), m_line(line), m_tick(this), m_limit(this) {
    m_tick.setSingleShot(true);
    m_limit.setSingleShot(true);
    connect(&m_tick, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::Sending)
            Pump();
        else if (m_phase == Phase::Draining)
            Drain();
    });
    connect(&m_limit, &QTimer::timeout, this, [this] {
        if (m_phase == Phase::Waiting)
            End(SendEnd::Aborted, QStringLiteral("no start from the control"));
        else if (m_phase != Phase::Idle)
            End(SendEnd::Undrained, QStringLiteral("%1 characters did not leave %2")
                                        .arg(m_line.OutBufferCount())
                                        .arg(PortName(m_line.CommPort())));
    });
    connect(&m_line, &SerialLine::Comm, this, &AnswerSender::OnComm);
    connect(&m_line, &SerialLine::LineLost, this, &AnswerSender::OnLineLost);
}

int AnswerSender::LimitMs() const {
    return m_settings.TimeOut > 0 ? m_settings.TimeOut : DefaultLimitMs;
}

qint64 AnswerSender::Rate() const {
    const qint64 ms = m_clock.isValid() ? m_clock.elapsed() : 0;
    return ms >= 1000 ? m_written * 1000 / ms : 0;
}

void AnswerSender::Start(const SendSettings& settings, const SendMachine& machine, const QString& directory,
                         const QString& program, const QByteArray& text) {
    m_settings = settings;
    m_program = program;
    m_listening = m_line.Handshaking();
    m_pieces.clear();
    m_piece = 0;
    m_at = 0;
    m_written = 0;
    m_lastOut = -1;
    m_clock.invalidate();

    // The stream in pieces, each followed by its pause, as the send engine sends it.
    m_pieces << Piece{QString(), settings.PauseAfterStart};
    m_pieces << Piece{SendHeaderOrLeader(settings, machine, directory, program), settings.PauseAfterLeader};
    const std::bitset<256> filtered = SendFilterOf(settings);
    QString body;
    for (const char byte : text) {
        body += SendFormOf(quint8(byte), settings.LineEnd, filtered);
        if (byte == '\r' && settings.PauseAfterLine > 0) {
            m_pieces << Piece{body, settings.PauseAfterLine};
            body.clear();
        }
    }
    m_pieces << Piece{body, 0};
    m_pieces << Piece{settings.Trailer, settings.PauseAfterTrailer};
    m_total = 0;
    for (const Piece& piece : std::as_const(m_pieces))
        m_total += piece.text.size();

    // An XON-only handshake is held back while the control's start is awaited, so that the XON
    // it sends as its start reaches the send as data.
    m_line.SetHandshaking(
        PortSetupFor(TransferKind::SendWaiting, settings.Port, settings.Settings, settings.Handshaking)
            .Handshaking);
    m_phase = Phase::Waiting;
    switch (settings.Start) {
    case StartMode::Manual:
    case StartMode::Immediate:
    case StartMode::Event:
        BeginSending();
        return;
    case StartMode::Auto:
    case StartMode::Any:
    case StartMode::Cts:
    case StartMode::Dsr:
        m_limit.start(LimitMs());
        if (m_line.InBufferCount() > 0)
            OnComm(CommEvent::Receive);
        return;
    }
}

void AnswerSender::OnComm(CommEvent event) {
    if (m_phase == Phase::Waiting) {
        bool started = false;
        switch (m_settings.Start) {
        case StartMode::Auto:
        case StartMode::Any:
            if (m_line.InBufferCount() > 0)
                started = StartsTheSend(m_line.Input());
            break;
        case StartMode::Cts:
            started = event == CommEvent::CtsChange;
            break;
        case StartMode::Dsr:
            started = event == CommEvent::DsrChange;
            break;
        default:
            break;
        }
        if (started)
            BeginSending();
    } else if (m_phase == Phase::Sending || m_phase == Phase::Draining) {
        // What the control sends while the answer goes out is thrown away, as the send engine
        // does. Once all of it is out, the control may well send its next program before the
        // last characters have left the port: that is the receive's, and stays for it.
        if (m_phase == Phase::Sending && m_line.InBufferCount() > 0)
            (void)m_line.Input();
        if (event == CommEvent::Break)
            End(SendEnd::Aborted, QStringLiteral("a break on ") + PortName(m_line.CommPort()));
    }
}

bool AnswerSender::StartsTheSend(const QString& waiting) const {
    if (m_settings.Start == StartMode::Any)
        return !waiting.isEmpty();
    return m_settings.Start == StartMode::Auto &&
           (m_settings.StartCharacter.isEmpty() ? !waiting.isEmpty()
                                                : waiting.contains(m_settings.StartCharacter));
}

void AnswerSender::Offer(const QString& text) {
    if (m_phase == Phase::Waiting && StartsTheSend(text))
        BeginSending();
}

void AnswerSender::BeginSending() {
    m_limit.stop();
    m_line.SetHandshaking(m_settings.Handshaking);
    m_phase = Phase::Sending;
    m_clock.start();
    Pump();
}

void AnswerSender::Pump() {
    while (m_phase == Phase::Sending && m_piece < m_pieces.size()) {
        const Piece& piece = m_pieces.at(m_piece);
        if (m_at < piece.text.size()) {
            const int waiting = m_line.OutBufferCount();
            const int room = OutputLimit - waiting;
            if (room <= 0 || m_line.OutputHeld()) {
                // Held by XOFF for as long as a tool change takes: the limit counts only while
                // characters could leave.
                if (!m_line.OutputHeld() && waiting != m_lastOut) {
                    m_lastOut = waiting;
                    m_limit.start(LimitMs());
                }
                m_tick.start(PollMs);
                return;
            }
            const qsizetype n = std::min<qsizetype>(room, piece.text.size() - m_at);
            m_line.Output(piece.text.mid(m_at, n));
            m_at += n;
            m_written += n;
            continue;
        }
        ++m_piece;
        m_at = 0;
        if (piece.pauseAfter > 0) {
            m_tick.start(piece.pauseAfter);
            return;
        }
    }
    if (m_phase == Phase::Sending) {
        m_phase = Phase::Draining;
        m_lastOut = -1;
        Drain();
    }
}

void AnswerSender::Drain() {
    // All of the answer has gone to the line and none is held back: the control may take its
    // trailer, send its next request and its start at once, before the last characters have
    // left the port. That XON is a start again, no longer a release, and must reach the line's
    // next reader.
    if (!m_line.OutputHeld() && m_line.Handshaking() != m_listening)
        m_line.SetHandshaking(m_listening);
    const int waiting = m_line.OutBufferCount();
    if (waiting == 0) {
        End(SendEnd::Sent, {});
        return;
    }
    // The limit counts from the last character that left: a slow line is never cut off.
    if (waiting != m_lastOut || m_line.OutputHeld()) {
        m_lastOut = waiting;
        m_limit.start(LimitMs());
    }
    m_tick.start(PollMs);
}

void AnswerSender::OnLineLost(const QString& message) {
    if (m_phase != Phase::Idle)
        End(SendEnd::LineLost, message);
}

void AnswerSender::Abort() {
    if (m_phase != Phase::Idle)
        End(SendEnd::Aborted, QStringLiteral("stopped"));
}

void AnswerSender::End(SendEnd end, const QString& reason) {
    m_tick.stop();
    m_limit.stop();
    m_phase = Phase::Idle;
    // The line goes back to listening as it did before the request.
    if (m_line.PortOpen())
        m_line.SetHandshaking(m_listening);
    Q_EMIT Finished(end, reason);
}

} // namespace kestrova
