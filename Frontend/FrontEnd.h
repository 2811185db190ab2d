#pragma once

#include "Frontend/MainWindowFrame.h"
#include "Frontend/MenuSetUp.h"
#include "Frontend/PackageStart.h"
#include "Frontend/Session.h"
#include "comms/SendFormLogic.h"
#include "platform/ProgramLauncher.h"
#include "platform/SerialLine.h"

#include <QHash>
#include <QMainWindow>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QFrame;
class QLabel;
class QListWidget;
class QMenu;
class QPushButton;

namespace kestrova {

class BackgroundReceive;
class StatusBox;

// The main window: the list of programs received in the background, the status bar and the
// menu bar that offers the whole suite. Every menu entry is a QAction named by its control name
// (an item of a control array by name and index: "FileItem3"); a menu's entry is its menu action.
//
// It opens on an environment and machine already loaded (start-up), sets up the background
// receive (RcvComms), then does the menu set-up, shows the status and unlocks the menus. The
// background receive is started again after a machine change and stopped when the window closes.
//
// The background receive listens on the host's serial port of the device map; a test or a load
// measurement hands in a line of its own instead.
class FrontEnd : public QMainWindow, public MainWindowFrame {
    Q_OBJECT
public:
    // The loads of start-up (environment, machine, last-file memory: LoadAtStartUp) run inside,
    // in their place among the window's own steps, when given; their result is the start-up
    // status, and a failed load ends the start there. Without them the session comes loaded.
    using StartUpLoads = std::function<int(FrontEnd& window)>;
    FrontEnd(Session& session, ProgramLauncher& launcher, std::unique_ptr<SerialLine> backgroundLine = {},
             QWidget* parent = nullptr, StartUpLoads loads = {});
    ~FrontEnd() override;

    // 0 when the window opened as it should; 1 when start-up met an error it has already shown
    // (an unreadable "Kestrova.cms"): the program then ends with this status. A background port
    // that cannot open is told and watched for instead; it never ends the program.
    [[nodiscard]] int StartUpStatus() const { return m_startUpStatus; }

    // The lines the send and receive forms open; by default the host's serial ports of the
    // device map. Tests hand in lines of their own.
    void SetFormLines(SerialLineFactory lines) { m_formLines = std::move(lines); }

    // --- The frame every menu handler uses -------------------------------------------------
    void LockMenus() override;
    void UnlockMenus() override;
    void MenuSetUp() override;
    void ShowStatus() override;
    void SetEntryEnabled(const QString& entry, bool enabled) override;
    void HideWindow() override;
    void ShowWindow() override;
    void MachineChanged() override;
    void ShowLogo() override;

    // The two state flags that the file and communication forms keep on the main window; unset
    // until start-up's first step clears the first and sets the second.
    struct FormStateFlags {
        std::optional<bool> first;
        std::optional<bool> second;
        bool operator==(const FormStateFlags&) const = default;
    };
    [[nodiscard]] const FormStateFlags& FormFlags() const { return m_formFlags; }
    // --- Menu entries by control name --------------------------------------------------------
    [[nodiscard]] QAction* Entry(const QString& name) const { return m_entries.value(name); }
    // Every named entry in menu order.
    [[nodiscard]] const QStringList& EntryNames() const { return m_order; }

    // --- The list of programs received in the background ------------------------------------
    void SetReceivedPrograms(const QStringList& names);
    [[nodiscard]] QStringList ReceivedPrograms() const;
    void ShowReceiveFrame(bool visible);
    // The list is for reading only: its selection cleared, the focus handed to the receive button.
    void LeaveReceiveList();
    // The background receive behind the list (RcvComms and the programs it files).
    [[nodiscard]] BackgroundReceive& Receive() { return *m_receive; }

    // --- Hooks for what belongs to the machine and must end with the window -----------------
    // Runs when a reload finds another machine current.
    void AddMachineChangedHook(std::function<void()> hook) { m_machineHooks.push_back(std::move(hook)); }
    // Runs once when the window closes, however it is closed (Exit, the window's close button,
    // SIGTERM or SIGINT), before the other windows close and the program ends.
    void AddCloseHook(std::function<void()> hook) { m_closeHooks.push_back(std::move(hook)); }

Q_SIGNALS:
    void ReceiveButtonClicked();
    void ReceiveListFocused();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // --- Controls and menus (FrontEndMenus.cpp) ----------------------------------------------
    void BuildControls();
    void BuildMenus();
    void BuildFileMenu();
    void BuildEditMenu();
    void BuildCommsMenu();
    void BuildSetupMenu();
    void BuildDataFilesMenu(QMenu* setup);
    QMenu* AddMenu(QWidget* parent, const QString& name, const QString& caption);
    QAction* AddItem(QMenu* menu, const QString& name, const QString& caption, std::function<void()> handler);
    QAction* AddBarEntry(const QString& name, const QString& caption, std::function<void()> handler);
    QAction* AddSeparator(QMenu* menu, const QString& name = {});
    void Register(const QString& name, QAction* action);
    void Apply(const QList<EntrySetting>& settings);

    // --- Menu handlers (FrontEndHandlers.cpp) ------------------------------------------------
    // Errors that no routine handled end the handler here, shown once; the program goes on.
    void Handle(const std::function<void()>& body);
    // The common frame of a handler that opens a form: menus locked while it is shown.
    void InFrame(const std::function<void()>& form);
    // A form that later builds on this window: its mode set, the frame run.
    void OpenForm(Int16& mode, int index, bool directoryMayChange);
    void StartPackageEntry(Package package);
    void SettingsManagerEntry(int page);
    void EditDataFile(const QString& entry);
    void RestoreDefaultsEntry();
    void OpenManualEntry();

    // --- The File menu's file store entries (FrontEndFileStore.cpp) --------------------------
    void SelectMachineEntry();
    void DirectoryEntry(int action);
    void SearchEntry();
    void FileEntry(int action);
    void RestoreEntry();

    // --- The send and receive forms (FrontEndComms.cpp) --------------------------------------
    [[nodiscard]] SerialLineFactory FormLines() const;
    void OpenSendForm(SendKind kind);
    void OpenReceiveForm(int operation);
    void OpenTransferLog();
    void OpenDncMonitor();

    // --- The edit form (FrontEndEditing.cpp) -----------------------------------------------
    void OpenEditForm(int operation);
    void OpenHistoryForm();

    // --- Import, export and the Rainer floppy (FrontEndExchange.cpp) -------------------------
    void OpenExternalForm(int mode);
    void RainerEntry(int operation);

    // --- The background receive (FrontEndReceive.cpp) ---------------------------------------
    void SetUpBackgroundReceive(std::unique_ptr<SerialLine> line);
    // Starts (or starts again) the background receive; a port that cannot open is shown once.
    void StartBackgroundReceive();
    void MirrorReceiveList();

    Session& m_session;
    ProgramLauncher& m_launcher;

    QFrame* m_receiveFrame = nullptr;
    QPushButton* m_receiveButton = nullptr;
    QListWidget* m_receiveList = nullptr;
    QLabel* m_receiveLabel = nullptr;
    StatusBox* m_statusBar = nullptr;
    QFrame* m_menuLine = nullptr;

    QHash<QString, QAction*> m_entries;
    QStringList m_order;
    std::vector<std::function<void()>> m_machineHooks;
    std::vector<std::function<void()>> m_closeHooks;
    bool m_unloaded = false;
    int m_startUpStatus = 0;
    FormStateFlags m_formFlags;
    std::unique_ptr<BackgroundReceive> m_receive;
    SerialLineFactory m_formLines;
};

} // namespace kestrova
