#pragma once

#include "Frontend/FrontEnd.h"
#include "Frontend/StartUp.h"
#include "Frontend/StatusBox.h"
#include "InstallationFixture.h"
#include "platform/TerminationSignals.h"
#include "settings/SettingsFile.h"
#include "tests/comms/TestApplication.h"

#include <QAction>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>

namespace kestrova::testing {

// An installation loaded as at start-up and its main window shown offscreen, as the tests of the
// window and of its menus' entries use them. A test changes the installation first, then opens
// the window (Open) when it wants it.
class MainWindowFixture : public ::testing::Test {
protected:
    // The loads of start-up, then the window; a line handed in stands for the background port.
    void Open(std::unique_ptr<SerialLine> backgroundLine = {}) {
        EXPECT_EQ(LoadAtStartUp(fx.session()), 0) << fx.Messages().Texts().join(u'|').toStdString();
        window = std::make_unique<FrontEnd>(fx.session(), Launcher(), std::move(backgroundLine));
        window->show();
    }
    // Made on first use: the launcher reads the device map, which a test may change first.
    ProgramLauncher& Launcher() {
        if (!m_launcher)
            m_launcher = std::make_unique<ProgramLauncher>(fx.Files());
        return *m_launcher;
    }
    [[nodiscard]] QAction* Entry(const char* name) const { return window->Entry(QString::fromLatin1(name)); }
    void Trigger(const char* name) {
        QAction* action = Entry(name);
        ASSERT_TRUE(action) << name;
        action->trigger();
    }
    [[nodiscard]] bool AllMenusEnabled() const {
        for (const QString& menu : TopLevelMenus())
            if (!window->Entry(menu)->isEnabled())
                return false;
        return true;
    }
    template <class Widget = QWidget>
    [[nodiscard]] Widget* Child(const char* name) const {
        return window->findChild<Widget*>(QString::fromLatin1(name));
    }
    // The status bar's directory and machine: " Parts|Trumpf Punch 5000 ".
    [[nodiscard]] QString Status() const {
        const auto* status = Child<StatusBox>("StatusBar");
        return status->LeftText() + u'|' + status->RightText();
    }
    // The background receive listens on this port ("COM2" for 2).
    void UseBackgroundPort(int port) {
        QStringList cms = fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"));
        cms[1] = LabelledLine(QStringLiteral("Port"), QString::number(port));
        fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"), cms);
    }
    // The host asks the program to end, as at a shutdown.
    void Sigterm() {
        const TerminationSignals termination([this] { window->close(); });
        std::raise(SIGTERM);
        EXPECT_TRUE(RunEventsUntil([this] { return !window->isVisible(); }, 2000));
    }

    InstallationFixture fx;

private:
    // Before the window, which keeps using it until it goes.
    std::unique_ptr<ProgramLauncher> m_launcher;

protected:
    std::unique_ptr<FrontEnd> window;
};

} // namespace kestrova::testing
