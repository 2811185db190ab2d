// The DNC service over scripted lines: every served machine's control sends programs and asks
// for programs at once; each program is filed where its header says, each answer is the stream
// the send engine makes, and nothing crosses from one line to another. Requests that name
// nothing of the machine's, settings that cannot serve, a reload and a stop.
#include "comms/DncService.h"

#include "DncInstallation.h"
#include "Thrown.h"
#include "comms/DncRequest.h"
#include "comms/SendEngine.h"
#include "comms/TransferLog.h"
#include "filestore/ProgramHistory.h"

#include <QTimer>
#include <gtest/gtest.h>
#include <map>

using namespace kestrova;
using namespace kestrova::testing;

TEST(DncRequest, OnlyALoneRequestIsOneAndItNeverReadsOutsideTheMachine) {
    InstallationFixture fx;
    fx.Load();
    fx.WriteLines("C:\\Jobs\\PUNCH1\\Archive\\Old.prg", {"%", "OLD", "%"});
    fx.WriteLines("C:\\Jobs\\RAINER\\Kestrova\\Secret.prg", {"RAINER ONLY"});
    fx.WriteLines("C:\\Kestrova\\x.prg", {"SYSTEM"});
    const struct {
        const char* received;
        const char* sentProgram; // "" for no request
        QByteArray text;         // the answer's text, or part of it for lists
        const char* result;
    } cases[] = {
        {"(PRG=Bracket)\r\n", "Bracket", "%\r\nN10 G90\r\n%\r\n", "sent on request"},
        {"%\r\n  (prg=cover)  \r\n\r\n", "Cover", "%\r\nG00 X0 Y0\r\n%\r\n", "sent on request"},
        {"%(PRG=Archive\\Old)\r\n", "Old", "%\r\nOLD\r\n%\r\n", "sent on request"},
        {"(PRG=Parts\\Old)\r\n", "NOT FOUND", "(NOT FOUND Parts\\Old)\r\n", "not found: no such program"},
        {"(PRG=Missing)\r\n", "NOT FOUND", "(NOT FOUND Missing)\r\n", "not found: no such program"},
        {"(PRG=Secret)\r\n", "NOT FOUND", "(NOT FOUND Secret)\r\n", "not found: no such program"},
        {"(PRG=..\\..\\x)\r\n", "NOT FOUND", "(NOT FOUND ..\\..\\x)\r\n",
         "not found: no such directory of PUNCH1"},
        {"(PRG=C:\\Kestrova\\x)\r\n", "NOT FOUND", "(NOT FOUND C:\\Kestrova\\x)\r\n",
         "not found: no such directory of PUNCH1"},
        {"(PRG=EXSUBS\\Sub1)\r\n", "NOT FOUND", "(NOT FOUND EXSUBS\\Sub1)\r\n",
         "not found: no such directory of PUNCH1"},
        {"(PRG=..)\r\n", "NOT FOUND", "(NOT FOUND ..)\r\n", "not found: not a plain name"},
        {"(PRG=A234567890123456789012345678901234567890)\r\n", "NOT FOUND",
         "(NOT FOUND A234567890123456789012345678901234567890)\r\n", "not found: not a plain name"},
        {"(PRG=)\r\n", "NOT FOUND", "(NOT FOUND )\r\n", "not found: not a plain name"},
        {"(DIR)\r\n", "DIR",
         "(Archive\\Old)\r\n(Kestrova\\Sample)\r\n(Parts\\bracket-2)\r\n(Parts\\Bracket)\r\n",
         "sent on request"},
        {"N10 G90\r\n(PRG=Bracket)\r\nM30\r\n", "", "", ""},
        {"(PRG=Bracket) G01\r\n", "", "", ""},
        {"(DIRECTORY)\r\n", "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.received);
        const std::optional<DncRequest> request = ReadDncRequest(c.received);
        ASSERT_EQ(request.has_value(), QByteArray(c.sentProgram) != "");
        if (!request)
            continue;
        const DncAnswer answer = AnswerDncRequest(fx.Files(), fx.Settings(), "PUNCH1", *request);
        EXPECT_EQ(answer.Program, QLatin1String(c.sentProgram));
        if (answer.Program == QLatin1String("DIR")) {
            EXPECT_TRUE(answer.Text.contains(c.text)) << answer.Text.toStdString() << "\nlacks\n"
                                                      << c.text.toStdString();
            EXPECT_FALSE(answer.Text.contains("Sub1")) << "the reserved directory is never offered";
        } else {
            EXPECT_EQ(answer.Text, c.text);
        }
        EXPECT_EQ(answer.Result, QLatin1String(c.result));
    }
}

TEST(DncService, EveryLineFilesAndAnswersAtOnceAndNothingCrosses) {
    constexpr int Lines = 8;
    constexpr int Rounds = 25;
    ScriptedService s;
    const QStringList dirs = ServeMachines(s.fx, Lines);
    s.fx.Load();
    s.Start();
    ASSERT_EQ(s.service->Lines().size(), size_t(Lines));
    std::map<int, QByteArray> expectedSent;
    for (int round = 1; round <= Rounds; ++round) {
        // Every control sends a program with headers, then asks for the one it sent before.
        for (int port = 1; port <= Lines; ++port) {
            const QString dir = dirs.at(port - 1);
            const QByteArray program = "\x17" + dir.toLatin1() + "\r\n\x18Parts\r\n\x19P" +
                                       QByteArray::number(round) + "\r\n  G01 X" +
                                       QByteArray::number(port * 100 + round) + "  \r\n\r\nM30\r\n";
            s.lines.at(port)->Feed(program.left(7));
            s.lines.at(port)->Feed(program.mid(7) + "%");
        }
        for (int port = 1; port <= Lines; ++port)
            s.lines.at(port)->Feed("(PRG=P" + QByteArray::number(round) + ")\r\n%");
        // All the answers wait for their start, and go out together.
        for (int port = 1; port <= Lines; ++port)
            s.lines.at(port)->Feed("\x11");
        ASSERT_TRUE(RunEventsUntil([&] { return AllIdle(*s.service); }));
    }
    for (int port = 1; port <= Lines; ++port) {
        SCOPED_TRACE(port);
        const QString dir = dirs.at(port - 1);
        const DncLineSetup& setup = s.service->Lines().at(port)->Setup();
        QByteArray expected;
        for (int round = 1; round <= Rounds; ++round) {
            const QString filed = QStringLiteral("C:\\Jobs\\%1\\Parts\\P%2.prg").arg(dir).arg(round);
            ASSERT_EQ(Contents(s.fx, filed),
                      "G01 X" + QByteArray::number(port * 100 + round) + "\r\nM30\r\n");
            expected += EngineStream(s.fx, setup, "Parts", QStringLiteral("P%1").arg(round), filed);
        }
        EXPECT_EQ(s.lines.at(port)->Sent(), expected);
    }
    const QStringList log = LastTransferLogLines(s.fx.session(), 1000);
    EXPECT_EQ(log.filter("received").size(), Lines * Rounds);
    EXPECT_EQ(log.filter("request P").filter("sent on request").size(), Lines * Rounds);
    EXPECT_EQ(s.fx.ReadLines("C:\\Kestrova\\Receive.lst").size(), Lines * Rounds);
}

TEST(DncService, SettingsThatCannotServeNameTheFileAndLine) {
    const struct {
        const char* what;
        QStringList cfg;
        const char* expected;
    } cases[] = {
        {"no file", {}, "File not found: \"C:\\Kestrova\\Dnc.cfg\""},
        {"no number",
         {"Machine : one", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 1: \"one\" is not a machine number"},
        {"unknown machine",
         {"Title : served", "Machine : 9", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 2: there is no machine 9"},
        {"twice",
         {"Machine : 1", "Machine : 1, Parts", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 2: machine 1 is served already (line 1)"},
        {"one port",
         {"Machine : 1", "Machine : 2", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 2: COM1 is served already for the machine of line 1"},
        {"bad directory",
         {"Machine : 1, ..\\x", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 1: \"..\\x\" is not a directory name"},
        {"form without a name",
         {"Machine : 1", "Request Form : 1, (PROGRAM)", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 2: \"(PROGRAM)\" is not a request form"},
        {"form of a machine not served",
         {"Request Form : 3, (P=*)", "Machine : 1", "******"},
         "C:\\Kestrova\\Dnc.cfg, line 1: machine 3 is not served"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ScriptedService s;
        s.fx.Load();
        if (!c.cfg.isEmpty())
            s.fx.WriteLines(DncCfg, c.cfg);
        const auto refused = Thrown<DncConfigError>([&] { s.Start(); });
        ASSERT_TRUE(refused) << "started";
        EXPECT_TRUE(refused->Text().startsWith(QLatin1String(c.expected))) << refused->Text().toStdString();
        EXPECT_TRUE(s.lines.empty()) << "no line is opened";
    }
}

TEST(DncService, AStopKeepsWhatIsOnItsWayAndAReloadKeepsTheLinesThatDidNotChange) {
    ScriptedService s;
    ServeMachines(s.fx, 3);
    s.fx.Load();
    s.Start();
    ScriptedSerialLine* first = s.lines.at(1);
    ScriptedSerialLine* third = s.lines.at(3);
    s.lines.at(1)->Feed("\x19Half\r\nG01 X1\r\n");
    s.lines.at(3)->Feed("G01 X3\r\n");

    // COM2 is moved to COM4; COM1 and COM3 keep their lines and what they are receiving.
    SetValues(s.fx, CmsOf("RAINER"), {{"Port", "4"}});
    s.service->Reload();
    EXPECT_EQ(s.service->Lines().count(2), 0u);
    ASSERT_EQ(s.service->Lines().count(4), 1u);
    EXPECT_EQ(s.lines.at(1), first);
    EXPECT_EQ(s.lines.at(3), third);
    s.lines.at(3)->Feed("M30\r\n%");
    EXPECT_EQ(Contents(s.fx, "C:\\Jobs\\LASER\\Kestrova\\New Program 1.prg"), "G01 X3\r\nM30\r\n");

    // A reload that cannot serve leaves everything as it was.
    s.fx.WriteLines(DncCfg, {"Machine : 7", "******"});
    EXPECT_THROW(s.service->Reload(), DncConfigError);
    EXPECT_EQ(s.service->Lines().size(), 3u);

    s.service->Stop();
    EXPECT_EQ(Contents(s.fx, "C:\\Kestrova\\Unfiled 1.prg"), "\x19Half\r\nG01 X1\r\n");
    EXPECT_TRUE(s.service->Lines().empty()) << "every line is let go, and its port with it";
    EXPECT_TRUE(LastTransferLogLines(s.fx.session(), 10).last().contains("The DNC service stopped"));
    EXPECT_FALSE(s.fx.OnDisk("C:\\Kestrova\\Dnc.state"));
}

// A machine whose control asks in its own words: its form is the one answered, the default one is
// filed as a program of that machine (in its first data directory, as "Dnc.cfg" names none), and
// the other machines keep the default. Each control sends its start in the same chunk as its
// request: the start is the answer's.
TEST(DncService, EachMachineIsAskedInTheFormItsSettingsGive) {
    ScriptedService s;
    ServeMachines(s.fx, 3);
    s.fx.WriteLines(DncCfg, {LabelledLine("Request Form", "1, (program *)"), LabelledLine("Machine", "1"),
                             LabelledLine("Machine", "3"), "******"});
    s.fx.Load();
    s.Start();
    s.lines.at(1)->Feed("(PROGRAM Parts\\Cover)\r\n%\x11");
    s.lines.at(3)->Feed("(PRG=Plate)\r\n%\x11");
    ASSERT_TRUE(RunEventsUntil([&] { return AllIdle(*s.service); }));
    EXPECT_EQ(s.lines.at(1)->Sent(), EngineStream(s.fx, s.service->Lines().at(1)->Setup(), "Parts", "Cover",
                                                  "C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"));
    EXPECT_EQ(s.lines.at(3)->Sent(), EngineStream(s.fx, s.service->Lines().at(3)->Setup(), "Kestrova",
                                                  "Plate", "C:\\Jobs\\LASER\\Kestrova\\Plate.prg"));
    s.lines.at(1)->Feed("(PRG=Cover)\r\n%");
    EXPECT_EQ(Contents(s.fx, "C:\\Jobs\\PUNCH1\\Archive\\New Program 1.prg"), "(PRG=Cover)\r\n");
}

// The main window beside a running service: it leaves the port the service holds, its list
// follows what the service files, and it listens itself again once the service has gone.
TEST(DncService, TheWindowLeavesTheServedPortAndFollowsTheServicesList) {
    ScriptedBackground s;
    InstallationFixture& fx = s.fx;
    const QString state = QStringLiteral("C:\\Kestrova\\Dnc.state");
    fx.WriteLines(state, {QStringLiteral("Process : %1").arg(QCoreApplication::applicationPid()),
                          "COM2\tPUNCH1\tlistening", "******"});
    s.Start();
    EXPECT_EQ(s.receive->LineState(), BackgroundLineState::Served);
    EXPECT_EQ(s.receive->LineStateText(), "COM2 served by the DNC service");
    EXPECT_EQ(s.line->Opens(), 0);

    fx.WriteLines("C:\\Kestrova\\Receive.lst", {"Filed By The Service in Parts for Trumpf Punch 5000"});
    ASSERT_TRUE(RunEventsUntil([&] { return s.receive->ReceiveList().entries.size() == 1; }));

    // A state file left by a service that is gone holds nothing.
    fx.WriteLines(state, {"Process : 999999999", "COM2\tPUNCH1\tlistening", "******"});
    ASSERT_TRUE(RunEventsUntil([&] { return s.line->PortOpen(); }));
    EXPECT_EQ(s.receive->LineState(), BackgroundLineState::Listening);
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());
}

// A program the service receives over a stored one of its name keeps the stored text in the
// history, and the log and the list count the changed lines, as the background receive of the
// main window does.
TEST(DncService, AProgramReceivedOverAStoredOneKeepsItsHistory) {
    ScriptedService s;
    ServeMachines(s.fx, 1);
    s.fx.Load();
    s.Start();
    const QByteArray header = "\x17PUNCH1\r\n\x18Parts\r\n\x19P7\r\n";
    for (const QByteArray text : {"G01 X1\r\nM30\r\n", "G01 X2\r\nM30\r\n", "G01 X2\r\nM30\r\n"}) {
        s.lines.at(1)->Feed(header + text + "%");
        ASSERT_TRUE(RunEventsUntil([&] { return AllIdle(*s.service); }));
    }
    const QString filed = Parts + "P7.prg";
    EXPECT_EQ(Contents(s.fx, filed), "G01 X2\r\nM30\r\n");
    const QStringList list = s.fx.ReadLines("C:\\Kestrova\\Receive.lst");
    ASSERT_EQ(list.size(), 3);
    EXPECT_FALSE(list[0].contains("(")) << list[0].toStdString();
    EXPECT_TRUE(list[1].endsWith(" (replaced, 1 line changed)")) << list[1].toStdString();
    EXPECT_TRUE(list[2].endsWith(" (unchanged)")) << list[2].toStdString();
    const QStringList log = LastTransferLogLines(s.fx.session(), 3);
    ASSERT_EQ(log.size(), 3);
    EXPECT_TRUE(log[1].endsWith("received (replaced, 1 line changed)")) << log[1].toStdString();
    EXPECT_TRUE(log[2].endsWith("received (unchanged)")) << log[2].toStdString();
    const ProgramHistory history(s.fx.Files(), s.fx.Settings().SystemPath);
    const QList<HistoryVersion> versions = history.Versions(filed);
    ASSERT_EQ(versions.size(), 2);
    EXPECT_EQ(versions[0].operation, "received on COM1");
    EXPECT_EQ(history.Bytes(versions[1]), "G01 X1\r\nM30\r\n");
    EXPECT_TRUE(s.fx.Messages().Texts().isEmpty());
}
