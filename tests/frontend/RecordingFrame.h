#pragma once

#include "Frontend/MainWindowFrame.h"

#include <QStringList>

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

} // namespace kestrova::testing
