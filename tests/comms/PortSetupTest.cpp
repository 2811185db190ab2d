#include "comms/PortSetup.h"

#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/Pause.h"

#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::ScriptedSerialLine;
using kestrova::testing::TestApplication;

TEST(PortSetup, ValuesForEachKindOfTransfer) {
    struct Row {
        TransferKind kind;
        int handshakeIn;
        PortSetup expected;
    };
    const QString s = QStringLiteral("9600,E,7,2");
    const Row rows[] = {
        // The XON/XOFF-only code is held back while waiting, but not RTS/CTS and not both.
        {TransferKind::SendWaiting, 1, {3, s, 0, true, true, 1, 0, 0, false}},
        {TransferKind::SendWaiting, 3, {3, s, 3, true, true, 1, 0, 0, false}},
        {TransferKind::SendWaiting, 2, {3, s, 2, true, true, 1, 0, 0, false}},
        {TransferKind::SendTransmitting, 1, {3, s, 1, true, true, 128, 0, 0, true}},
        {TransferKind::DialogueSend, 3, {3, s, 0, false, false, 0, 0, 0, false}},
        {TransferKind::GeneralReceive, 1, {3, s, 1, true, true, 0, 0, 0, true}},
        {TransferKind::DialogueReceive, 2, {3, s, 0, false, false, 0, 0, 1, false}},
        {TransferKind::Background, 1, {3, s, 1, true, true, 1, 0, 0, true}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(PortSetupFor(row.kind, 3, s, row.handshakeIn), row.expected)
            << "kind " << int(row.kind) << " handshake " << row.handshakeIn;
}

TEST(PortSetup, PropertiesAreSetInTheOneOrderAndThePortOpenedLastAndOnce) {
    ScriptedSerialLine line;
    PreparePort(line, PortSetupFor(TransferKind::Background, 2, "9600,E,7,2", 1));
    EXPECT_EQ(line.Log(), (QStringList{"CommPort=2", "Settings=9600,E,7,2", "Handshaking=1", "DTREnable=1",
                                       "RTSEnable=1", "InBufferCount=0", "OutBufferCount=0", "RThreshold=1",
                                       "SThreshold=0", "InputLen=0", "NullDiscard=1", "PortOpen=1"}));
    EXPECT_TRUE(line.PortOpen());

    // An open port stays open and keeps its number.
    line.ClearLog();
    PreparePort(line, PortSetupFor(TransferKind::GeneralReceive, 5, "4800,N,8,1", 2));
    EXPECT_EQ(line.Opens(), 1);
    EXPECT_EQ(line.CommPort(), 2);
    EXPECT_FALSE(line.Log().contains("PortOpen=1"));
    EXPECT_EQ(line.Settings(), "4800,N,8,1");
    EXPECT_EQ(line.Handshaking(), 2);
}

TEST(PortSetup, TheSmallestAndLargestFramingsAndPortsOpenAndAnyOtherFailsBeforeOpening) {
    const struct {
        int port;
        const char* settings;
        std::optional<LineFraming> framing; // none: refused
    } cases[] = {
        {1, "1,N,5,1", LineFraming{1, 'N', 5, 1}},
        {255, "921600,S,8,2", LineFraming{921600, 'S', 8, 2}},
        {2, " 110 , m , 5 , 1.5 ", LineFraming{110, 'M', 5, 3}},
        {3, "115200,o,8,1", LineFraming{115200, 'O', 8, 1}},
        {0, "9600,E,7,2", {}},
        {256, "9600,E,7,2", {}},
        {1, "0,N,8,1", {}},
        {1, "9600,N,4,1", {}},
        {1, "9600,N,9,1", {}},
        {1, "9600,N,8,3", {}},
        {2, "2,2,2,2", {}},
        {2, "9600,E,7", {}},
        {2, "9600,X,7,2", {}},
        {2, "fast,E,7,2", {}},
        {2, "", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.port) + " " + c.settings);
        ScriptedSerialLine line;
        try {
            PreparePort(line, PortSetupFor(TransferKind::Background, c.port, c.settings, 0));
            EXPECT_TRUE(c.framing) << "taken";
        } catch (const DeviceUnavailableError& e) {
            EXPECT_FALSE(c.framing) << e.text().toStdString();
            EXPECT_EQ(e.subject(), QStringLiteral("COM%1").arg(c.port));
        }
        EXPECT_EQ(line.PortOpen(), bool(c.framing));
        if (c.framing) {
            const std::optional<LineFraming> f = ParseFraming(c.settings);
            ASSERT_TRUE(f);
            EXPECT_EQ(
                std::tuple(f->baud, f->parity, f->dataBits, f->stopBits),
                std::tuple(c.framing->baud, c.framing->parity, c.framing->dataBits, c.framing->stopBits));
        }
    }
    ScriptedSerialLine line;
    line.FailNextOpen(SystemError::Kind::DeviceUnavailable, "in use");
    EXPECT_THROW(PreparePort(line, PortSetupFor(TransferKind::Background, 2, "9600,E,7,2", 0)),
                 DeviceUnavailableError);
    EXPECT_FALSE(line.PortOpen());
}

TEST(Pause, EventsRunDuringAPauseClampedToItsLimitUntilItEndsOrIsStopped) {
    TestApplication();
    const struct {
        int ms;
        bool stopped; // the timer is stopped from an event during the pause
        int seen;     // the interval an event during the pause sees; -1: no event runs
        bool elapsed;
    } cases[] = {
        {0, false, -1, false}, {-7, false, -1, false}, {20, false, 20, true}, {100000, true, 65535, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.ms);
        PauseTimer pause;
        int seen = -1;
        QTimer::singleShot(0, [&] {
            seen = pause.Interval();
            if (c.stopped)
                pause.Cancel();
        });
        pause.Pause(c.ms);
        EXPECT_EQ(seen, c.seen);
        EXPECT_EQ(pause.Elapsed(), c.elapsed);
        EXPECT_EQ(pause.Interval(), 0);
        QCoreApplication::processEvents(); // what did not run during the pause runs now
        EXPECT_NE(seen, -1);
    }
}

TEST(Pause, APauseStartedDuringAnotherTakesTheOneTimerOver) {
    TestApplication();
    PauseTimer& shared = PauseTimer::Shared();
    bool innerDone = false;
    QTimer::singleShot(0, [&] {
        shared.Pause(5);
        innerDone = true;
    });
    shared.Pause(60000); // ends with the inner one, long before its own time
    EXPECT_TRUE(innerDone);
    EXPECT_EQ(shared.Interval(), 0);
}
