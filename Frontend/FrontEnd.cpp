#include "Frontend/FrontEnd.h"

#include "Frontend/StartUp.h"
#include "Frontend/StatusBox.h"
#include "comms/BackgroundReceive.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QListWidget>
#include <QPushButton>

namespace kestrova {

FrontEnd::FrontEnd(Session& session, ProgramLauncher& launcher, std::unique_ptr<SerialLine> backgroundLine,
                   QWidget* parent, StartUpLoads loads)
    : QMainWindow(parent), m_session(session), m_launcher(launcher) {
    m_formFlags = {false, true};
    setObjectName(QStringLiteral("FrontEnd"));
    setWindowTitle(FrontEndCaption);
    BuildControls();
    BuildMenus();
    if (loads) {
        m_startUpStatus = loads(*this);
        if (m_startUpStatus != 0)
            return;
    }
    ShowLogo();
    resize(760, 520);

    // Its place in start-up: after the last-file memory, before the menu set-up.
    SetUpBackgroundReceive(std::move(backgroundLine));
    try {
        m_receive->Start();
    } catch (const SystemError& error) {
        // An error at start-up is shown once and ends the program.
        m_session.messages.ShowError(error.text());
        m_startUpStatus = 1;
    }
    MenuSetUp();
    ShowStatus();
    UnlockMenus();
}

FrontEnd::~FrontEnd() = default;

void FrontEnd::Apply(const QList<EntrySetting>& settings) {
    for (const EntrySetting& setting : settings) {
        QAction* action = Entry(setting.entry);
        if (!action)
            continue;
        if (setting.visible)
            action->setVisible(*setting.visible);
        if (setting.enabled)
            action->setEnabled(*setting.enabled);
    }
}

void FrontEnd::LockMenus() {
    Apply(LockedMenus());
}

void FrontEnd::UnlockMenus() {
    Apply(UnlockedMenus(m_session.settings));
}

void FrontEnd::MenuSetUp() {
    Apply(MenuSetUpTable(m_session.settings));
}

void FrontEnd::ShowStatus() {
    const GlobalSettings& g = m_session.settings;
    m_statusBar->Print(QStringLiteral(" ") + g.CurrentDir, g.MachineDescription + QStringLiteral(" "));
}

void FrontEnd::SetEntryEnabled(const QString& entry, bool enabled) {
    if (QAction* action = Entry(entry))
        action->setEnabled(enabled);
}

void FrontEnd::HideWindow() {
    hide();
}

void FrontEnd::ShowWindow() {
    show();
    activateWindow();
}

void FrontEnd::MachineChanged() {
    for (const auto& hook : m_machineHooks)
        hook();
}

void FrontEnd::SetReceivedPrograms(const QStringList& names) {
    m_receiveList->clear();
    m_receiveList->addItems(names);
}

QStringList FrontEnd::ReceivedPrograms() const {
    QStringList names;
    for (int i = 0; i < m_receiveList->count(); ++i)
        names << m_receiveList->item(i)->text();
    return names;
}

void FrontEnd::ShowReceiveFrame(bool visible) {
    m_receiveFrame->setVisible(visible);
}

void FrontEnd::LeaveReceiveList() {
    m_receiveList->clearSelection();
    m_receiveList->setCurrentRow(-1);
    if (m_receiveButton->isVisible())
        m_receiveButton->setFocus();
}

bool FrontEnd::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_receiveList && event->type() == QEvent::FocusIn)
        Q_EMIT ReceiveListFocused();
    return QMainWindow::eventFilter(watched, event);
}

void FrontEnd::closeEvent(QCloseEvent* event) {
    if (!m_unloaded) {
        m_unloaded = true;
        for (const auto& hook : m_closeHooks) {
            try {
                hook();
            } catch (const std::exception& error) {
                // Closing goes on: nothing may keep the program from ending.
                qWarning().noquote() << QStringLiteral("Kestrova: while closing: %1")
                                            .arg(QString::fromLocal8Bit(error.what()));
            }
        }
        // Every other window of the program ends with this one.
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window != this && window->isVisible())
                window->close();
    }
    event->accept();
}

} // namespace kestrova
