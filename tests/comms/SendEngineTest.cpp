#include "comms/SendEngine.h"

#include "EventScript.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/CommSettings.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Program = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\P100.prg");
const QByteArray Leader("\0\0\0", 3);

class SendEngineTest : public ::testing::Test {
protected:
    SendEngineTest() {
        TestApplication();
        engine.SetEventSlice(std::chrono::microseconds(0)); // events at every character
    }

    // Starts at once (RTS/CTS with Immediate), a three-NUL leader, CR LF line ends, "%" trailer.
    static SendSettings Plain() {
        SendSettings s;
        s.Port = 1;
        s.Settings = QStringLiteral("9600,E,7,2");
        s.Handshaking = 2;
        s.Start = StartMode::Immediate;
        s.Leader = QString::fromLatin1(Leader);
        s.LineEnd = QStringLiteral("\r\n");
        s.Trailer = QStringLiteral("%");
        return s;
    }
    SendEnd Send(const QByteArray& text, const SendSettings& settings = Plain(),
                 const SendMachine& machine = {}, const QString& directory = QStringLiteral("Parts"),
                 const QString& program = QStringLiteral("P100")) {
        fx.Write(Program, text);
        engine.SetSettings(settings);
        engine.SetMachine(machine);
        return engine.SendProgram(fx.Files(), directory, program, Program, text.size());
    }
    bool Waiting() const { return engine.Phase() == SendPhase::Waiting; }

    InstallationFixture fx;
    ScriptedSerialLine line;
    PauseTimer pause;
    SendEngine engine{line, pause};
    QObject script;
};

