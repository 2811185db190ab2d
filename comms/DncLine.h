#pragma once

#include "comms/AnswerSender.h"
#include "comms/BackgroundReceive.h"
#include "comms/DncRequest.h"

#include <QObject>
#include <QString>
#include <memory>

namespace kestrova {

// One machine as the DNC service serves it: its line's settings, the machine it files for and
// the control it answers.
struct DncLineSetup {
    ReceiveLineSetup Receive; // the line, the machine and its default directory
    SendSettings Send;        // how an answer goes out
    SendMachine Machine;      // the header an answer carries
    DncRequestForm Request;   // how the control asks for a program
    friend bool operator==(const DncLineSetup& a, const DncLineSetup& b);
};

// Where a served line stands, as the monitor shows it.
enum class DncLineState { WaitingForDevice, Listening, Receiving, Sending, Off };

// One served line: the background receive of its machine, and the answers to the requests its
// control sends. Nothing here waits inside a call, so that every line of the service goes on
// while another transfers.
class DncLine : public QObject {
    Q_OBJECT
public:
    DncLine(Session& session, std::unique_ptr<SerialLine> line, const DncLineSetup& setup,
            QObject* parent = nullptr);
    ~DncLine() override;

    void Start();
    // The service ends: an answer stops, a program on its way is kept as an Unfiled program.
    void Stop(const QString& reason);

    [[nodiscard]] const DncLineSetup& Setup() const { return m_setup; }
    [[nodiscard]] DncLineState State() const;
    // "listening", "receiving", "sending Bracket, 1234 of 5678 characters, 960 characters/s", ...
    [[nodiscard]] QString StateText() const;
    [[nodiscard]] const QString& LastError() const { return m_lastError; }
    [[nodiscard]] BackgroundReceive& Receive() { return *m_receive; }

Q_SIGNALS:
    void StateChanged();

private:
    // A complete program: true when it was a request and is answered instead of filed.
    bool TakeRequest(const QString& collectPath);
    void AnswerFinished(SendEnd end, const QString& reason);
    void OnLineState();

    Session& m_session;
    DncLineSetup m_setup;
    std::unique_ptr<BackgroundReceive> m_receive;
    std::unique_ptr<AnswerSender> m_sender;
    QString m_asked; // the request being answered, as the log names it
    QString m_answerResult;
    QString m_lastError;
    BackgroundLineState m_lineState = BackgroundLineState::Off;
};

} // namespace kestrova
