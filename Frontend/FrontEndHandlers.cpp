// The menu handlers of the main window: each one gathers what it needs, runs a routine of the
// core and shows its outcome. Errors end a handler here, shown once.
#include "Frontend/DataFiles.h"
#include "Frontend/FrontEnd.h"
#include "Frontend/Manuals.h"
#include "settings/RestoreDefaults.h"
#include "settings/SettingsFileEditing.h"
#include "settings/SettingsManager.h"

namespace kestrova {

void FrontEnd::Handle(const std::function<void()>& body) {
    try {
        body();
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    } catch (const std::exception& error) {
        m_session.messages.ShowError(QString::fromLocal8Bit(error.what()));
    }
}

void FrontEnd::InFrame(const std::function<void()>& form) {
    const MenusLocked locked(*this);
    if (form)
        form();
}

void FrontEnd::OpenForm(Int16& mode, int index, bool directoryMayChange) {
    const MenusLocked locked(*this);
    mode = Int16::From(index);
    // Until its form joins the window, the entry runs the menu frame alone.
    if (directoryMayChange)
        ShowStatus();
}

void FrontEnd::StartPackageEntry(Package package) {
    StartPackage(m_session, m_launcher, *this, package);
}

void FrontEnd::SettingsManagerEntry(int page) {
    StartSettingsManager(m_session, m_launcher, *this,
                         page == 1 ? SettingsPage::MaterialDatabase : SettingsPage::ProfileSettings);
}

void FrontEnd::EditDataFile(const QString& entry) {
    const MenusLocked locked(*this);
    for (const DataFileEntry& item : DataFileEntries(m_session.settings)) {
        if (item.entry == entry) {
            EditSettingsFile(m_session, m_launcher, *this, item.file, true, true);
            return;
        }
    }
}

void FrontEnd::RestoreDefaultsEntry() {
    RestoreDefaults(m_session, *this);
}

void FrontEnd::OpenManualEntry() {
    const MenusLocked locked(*this);
    OpenManual(m_session, m_launcher);
}

} // namespace kestrova