TEST_F(SendEngineTest, LineEndsAreReplacedTheSendFilterDropsAndHeadersReplaceTheLeader) {
    SendSettings own = Plain();
    own.LineEnd = QStringLiteral(";\n");
    own.SendFilter = {QChar(' '), QChar(0x7F)};
    own.Leader.clear();
    // Bytes 0x80..0x9F leave as they stand in the program, the settings' codes in that range are
    // those bytes, and names from the data directory go into the header as the bytes they show.
    const QString cms = QStringLiteral("C:\\Jobs\\High.cms");
    fx.WriteLines(cms, {"Control : Kestrova", "Port : 1", "Baud : 9600", "Parity : E", "Data Bits : 7",
                        "Stop Bits : 2", "Handshake : RTS/CTS", "Start Mode : FORCE",
                        "Start Character : ", "Leader : 1,129", "Line End : 1,13,1,10", "Trailer : 2,128",
                        "End Sequence : ", "Send Filter : 138,159", "Receive Filter : ", "Time Out : 0"});
    const SendSettings high = ReadSendSettings(fx.Files(), cms);
    const QByteArray highText("G1 \x80\x85\x8A\x9E\x9F\r\n");
    const QString punch = QStringLiteral("PUNCH1");
    const struct {
        const char* what;
        QByteArray text;
        QByteArray sent;
        SendSettings settings = Plain();
        SendMachine machine = {};
        QString directory = QStringLiteral("Parts");
        QString program = QStringLiteral("P100");
    } cases[] = {
        {"CR LF", "G1\r\nG2\r\n", Leader + "G1\r\nG2\r\n%"},
        {"a bare LF ends nothing", "G1\nG2", Leader + "G1G2%"},
        {"own line end and filter", "G1 X1\x7F\rM30", "G1X1;\nM30%", own},
        {"terminal header",
         "G1\r",
         "\x17PUNCH1\r\n\x18Parts\r\n\x19P100\r\nG1\r\n%",
         Plain(),
         {punch, true, 3}},
        {"intermotion 3", "G1\r", "\x01Parts\r\n\x02P100\r\nG1\r\n%", Plain(), {punch, false, 3}},
        {"intermotion 4", "G1\r", "\x18Parts\r\n\x19P100\r\nG1\r\n%", Plain(), {punch, false, 4}},
        {"intermotion 6", "G1\r", "\x18Parts\r\n\x19P100\r\nG1\r\n%", Plain(), {punch, false, 6}},
        {"intermotion 2", "G1\r", Leader + "G1\r\n%", Plain(), {punch, false, 2}},
        {"intermotion 7", "G1\r", Leader + "G1\r\n%", Plain(), {punch, false, 7}},
        {"high bytes", highText, "\x81G1 \x80\x85\x9E\r\n\x80\x80", high, {punch, false, 0}},
        {"high bytes in a header",
         highText,
         "\x17PUNCH1\r\n\x18Teile\x80\r\n\x19\x8E"
         "1\r\nG1 \x80\x85\x9E\r\n\x80\x80",
         high,
         {punch, true, 0},
         QStringLiteral("Teile\u20AC"),
         QStringLiteral("\u017D1")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const qsizetype before = line.Sent().size();
        EXPECT_EQ(Send(c.text, c.settings, c.machine, c.directory, c.program), SendEnd::Sent);
        EXPECT_EQ(line.Sent().mid(before), c.sent);
        EXPECT_FALSE(line.PortOpen());
        EXPECT_EQ(engine.Phase(), SendPhase::Idle);
    }
}

TEST_F(SendEngineTest, EachStartModeStartsOnItsOwnCondition) {
    struct Case {
        StartMode mode;
        int handshaking;
        QString startCharacter;
        std::function<void()> ignored; // must leave the send waiting
        std::function<void()> starts;
    };
    const QList<Case> cases = {
        {StartMode::Immediate, 1, {}, [] {}, [&] { line.Raise(CommEvent::CdChange); }},
        {StartMode::Auto, 1, QStringLiteral("\x11"), [&] { line.Feed("abc"); }, [&] { line.Feed("x\x11"); }},
        {StartMode::Auto, 0, {}, [] {}, [&] { line.Feed("z"); }},
        {StartMode::Any, 0, {}, [&] { line.Raise(CommEvent::CtsChange); }, [&] { line.Feed("z"); }},
        {StartMode::Cts, 0, {}, [&] { line.SetDsr(true); }, [&] { line.SetCts(false); }},
        {StartMode::Dsr, 0, {}, [&] { line.SetCts(true); }, [&] { line.SetDsr(false); }},
        {StartMode::Event, 0, {}, [] {}, [&] { line.Raise(CommEvent::Break); }},
        {StartMode::Manual,
         3,
         {},
         [&] {
             line.Feed("\x11");
             line.SetCts(false);
         },
         [&] { engine.SendFrc_Click(); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.mode));
        SendSettings s = Plain();
        s.Start = c.mode;
        s.Handshaking = c.handshaking;
        s.StartCharacter = c.startCharacter;
        line.ClearLog();
        const qsizetype before = line.Sent().size();
        bool stillWaiting = false;
        When(
            &script, [&] { return Waiting(); },
            [&] {
                c.ignored();
                When(
                    &script, [] { return true; },
                    [&] {
                        stillWaiting = Waiting() && !engine.Started() && line.Sent().size() == before;
                        c.starts();
                    });
            });
        EXPECT_EQ(Send("G1\r", s), SendEnd::Sent);
        EXPECT_TRUE(stillWaiting);
        EXPECT_EQ(line.Sent().mid(before), Leader + "G1\r\n%");
        // Waiting with the XON/XOFF-only code held back, then transmitting with the full code.
        const QStringList log = line.Log();
        const qsizetype reopen = log.indexOf("PortOpen=0");
        ASSERT_GT(reopen, 0);
        EXPECT_EQ(log.at(2), QStringLiteral("Handshaking=%1").arg(c.handshaking == 1 ? 0 : c.handshaking));
        EXPECT_EQ(log.mid(reopen - 2, 6).join(' '),
                  QStringLiteral("RThreshold=0 SThreshold=0 PortOpen=0 "
                                 "CommPort=1 Settings=9600,E,7,2 Handshaking=%1")
                      .arg(c.handshaking));
    }
}

TEST_F(SendEngineTest, RaskinWaitsForASevenAfterTheLeaderAndEveryLine) {
    // Each answer comes a while after the line went out; nothing more may go out meanwhile.
    QList<QByteArray> seen;
    auto answerAfter = [&](const QByteArray& tail, const QByteArray& first, std::function<void()> then) {
        When(
            &script,
            [&, tail] { return line.Sent().endsWith(tail) && engine.Phase() == SendPhase::Transmitting; },
            [&, first, then] {
                seen << line.Sent();
                line.Feed(first);
                QTimer::singleShot(20, &script, [&, then] {
                    seen << line.Sent();
                    line.Feed("7");
                    then();
                });
            });
    };
    answerAfter(Leader, "", [&] { answerAfter("G1\r\n", "no", [&] { answerAfter("G2\r\n", "x", [] {}); }); });
    EXPECT_EQ(Send("G1\r\nG2\r\n", Plain(), {QStringLiteral("PUNCH1"), false, 0, true}), SendEnd::Sent);
    EXPECT_EQ(line.Sent(), Leader + "G1\r\nG2\r\n%");
    const QByteArray one = Leader + "G1\r\n", two = one + "G2\r\n";
    EXPECT_EQ(seen, (QList<QByteArray>{Leader, Leader, one, one, two, two}));
}

TEST_F(SendEngineTest, TheFourPausesComeBetweenThePieces) {
    SendSettings s = Plain();
    s.PauseAfterStart = 31;
    s.PauseAfterLeader = 32;
    s.PauseAfterLine = 33;
    s.PauseAfterTrailer = 34;
    QList<QByteArray> sentDuring;
    for (int ms : {31, 32, 33, 34})
        When(
            &script, [&, ms] { return pause.Interval() == ms; }, [&] { sentDuring << line.Sent(); });
    EXPECT_EQ(Send("G1\r\nG2", s), SendEnd::Sent);
    EXPECT_EQ(sentDuring, (QList<QByteArray>{"", Leader, Leader + "G1\r\n", Leader + "G1\r\nG2%"}));
}

TEST_F(SendEngineTest, AnAbortCutsTheProgramOffWhereverItComes) {
    SendSettings s = Plain();
    s.Leader = QString(20, QChar(0));
    s.Trailer = QStringLiteral("%%%%%");
    s.PauseAfterStart = 21;
    s.PauseAfterTrailer = 22;
    const QByteArray text = "G1 X10\r\nG2 Y20\r\n";
    qsizetype base = 0;
    auto fresh = [&] { return line.Sent().mid(base); };
    struct Case {
        const char* where;
        std::function<bool()> when;
        QByteArray sent;
    };
    const QList<Case> cases = {
        {"during the pause after the start", [&] { return pause.Interval() == 21; }, ""},
        {"in the leader", [&] { return fresh().size() == 7; }, QByteArray(7, '\0')},
        {"in the text", [&] { return fresh().endsWith("G1 X"); }, QByteArray(20, '\0') + "G1 X"},
        {"before the trailer", [&] { return engine.Phase() == SendPhase::Trailer; },
         QByteArray(20, '\0') + text},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.where);
        base = line.Sent().size();
        bool trailerPause = false;
        When(&script, c.when, [&] { engine.SendAbrt_Click(); });
        When(
            &script, [&] { return pause.Interval() == 22; }, [&] { trailerPause = true; });
        EXPECT_EQ(Send(text, s), SendEnd::Aborted);
        EXPECT_EQ(fresh(), c.sent);
        EXPECT_TRUE(trailerPause); // the pause after the trailer is still waited
        EXPECT_FALSE(line.PortOpen());
        EXPECT_TRUE(engine.LostMessage().isEmpty());
    }

    // While waiting for the start: the port closes and nothing is sent.
    s.Start = StartMode::Manual;
    line.ClearLog();
    const qsizetype before = line.Sent().size();
    When(
        &script, [&] { return Waiting(); }, [&] { engine.SendAbrt_Click(); });
    EXPECT_EQ(Send(text, s), SendEnd::Aborted);
    EXPECT_EQ(line.Sent().size(), before);
    EXPECT_EQ(line.Log().filter("PortOpen").join(' '), "PortOpen=1 PortOpen=0");

    // A break while the trailer goes out stops it; in the text it does not.
    s.Start = StartMode::Immediate;
    line.HoldOutput(true);
    When(
        &script, [&] { return engine.Phase() == SendPhase::Transmitting && line.OutBufferCount() > 0; },
        [&] {
            line.Raise(CommEvent::Break);
            line.ReleaseOutput();
            line.HoldOutput(false);
        });
    When(
        &script, [&] { return line.Sent().endsWith("%%"); }, [&] { line.Raise(CommEvent::Break); });
    EXPECT_EQ(Send(text, s), SendEnd::Aborted);
    EXPECT_TRUE(line.Sent().endsWith(text + "%%"));
}

