#pragma once

#include "Frontend/Session.h"
#include "comms/CommSettings.h"
#include "filestore/ListModel.h"
#include "platform/SerialLine.h"
#include "platform/TextFile.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <bitset>
#include <functional>
#include <memory>

namespace kestrova {

// One line of the background receive: its settings, where its programs go when their header
// names no machine or directory, and the file that collects each program as it arrives. Empty
// machine and directory stand for the current ones at the moment a program is filed (the main
// window); the DNC service names the served machine's.
struct ReceiveLineSetup {
    BackgroundSettings Line;
    QString MachineDir;
    QString MachineDescription;
    QString Directory;
    QString CollectName; // in the system directory; "Receive.tmp" when empty
    // The window shows the receive list and reads "Receive.lst" again after each program; the
    // service only adds its lines, and keeps no copy that would grow with every program.
    bool ListShown = true;
};

// Where the background line stands, as the status bar shows it.
enum class BackgroundLineState {
    Off,              // no background port configured (or its settings are refused)
    Listening,        // the port is open
    WaitingForDevice, // the port's device is missing or was lost; it is watched for
    Served,           // the DNC service holds the port and files what arrives
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
    // The same for a line whose settings the caller has read (the DNC service's served lines).
    void Start(const ReceiveLineSetup& setup);
    // Called with the collecting file of each complete program before it is filed: true when the
    // program was taken (a request from the control, answered) and is not to be filed.
    using ProgramTaker = std::function<bool(const QString& collectPath)>;
    void SetProgramTaker(ProgramTaker taker) { m_programTaker = std::move(taker); }
    // While off, what the line brings is left for another reader (an answer being sent waits for
    // its start on the same line).
    void SetTaking(bool on);
    // Closes the port and the temporary file, and deletes "Receive.tmp": a program cut off in
    // the middle is discarded. The receive is off afterwards, and watches for nothing.
    void Stop();
    // A program cut off in the middle is kept in a file of its own, listed and logged with the
    // reason, instead of being discarded: the DNC service ending with a program on its way, a
    // device server dropping its connection. The reason and where the program is are told in one
    // message; false, with nothing told, when no program was on its way.
    bool KeepCutOff(const QString& reason);

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
    // Of the program arriving now: the name its header gives (empty while none has come), and
    // how many characters came so far.
    [[nodiscard]] QString ArrivingName() const;
    [[nodiscard]] qint64 ArrivedCount() const { return m_arrived; }
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
    // How often the window looks at what the DNC service does while it holds the port.
    static constexpr int ServiceLookMs = 1000;

Q_SIGNALS:
    // The receive list or the frame's visibility changed.
    void ReceiveListChanged();
    // A program was filed: its system path.
    void ProgramFiled(const QString& path);
    // The line's state changed (see LineState).
    void LineStateChanged();
    // Characters that arrived after a program the taker took, in the same chunk: they are the
    // next reader's (see SetTaking).
    void LeftForAnotherReader(const QString& text);
    // The port could not be opened or was lost: the text names the port and the reason.
    void LineTrouble(const QString& text);

private:
    void OnComm(CommEvent event);
    void OnLineLost(const QString& message);
    void OnDeviceMayBeBack();
    // Opens the port; on failure tells the operator when report is set, and waits for the device.
    void OpenPort(bool report);
    void StartLine(const ReceiveLineSetup& setup, bool besideService);
    // The window beside the DNC service: the list follows what the service files, and the port
    // is taken back once the service no longer holds it.
    void LookAtService();
    [[nodiscard]] bool ServiceHoldsPort() const;
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
    ReceiveLineSetup m_setup;
    ProgramTaker m_programTaker;
    bool m_taking = true;
    bool m_besideService = false;
    QTimer m_serviceLook;
    qint64 m_listLength = -1; // "Receive.lst" as last shown while the service files
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
    QByteArray m_arrivingStart; // the program's first characters, where its header is
    qint64 m_arrived = 0;
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
