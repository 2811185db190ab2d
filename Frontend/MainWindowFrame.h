#pragma once

#include <QString>

namespace kestrova {

// What the routines run from the menu ask of the main window, without knowing its widgets:
// the menu frame, the status bar, one entry's enabling, and hiding the window while the
// operator works in another program.
class MainWindowFrame {
public:
    virtual ~MainWindowFrame() = default;

    virtual void LockMenus() = 0;
    virtual void UnlockMenus() = 0;
    virtual void MenuSetUp() = 0;
    virtual void ShowStatus() = 0;
    // One menu entry by its control name; an item of a control array by name and index ("ViewItem2").
    virtual void SetEntryEnabled(const QString& entry, bool enabled) = 0;
    virtual void HideWindow() = 0;
    virtual void ShowWindow() = 0;
    // A reload found another machine current: what belongs to the machine is set up again.
    virtual void MachineChanged() = 0;
    // The environment was loaded: the window shows the logo it names, or none.
    virtual void ShowLogo() = 0;
};

// Lock menus for the lifetime of a scope: whatever ends the handler, the menus come back.
class MenusLocked {
public:
    explicit MenusLocked(MainWindowFrame& frame) : m_frame(frame) { m_frame.LockMenus(); }
    ~MenusLocked() { m_frame.UnlockMenus(); }
    MenusLocked(const MenusLocked&) = delete;
    MenusLocked& operator=(const MenusLocked&) = delete;

private:
    MainWindowFrame& m_frame;
};

// One menu entry disabled for the lifetime of a scope: the entry of a program that runs.
class EntryDisabled {
public:
    EntryDisabled(MainWindowFrame& frame, QString entry) : m_frame(frame), m_entry(std::move(entry)) {
        m_frame.SetEntryEnabled(m_entry, false);
    }
    ~EntryDisabled() { m_frame.SetEntryEnabled(m_entry, true); }
    EntryDisabled(const EntryDisabled&) = delete;
    EntryDisabled& operator=(const EntryDisabled&) = delete;

private:
    MainWindowFrame& m_frame;
    QString m_entry;
};

} // namespace kestrova