TEST_F(SendEngineTest, NeverMoreThanSixtyFourCharactersWaitToGoOut) {
    line.HoldOutput(true);
    int most = 0;
    auto* drain = new QTimer(&script);
    QObject::connect(drain, &QTimer::timeout, [&] {
        most = qMax(most, line.OutBufferCount());
        line.ReleaseOutput(20);
    });
    drain->start(1);
    QByteArray text;
    for (int i = 0; i < 100; ++i)
        text += "N" + QByteArray::number(i) + " G01 X10\r\n";
    EXPECT_EQ(Send(text), SendEnd::Sent);
    EXPECT_EQ(most, 64);
    EXPECT_EQ(line.Sent(), Leader + text + "%");
}

TEST_F(SendEngineTest, TheProgressBarMovesPerCharacterOrPerThousand) {
    QList<SendProgress> shown;
    QObject::connect(&engine, &SendEngine::ProgressChanged, [&] { shown << engine.Progress(); });
    EXPECT_EQ(Send(QByteArray(30000, 'X') + "\r"), SendEnd::Sent);
    ASSERT_GE(shown.size(), 3);
    EXPECT_EQ(shown.first().Label, "P100\n30001\nCharacters");
    EXPECT_TRUE(shown.first().ForceVisible && shown.first().AbortVisible && !shown.first().BarVisible);
    EXPECT_EQ(shown.at(1).Label, "P100");
    EXPECT_FALSE(shown.at(1).ForceVisible);
    QList<int> steps;
    for (const SendProgress& p : shown)
        if (p.BarVisible && (steps.isEmpty() || steps.last() != p.Steps))
            steps << p.Steps;
    ASSERT_EQ(steps.size(), 31); // 0, then one step per 1000 characters
    EXPECT_EQ(steps.last(), 30);
    EXPECT_EQ(shown.at(shown.size() - 2).Percent, 100);
    EXPECT_EQ(shown.last(), (SendProgress{"", true, 30, 0, 0, false, false, false, {}}));

    shown.clear();
    EXPECT_EQ(Send("AB\r\nC"), SendEnd::Sent);
    QList<int> percents;
    for (const SendProgress& p : shown)
        if (p.BarVisible)
            percents << p.Percent;
    EXPECT_EQ(percents, (QList<int>{0, 20, 40, 60, 80, 100}));
}

