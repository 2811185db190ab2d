#pragma once

#include "comms/CommSettings.h"
#include "comms/SendEngine.h"
#include "platform/SerialLine.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

namespace kestrova {

// Sends a program on a line that stays open for the background receive, without ever waiting
// inside a call: every wait (for the control's start, for room in the output, for a pause, for
// the output to drain) is a timer or a line event of the one event loop, so that the DNC
// service's other lines go on meanwhile. What goes on the line is what the send engine sends:
// the header or leader, the text with its line ends and filter, the trailer, with the same pauses.
//
// The start mode is kept as the send engine keeps it, but for the manual start: at the service
// no operator presses Force, and the control's request is its start.
class AnswerSender : public QObject {
    Q_OBJECT
public:
    explicit AnswerSender(SerialLine& line, QObject* parent = nullptr);

    // Begins the send; Finished follows, once.
    void Start(const SendSettings& settings, const SendMachine& machine, const QString& directory,
               const QString& program, const QByteArray& text);
    // Characters the line brought before the send was reading it (in the chunk that ended the
    // request): taken as if they arrived now.
    void Offer(const QString& text);
    // Ends a send at once (the service stops, the line goes).
    void Abort();

    [[nodiscard]] bool Busy() const { return m_phase != Phase::Idle; }
    [[nodiscard]] bool Waiting() const { return m_phase == Phase::Waiting; }
    [[nodiscard]] const QString& Program() const { return m_program; }
    [[nodiscard]] qint64 Total() const { return m_total; }
    [[nodiscard]] qint64 Written() const { return m_written; }
    // Bytes per second so far; 0 before the first second.
    [[nodiscard]] qint64 Rate() const;

Q_SIGNALS:
    void Finished(kestrova::SendEnd end, const QString& reason);

private:
    enum class Phase { Idle, Waiting, Sending, Draining };
    struct Piece {
        QString text;
        int pauseAfter = 0;
    };
    void OnComm(CommEvent event);
    // Whether waiting characters start the send, as the start mode says.
    [[nodiscard]] bool StartsTheSend(const QString& waiting) const;
    void OnLineLost(const QString& message);
    void BeginSending();
    void Pump();
    void Drain();
    void End(SendEnd end, const QString& reason);
    [[nodiscard]] int LimitMs() const;

    SerialLine& m_line;
    SendSettings m_settings;
    int m_listening = 0; // the line's handshaking before the answer
    Phase m_phase = Phase::Idle;
    QList<Piece> m_pieces;
    qsizetype m_piece = 0;
    qsizetype m_at = 0;
    QString m_program;
    qint64 m_total = 0;
    qint64 m_written = 0;
    int m_lastOut = -1;
    QTimer m_tick;         // the next step of the send
    QTimer m_limit;        // no start, or nothing leaving, for the time-out
    QElapsedTimer m_clock; // since the first character
};

} // namespace kestrova
