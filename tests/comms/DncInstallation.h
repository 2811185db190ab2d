#pragma once

// The DNC service's tests share: an installation whose machines are served, the service over
// scripted lines, and the send engine's own stream as the oracle of every answer.
#include "CommsInstallation.h"
#include "comms/DncService.h"
#include "comms/SendEngine.h"

#include <QTimer>
#include <gtest/gtest.h>
#include <map>

namespace kestrova::testing {

inline const QString DncCfg = QStringLiteral("C:\\Kestrova\\Dnc.cfg");

inline QString CmsOf(const QString& machine) {
    return QStringLiteral("C:\\Kestrova\\Setup\\Data\\") + machine + QStringLiteral(".cms");
}

// The installation with machines 1 to count, machine n on COMn, all served.
inline QStringList ServeMachines(InstallationFixture& fx, int count) {
    QStringList dirs{"PUNCH1", "RAINER", "LASER"};
    QStringList list = fx.ReadLines("C:\\Kestrova\\Machine.lst").mid(0, 3);
    for (int n = 4; n <= count; ++n) {
        const QString dir = QStringLiteral("M%1").arg(n);
        dirs << dir;
        list << QStringLiteral("%1,\"Machine %1\",\"%2\",\"Setman\",\"P\"").arg(n).arg(dir);
        fx.WriteLines(CmsOf(dir), fx.ReadLines(CmsOf("PUNCH1")));
        fx.WriteLines(QStringLiteral("C:\\Jobs\\%1\\Parts\\Seed.prg").arg(dir), {"%", "G00 X%1", "%"});
    }
    fx.WriteLines("C:\\Kestrova\\Machine.lst", list << "******");
    QStringList cfg;
    for (int n = 1; n <= count; ++n) {
        SetValues(fx, CmsOf(dirs.at(n - 1)), {{"Port", QString::number(n)}});
        cfg << LabelledLine("Machine", n == 2 ? QStringLiteral("2, Kestrova") : QString::number(n));
    }
    fx.WriteLines(DncCfg, cfg << "******");
    return dirs.mid(0, count);
}

// The service over scripted lines, one per port.
struct ScriptedService {
    ScriptedService() { TestApplication(); }
    void Start() {
        service = std::make_unique<DncService>(fx.session(), [this](int port) {
            auto line = std::make_unique<ScriptedSerialLine>();
            lines[port] = line.get();
            return line;
        });
        service->Start();
    }
    InstallationFixture fx;
    std::map<int, ScriptedSerialLine*> lines;
    std::unique_ptr<DncService> service;
};

// What the send engine puts on a line for the program at path, sent to the served machine.
inline QByteArray EngineStream(InstallationFixture& fx, const DncLineSetup& setup, const QString& directory,
                               const QString& program, const QString& path) {
    ScriptedSerialLine line;
    SendEngine engine(line, PauseTimer::Shared());
    engine.SetSettings(setup.Send);
    engine.SetMachine(setup.Machine);
    // The control's start, once the engine has opened the line to wait for it.
    QTimer start;
    QObject::connect(&start, &QTimer::timeout, [&] {
        if (line.PortOpen()) {
            line.Feed("\x11");
            start.stop();
        }
    });
    start.start(1);
    EXPECT_EQ(engine.SendProgram(fx.Files(), directory, program, path, fx.Files().Length(path)),
              SendEnd::Sent);
    return line.Sent();
}

inline bool AllIdle(const DncService& service) {
    for (const auto& [port, line] : service.Lines())
        if (line->State() == DncLineState::Sending || line->State() == DncLineState::Receiving)
            return false;
    return true;
}

} // namespace kestrova::testing