TEST_F(SendEngineTest, AHangUpEndsTheSendWithTheLineLost) {
    When(
        &script, [&] { return line.Sent().endsWith("G1"); }, [&] { line.HangUp(); });
    EXPECT_EQ(Send("G1\r\nG2\r\n"), SendEnd::LineLost);
    EXPECT_EQ(line.Sent(), Leader + "G1");
    EXPECT_TRUE(engine.LostMessage().contains("\"COM1\""));
    EXPECT_EQ(engine.Phase(), SendPhase::Idle);

    // A port that cannot open leaves the engine idle and the progress cleared.
    line.FailNextOpen(SystemError::Kind::DeviceUnavailable);
    EXPECT_THROW((void)Send("G1\r\n"), DeviceUnavailableError);
    EXPECT_EQ(engine.Phase(), SendPhase::Idle);
    EXPECT_FALSE(engine.Progress().AbortVisible);
}

} // namespace

TEST_F(SendEngineTest, AnXoffAtTheEndIsWaitedOutAndNothingHeldIsLost) {
    struct Case {
        const char* what;
        int releaseAfterMs; // -1: never
        bool abort;         // the operator aborts while the end waits
        SendEnd end;
    };
    const Case cases[] = {
        {"released later", 300, false, SendEnd::Sent},
        {"never released", -1, false, SendEnd::Undrained},
        {"aborted while held", -1, true, SendEnd::Aborted},
    };
    const QByteArray text = "N10 G90\r\nN20 G01 X10\r\nN30 M30\r\n";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SendSettings s = Plain();
        s.TimeOut = c.abort ? 60000 : 400;
        line.HoldOutput(false);
        const QByteArray sentBefore = line.Sent();
        const qsizetype lostBefore = line.LostAtClose().size();
        // The control sends XOFF after the first ten characters of the program.
        When(
            &script, [&] { return line.Sent().size() >= sentBefore.size() + 10; },
            [&] {
                line.HoldOutput(true);
                if (c.releaseAfterMs >= 0)
                    QTimer::singleShot(c.releaseAfterMs, &script, [&] { line.HoldOutput(false); });
                if (c.abort)
                    When(
                        &script, [&] { return engine.Phase() == SendPhase::Trailer; },
                        [&] { QTimer::singleShot(50, &script, [&] { engine.SendAbrt_Click(); }); });
            });
        EXPECT_EQ(Send(text, s), c.end);
        if (c.end == SendEnd::Sent) {
            EXPECT_EQ(line.Sent().mid(sentBefore.size()), Leader + text + "%");
            EXPECT_EQ(line.LostAtClose().size(), lostBefore);
        } else if (c.end == SendEnd::Undrained) {
            // What did not leave is counted: all of it after the tenth character, trailer too.
            EXPECT_EQ(engine.Undrained(), Leader.size() + text.size() + 1 - 10);
        }
        EXPECT_FALSE(line.PortOpen());
    }
}

