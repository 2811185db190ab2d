#pragma once

#include "Frontend/MainWindowFrame.h"
#include "InstallationFixture.h"
#include "platform/ProgramLauncher.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace kestrova::testing {

// The main window as the core routines see it, keeping every call in order.
class RecordingFrame final : public MainWindowFrame {
public:
    void LockMenus() override { log << QStringLiteral("lock"); }
    void UnlockMenus() override { log << QStringLiteral("unlock"); }
    void MenuSetUp() override { log << QStringLiteral("setup"); }
    void ShowStatus() override { log << QStringLiteral("status"); }
    void SetEntryEnabled(const QString& entry, bool enabled) override {
        log << (enabled ? QStringLiteral("enable ") : QStringLiteral("disable ")) + entry;
    }
    void HideWindow() override {
        hidden = true;
        log << QStringLiteral("hide");
    }
    void ShowWindow() override {
        hidden = false;
        log << QStringLiteral("show");
    }
    void MachineChanged() override { log << QStringLiteral("machine changed"); }
    void ShowLogo() override { log << QStringLiteral("logo"); }

    QStringList log;
    bool hidden = false;
};

// The routines behind the main window's entries run on a loaded installation with its program
// launcher and a recording frame; the built-in editor stands in as one that is closed at once,
// remembering the files it opened.
class FrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        launcher.SetBuiltInEditor([this](const QString& file) {
            builtIn << file;
            struct Closed final : StartedProgram {
                [[nodiscard]] bool Running() const override { return false; }
            };
            return std::make_unique<Closed>();
        });
    }

    InstallationFixture fx;
    ProgramLauncher launcher{fx.Files()};
    RecordingFrame frame;
    QStringList builtIn;
};

} // namespace kestrova::testing
