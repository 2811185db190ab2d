#pragma once

#include "Frontend/Session.h"
#include "comms/CommSettings.h"
#include "filestore/ListModel.h"
#include "platform/SerialLine.h"
#include "platform/TextFile.h"

#include <QObject>
#include <QString>
#include <bitset>
#include <memory>

namespace kestrova {

// Where the background line stands, as the status bar shows it.
enum class BackgroundLineState {
    Off,              // no background port configured (or its settings are refused)
    Listening,        // the port is open
    WaitingForDevice, // the port's device is missing or was lost; it is watched for
};

// The background receive of the main window: listens on the port that "Kestrova.cms" names
// for programs a machine control sends on its own, files each one as soon as its trailer has
// arrived, and keeps the list of received programs ("Receive.lst") that the window shows.
//
// The main window owns one, calls Start at start-up and after a machine change and Stop when
// it closes, shows ReceiveList() in ReceiveFrame while ReceiveFrameVisible(), and refills its
// list box on ReceiveListChanged. The line is any SerialLine: the host's port in the program,
// a scripted one in tests.
class BackgroundReceive : public QObject {
    Q_OBJECT
public:
    BackgroundReceive(Session& session, std::unique_ptr<SerialLine> line, QObject* parent = nullptr);
    ~BackgroundReceive() override;
    BackgroundReceive(const BackgroundReceive&) = delete;
    BackgroundReceive& operator=(const BackgroundReceive&) = delete;

    // Stops any running receive, reads "Kestrova.cms", refreshes the list and, when the
    // settings enable it, prepares the port and opens it. A port that cannot open (its device
    // missing, in use) is told once, naming it and the reason, and the program goes on: the
    // line watches for the device and the receive starts listening by itself once it opens.
    // A settings string the line refuses is told once and leaves the receive off.
    void Start();
    // Closes the port and the temporary file, and deletes "Receive.tmp": a program cut off in
    // the middle is discarded. The receive is off afterwards, and watches for nothing.
    void Stop();

    // A chunk of received characters (each byte as the screen shows it), as the port's event
    // delivers it.
    void TakeReceivedText(const QString& chunk);
    // Files what "Receive.tmp" holds as a program (its trailer has just arrived).
    void FileReceivedProgram();
    // Refills the list from "Receive.lst".
    void RefreshReceiveList();
    // The receive button: forgets the received programs and hides the frame.
    void ReceiveButton_Click();
    // The list is for reading only: deselects it. True when the focus is to move on to the
    // receive button (it is visible).
    [[nodiscard]] bool ReceiveList_GotFocus();

    [[nodiscard]] const BackgroundSettings& Settings() const { return m_settings; }
    [[nodiscard]] const ListModel& ReceiveList() const { return m_list; }
    [[nodiscard]] bool ReceiveFrameVisible() const { return m_frameVisible; }
    [[nodiscard]] bool Receiving() const { return m_receiving; }
    [[nodiscard]] const QString& TrailerMatch() const { return m_trailerMatch; }
    [[nodiscard]] const QString& EndMatch() const { return m_endMatch; }
    [[nodiscard]] const QString& TempPath() const { return m_tempPath; }
    // The file that collects the program now arriving: "Receive.tmp", or the next free
    // "Receive N.tmp" while "Receive.tmp" holds a program that could not be moved away.
    [[nodiscard]] const QString& CollectPath() const { return m_collectPath; }
    [[nodiscard]] const QString& ListPath() const { return m_listPath; }
    [[nodiscard]] SerialLine& Line() { return *m_line; }
    [[nodiscard]] BackgroundLineState LineState() const { return m_state; }
    // The state as the status bar shows it: "Listening on COM2", "Waiting for COM2", or
    // "Background receive off".
    [[nodiscard]] QString LineStateText() const;

Q_SIGNALS:
    // The receive list or the frame's visibility changed.
    void ReceiveListChanged();
    // A program was filed: its system path.
    void ProgramFiled(const QString& path);
    // The line's state changed (see LineState).
    void LineStateChanged();

private:
    void OnComm(CommEvent event);
    void OnLineLost(const QString& message);
    void OnDeviceMayBeBack();
    // Opens the port; on failure tells the operator when report is set, and waits for the device.
    void OpenPort(bool report);
    void SetState(BackgroundLineState state);
    // Closes the port and the temporary file, deleting "Receive.tmp".
    void CloseLine();
    // The program in "Receive.tmp" could not be filed for reason: it is kept in a file of its
    // own in the program directory, listed and told once.
    void KeepUnfiled(const QString& reason);
    // Lists, logs and tells once that the program is kept in `kept` (reason: why it was not
    // filed; failure: why it could not be moved, if so).
    void TellUnfiled(const QString& kept, const QString& reason, const QString& failure);
    // Writes received characters to the program's file; what a failed write did not take waits
    // and goes with the next ones.
    void WriteReceived(const QByteArray& bytes);
    // Writes what waits to the open file: what the file takes leaves the waiting bytes, the rest
    // stays when the write fails.
    void WritePending();
    // "Receive.tmp" failed a write: the program so far is moved to a file of its own, which
    // takes the rest of it, and the operator is told once.
    void DivertAfterWriteFailure(const QString& reason);
    // Adds a line to "Receive.lst" (created anew when missing or shorter than 4 bytes).
    void AddListLine(const QString& entry);
    void OpenTemp();
    void HoldIfNotMoved(const QString& kept);
    void MoveHeldAway();
    void DropSpareCollectFile();
    [[nodiscard]] QString FreeCollectPath() const;
    void CloseTemp();

    Session& m_session;
    std::unique_ptr<SerialLine> m_line;
    BackgroundSettings m_settings;
    QString m_tempPath;
    QString m_listPath;
    std::unique_ptr<TextWriter> m_temp; // the collecting file while a program is collected
    QString m_collectPath;              // "Receive.tmp", or another while that one is held
    QStringList m_held;                 // collecting files that hold a program not yet moved away
    QString m_keptPath;                 // the file of its own that takes the program after a failed write
    QByteArray m_pending;               // received characters that no file has taken yet
    bool m_receiving = false;
    QString m_trailerMatch;
    QString m_endMatch;
    std::bitset<256> m_filtered; // the receive filter's characters
    ListModel m_list;
    bool m_frameVisible = false;
    BackgroundLineState m_state = BackgroundLineState::Off;
    // The operator has been told that the line is missing or lost, and nothing has arrived
    // since: a device that comes back dead (a node not yet gone) is not told about again.
    bool m_lossTold = false;
};

} // namespace kestrova