TEST_F(SendEngineTest, ASendHeldByXoffSleepsOnTheLinesEvents) {
    QByteArray text;
    for (int i = 0; i < 40; ++i)
        text += "N" + QByteArray::number(i) + " G01 X10 Y20\r\n";
    int queriesWhileHeld = -1;
    int atHold = 0;
    When(
        &script, [&] { return line.Sent().size() >= 100; },
        [&] {
            line.HoldOutput(true);
            atHold = line.OutBufferQueries();
            QTimer::singleShot(400, &script, [&] {
                queriesWhileHeld = line.OutBufferQueries() - atHold;
                line.HoldOutput(false);
            });
        });
    EXPECT_EQ(Send(text), SendEnd::Sent);
    EXPECT_EQ(line.Sent(), Leader + text + "%");
    // A poll of the output would ask hundreds of times in 400 ms; a wait on the line's events
    // asks once per event (here: the XON only).
    EXPECT_GE(queriesWhileHeld, 0);
    EXPECT_LT(queriesWhileHeld, 10);
}

TEST_F(SendEngineTest, TheControlStopsTheTrailerWithABreakOrALineLeftLow) {
    // The trailer waits to go out (held by the control) while the control drops a line or sends
    // a break; the transfer's time-out is 300 ms.
    struct Case {
        const char* what;
        int handshaking;
        std::function<void()> control; // done once the trailer phase begins
        SendEnd end;
        std::optional<CommEvent> event;
    };
    const QList<Case> cases = {
        {"CTS dropped with RTS/CTS", 2, [&] { line.SetCts(false); }, SendEnd::Aborted, CommEvent::CtsTimeOut},
        {"CTS dropped without RTS/CTS", 1, [&] { line.SetCts(false); }, SendEnd::Undrained, {}},
        {"CTS held up", 2, [] {}, SendEnd::Undrained, {}},
        {"carrier dropped", 0, [&] { line.SetCd(false); }, SendEnd::Aborted, CommEvent::CdTimeOut},
        {"a break", 0, [&] { line.Raise(CommEvent::Break); }, SendEnd::Aborted, CommEvent::Break},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        SendSettings s = Plain();
        s.Handshaking = c.handshaking;
        s.Start = StartMode::Event;
        s.TimeOut = 300;
        line.HoldOutput(false);
        line.SetCts(true);
        line.SetCd(true);
        const qsizetype before = line.Sent().size();
        When(
            &script, [&] { return Waiting() && line.PortOpen(); }, [&] { engine.SendFrc_Click(); });
        When(
            &script, [&] { return engine.Phase() == SendPhase::Trailer; },
            [&] {
                line.HoldOutput(true);
                c.control();
            });
        EXPECT_EQ(Send("G1\r", s), c.end);
        EXPECT_EQ(engine.StopEvent(), c.event);
        EXPECT_EQ(line.Sent().mid(before), Leader + "G1\r\n"); // the trailer never left
        EXPECT_FALSE(line.PortOpen());
    }

    // Low for longer than the time-out, but with nothing waiting to go out: no time-out.
    SendSettings s = Plain();
    s.TimeOut = 100;
    s.PauseAfterTrailer = 300;
    line.HoldOutput(false);
    line.SetCd(true);
    When(
        &script, [&] { return engine.Phase() == SendPhase::Trailer; },
        [&] {
            line.SetCts(false);
            line.SetCd(false);
        });
    EXPECT_EQ(Send("G1\r", s), SendEnd::Sent);
    EXPECT_FALSE(engine.StopEvent());
}
