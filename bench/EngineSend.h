#pragma once

// What the send benchmarks share: a program sent by the send form's logic to the simulated
// machine, which asks with XON, timed from the machine's start to the end of the send.
#include "CpuTime.h"
#include "EventScript.h"
#include "InstallationFixture.h"
#include "SimulatorProcess.h"
#include "comms/SendFormLogic.h"

#include <QElapsedTimer>

namespace kestrova::bench {

struct Figures {
    double seconds;
    double cpu; // this process's processor time
};

// Writes the current machine's program "Load" of kilobytes KB, punching blocks with CR LF line
// ends; its text.
inline QByteArray WriteLoadProgram(testing::InstallationFixture& fx, int kilobytes) {
    QByteArray text;
    for (int n = 10; text.size() < kilobytes * 1024; n += 10)
        text += "N" + QByteArray::number(n) + " G01 X" + QByteArray::number(n % 2500) + ".5 Y12.25\r\n";
    text.truncate(kilobytes * 1024 - 2);
    text += "\r\n";
    fx.Write("C:\\Jobs\\PUNCH1\\Parts\\Load.prg", text);
    return text;
}

// Sends the current machine's program "Load"; the machine records it into recorded.
inline Figures EngineSend(testing::InstallationFixture& fx, testing::SimulatorProcess& machine,
                          SerialLine& line, const QString& options, const QString& recorded) {
    SendEngine engine(line, PauseTimer::Shared());
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    QObject script;
    QElapsedTimer wall;
    double cpu0 = 0;
    testing::When(
        &script, [&] { return engine.Phase() == SendPhase::Waiting && line.PortOpen(); },
        [&] {
            machine.Start("receive " + recorded + " start=17 trailer=1,37 " + options);
            wall.start();
            cpu0 = CpuSeconds();
        });
    logic.SendOk_Click({QStringLiteral("Load")});
    const double cpu = CpuSeconds() - cpu0;
    machine.Finish(QStringLiteral("receive"), 600000);
    return {double(wall.nsecsElapsed()) / 1e9, cpu};
}

} // namespace kestrova::bench
