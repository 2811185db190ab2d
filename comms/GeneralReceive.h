#pragma once

#include "comms/CommSettings.h"
#include "comms/TransferRate.h"
#include "platform/FileSystem.h"
#include "platform/SerialLine.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <bitset>

namespace kestrova {

// What the receive form shows while it receives; the form mirrors it whenever it changes.
struct ReceiveDisplay {
    bool EntryVisible = true; // the name label, ReceiveCombo, the directory frame, OK and Cancel
    QString Label;            // ReceiveLabel
    bool LabelVisible = false;
    QString Chars; // ReceiveChars: the characters stored so far
    bool CharsVisible = false;
    bool AbortVisible = false; // ReceiveAbrt, the cancel button (Esc) and focused while it shows
    QString Rate;              // bytes so far and bytes per second (ReceiveRate)

    friend bool operator==(const ReceiveDisplay&, const ReceiveDisplay&) = default;
};

// The receive of one program from an ordinary control, on demand: asks the control to start
// with the StartCharacter, stores what arrives in a temporary file with every line end as
// CR LF and without the receive filter's characters, and ends when the control has been silent
// for ReceiveTimeOut milliseconds after data came, when the trailer has arrived (it is kept) or
// when the operator aborts (then nothing is kept).
//
// Runs on the user-interface thread; every wait lets events run and sleeps until the next one,
// so the abort button, the time-out and the line's events act meanwhile.
class GeneralReceive : public QObject {
    Q_OBJECT
public:
    explicit GeneralReceive(SerialLine& line, QObject* parent = nullptr);
    ~GeneralReceive() override;
    GeneralReceive(const GeneralReceive&) = delete;
    GeneralReceive& operator=(const GeneralReceive&) = delete;

    void SetSettings(const ReceiveSettings& settings);
    [[nodiscard]] const ReceiveSettings& Settings() const { return m_settings; }

    // Receives the program called name into the file at tempPath (replaced). Afterwards the file
    // holds what arrived, or is gone and Aborted() holds when nothing usable came; a program cut
    // off by a device server's dropped connection (LostMessage) is left in it, Aborted() holding.
    // Errors of the line and the file pass to the caller with the port closed and the file deleted.
    void Run(FileSystem& files, const QString& name, const QString& tempPath);

    // The abort button.
    void ReceiveAbrt_Click() { m_aborted = true; }
    // The time-out timer fired.
    void TimeOut_Timer() { m_timedOut = true; }

    [[nodiscard]] bool Aborted() const { return m_aborted; }
    [[nodiscard]] bool TimedOut() const { return m_timedOut; }
    [[nodiscard]] qint32 CharacterCount() const { return m_characterCount; }
    [[nodiscard]] const ReceiveDisplay& Display() const { return m_display; }
    // The message of a line loss during the last receive, naming the port; empty when it held.
    [[nodiscard]] const QString& LostMessage() const { return m_lostMessage; }
    // Whether the time-out is running.
    [[nodiscard]] bool TimeOutActive() const { return m_timeOut.isActive(); }

Q_SIGNALS:
    void DisplayChanged();

private:
    void Publish(const ReceiveDisplay& next);
    void RestartTimeOut();
    void StopTimeOut();
    void OnLineLost(const QString& message);

    SerialLine& m_line;
    ReceiveSettings m_settings;
    std::bitset<256> m_filtered;
    QTimer m_timeOut; // TimeOut
    bool m_aborted = false;
    bool m_timedOut = false;
    qint32 m_characterCount = 0;
    QString m_lostMessage;
    ReceiveDisplay m_display;
    TransferRate m_rate;
};

} // namespace kestrova
