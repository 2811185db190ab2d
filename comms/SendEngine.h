#pragma once

#include "Frontend/GlobalSettings.h"
#include "comms/CommSettings.h"
#include "comms/Pause.h"
#include "comms/SendProgress.h"
#include "comms/TransferRate.h"
#include "platform/FileSystem.h"
#include "platform/SerialLine.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <bitset>
#include <chrono>
#include <optional>

namespace kestrova {

// What a send needs to know of the machine it sends to: its name and the kind of header its
// control expects.
struct SendMachine {
    QString Name;              // the machine's directory name, sent in the terminal header
    bool TerminalMode = false; // the control is another installation of this system
    Int16 IntermotionType = 0; // 3 to 6 carry a header
    bool RaskinRt85 = false;   // every line is acknowledged with "7"
};

// The current machine's flags, as the machine load set them.
[[nodiscard]] SendMachine SendMachineOf(const GlobalSettings& g);

// Where a transmission stands.
enum class SendPhase : int { Idle = 0, Waiting = 1, Transmitting = 2, Trailer = 3 };

// How a transmission ended.
enum class SendEnd {
    Sent,      // the whole program and its trailer went out
    Aborted,   // the operator aborted, or the control reported a break or time-out
    LineLost,  // the line hung up or failed; LostMessage() names the port
    Undrained, // everything was written, but Undrained() characters never left the line
};

// Sends NC programs to a machine control over one serial line: waits for the control's start
// as the StartMode says, sends a header or the Leader, the program text with LineEnd for each
// line end, then the Trailer, pausing between the pieces, and keeps the progress for the form.
//
// Everything runs on the user-interface thread. Every wait lets pending events run and sleeps
// until the next one, so the line's events, the force and abort buttons and the pause timer act
// while the engine waits; they talk to it only through Started, Aborted and the phase.
class SendEngine : public QObject {
    Q_OBJECT
public:
    SendEngine(SerialLine& line, PauseTimer& pause, QObject* parent = nullptr);
    ~SendEngine() override;
    SendEngine(const SendEngine&) = delete;
    SendEngine& operator=(const SendEngine&) = delete;

    // The settings read when the send form loaded; the engine is idle afterwards.
    void SetSettings(const SendSettings& settings);
    void SetMachine(const SendMachine& machine) { m_machine = machine; }
    [[nodiscard]] const SendSettings& Settings() const { return m_settings; }

    // How often pending events run while characters go out: at every character with 0, else at
    // most once in this time (and always before the engine waits). A run of the event loop polls
    // every descriptor and costs far more than sending a character, so running it at each one
    // would halve a fast line's speed; an abort still lands within a millisecond's characters.
    void SetEventSlice(std::chrono::microseconds slice) { m_eventSlice = slice; }

    // Transmits the program file at path (a system path read through files). directory and
    // program name it in the header and the progress label; count is its length in bytes, for
    // the progress. Errors of the line (a rejected framing, a port that cannot open) and of the
    // file pass to the caller with the port closed.
    [[nodiscard]] SendEnd SendProgram(const FileSystem& files, const QString& directory,
                                      const QString& program, const QString& path, qint64 count);

    // Sends text one character at a time, never with 64 or more characters waiting to go out;
    // stops at once, leaving the rest unsent, when the send is aborted.
    void SendText(const QString& text);
    // Waits until the control answers with a "7" (the Raskin acknowledgement of a line); what
    // else it sends is thrown away. Only an abort ends a wait that never gets its "7".
    void WaitForAcknowledgement();

    // The force button: starts a waiting transmission.
    void SendFrc_Click();
    // The abort button.
    void SendAbrt_Click();

    [[nodiscard]] SendPhase Phase() const { return m_phase; }
    [[nodiscard]] bool Started() const { return m_started; }
    [[nodiscard]] bool Aborted() const { return m_aborted; }
    [[nodiscard]] const SendProgress& Progress() const { return m_progress; }
    // The message of the last line loss, naming the port; empty when the line held.
    [[nodiscard]] const QString& LostMessage() const { return m_lostMessage; }
    // The break or time-out of the line that aborted the last send in its trailer, if one did.
    [[nodiscard]] std::optional<CommEvent> StopEvent() const { return m_stopEvent; }
    // How many characters had not left the line when the last send ended.
    [[nodiscard]] int Undrained() const { return m_undrained; }

Q_SIGNALS:
    // The progress changed: the form mirrors Progress().
    void ProgressChanged();

private:
    void OnComm(CommEvent event);
    void OnLineLost(const QString& message);
    [[nodiscard]] bool StartConditionMet(CommEvent event);
    void SendHeaderOrLeader(const QString& directory, const QString& program);
    void SendFileText(const QByteArray& text, qint64 count);
    void Publish(const SendProgress& next);
    // Lets pending events run without waiting for any.
    void LetEventsRun();
    // The same while characters go out: at most once per event slice.
    void LetEventsRunBetweenCharacters();
    // Waits until fewer than 64 characters wait to go out, or the send is aborted.
    void WaitForRoom();
    // Waits until everything written has left the line, the send is aborted, or nothing has left
    // for the settings' time-out; what is still waiting then is Undrained().
    void WaitForDrain();
    // How long the end of a send waits for the line: the settings' time-out, or a default.
    [[nodiscard]] int DrainLimitMs() const;
    // Sleeps until the next event and lets it run.
    static void WaitForEvent();
    void Finish();

    SerialLine& m_line;
    PauseTimer& m_pause;
    SendSettings m_settings;
    SendMachine m_machine;
    std::bitset<256> m_filtered; // the send filter's characters
    SendPhase m_phase = SendPhase::Idle;
    bool m_started = false;
    bool m_aborted = false;
    QString m_lostMessage;
    std::optional<CommEvent> m_stopEvent;
    int m_undrained = 0;
    SendProgress m_progress;
    TransferRate m_rate;
    // Wakes a wait for the output to drain: what the device still holds leaves without an event.
    QTimer m_drainTick;
    std::chrono::microseconds m_eventSlice{1000};
    QElapsedTimer m_sinceEvents;
    // How many more characters may be written before the output is counted again: the count
    // only falls by itself, so after counting q, 64 - q characters keep it within the limit.
    int m_room = 0;
};

} // namespace kestrova
