#include "comms/SendFormLogic.h"

#include "EventScript.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "Thrown.h"
#include "comms/ReceiveFormLogic.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");

// Over a whole installation: the fixture's machines start on an XON (AUTO, start character 17)
// with a 50-NUL leader, CR LF line ends and a "%" trailer.
class SendFormLogicTest : public ::testing::Test {
protected:
    SendFormLogicTest() {
        TestApplication();
        fx.Load();
        engine.SetEventSlice(std::chrono::microseconds(0));
    }
    // The control asks for every program the moment the send waits for it.
    void ControlAsksEachTime() {
        auto* ask = new QTimer(&script);
        QObject::connect(ask, &QTimer::timeout, [this] {
            if (engine.Phase() == SendPhase::Waiting && line.InBufferCount() == 0 && !engine.Started())
                line.Feed("\x11");
        });
        ask->start(0);
    }

    InstallationFixture fx;
    ScriptedSerialLine line;
    PauseTimer pause;
    SendEngine engine{line, pause};
    QObject script;
};

TEST_F(SendFormLogicTest, EachSelectedProgramGoesOutInTurn) {
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    EXPECT_EQ(logic.Machines().size(), 3);
    EXPECT_EQ(logic.MachineIndex(), 0);
    ListModel programs;
    logic.FillPrograms(programs);
    EXPECT_TRUE(programs.entries.contains("Cover"));
    ControlAsksEachTime();
    logic.SendOk_Click({"Bracket", "Cover"});
    const QByteArray leader(50, '\0');
    EXPECT_EQ(line.Sent(), leader + "%\r\nN10 G90\r\n%\r\n%" + leader + "%\r\nG00 X0 Y0\r\n%\r\n%");
    EXPECT_EQ(line.Opens(), 4);
    EXPECT_TRUE(fx.Messages().Log().isEmpty());

    // Another machine: its own settings, directories and header.
    logic.MachineChosen(2);
    EXPECT_EQ(fx.Settings().CommsMachineDir, "LASER");
    EXPECT_EQ(fx.Settings().CommsDirectory, "Kestrova");
    logic.SendOk_Click({"Plate"});
    EXPECT_TRUE(line.Sent().endsWith("\x17LASER\r\n\x18Kestrova\r\n\x19Plate\r\n%\r\n%\r\n%"));
    EXPECT_EQ(fx.Settings().MachineDir, "PUNCH1"); // the current machine stays as it was
}

TEST_F(SendFormLogicTest, ABreakInTheTrailerIsToldAndEndsTheRun) {
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    ControlAsksEachTime();
    When(
        &script, [&] { return engine.Phase() == SendPhase::Trailer; }, [&] { line.Raise(CommEvent::Break); });
    logic.SendOk_Click({"Bracket", "Cover"});
    EXPECT_EQ(fx.Messages().Texts(),
              QStringList{"\"Bracket\" Was Not Sent Completely: A Break Arrived On \"COM1\" !"});
    EXPECT_EQ(line.Opens(), 2); // Cover is not sent
    EXPECT_FALSE(line.Sent().endsWith('%'));
}

TEST_F(SendFormLogicTest, RefusalsAndFailuresNameWhatFailed) {
    SendFormLogic logic(fx.session(), engine, SendKind::Program);
    logic.Form_Load();
    logic.SendOk_Click({});
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Files Selected !"}));

    // A settings file that is missing or short: the error names it, and the machine stays.
    fx.Remove(Data + "RAINER.cms");
    const auto missing = Thrown<FileNotFoundError>([&] { logic.MachineChosen(1); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->subject(), Data + "RAINER.cms");
    fx.WriteLines(Data + "LASER.cms",
                  {"Kestrova Terminal", "1", "9600", "E", "7", "2", "XON", "AUTO", "17", ""});
    EXPECT_THROW(logic.MachineChosen(2), InputPastEndError);
    EXPECT_EQ(fx.Settings().CommsMachineDir, "PUNCH1");

    // Producers and executives: said plainly, nothing sent.
    fx.Messages().Clear();
    SendFormLogic executives(fx.session(), engine, SendKind::Executive);
    executives.Form_Load();
    executives.SendOk_Click({"Bracket"});
    fx.WriteLines(Data + "PUNCH1.cms",
                  {LabelledLine("Control Type", "Westinghouse Producer"), "1", "9600", "E", "7", "2", "XON",
                   "AUTO", "17", "", "1,13,1,10", "1,37", "", "", "", "0"});
    SendFormLogic producer(fx.session(), engine, SendKind::Program);
    producer.Form_Load();
    EXPECT_FALSE(producer.Supported());
    producer.SendOk_Click({"Bracket"});
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{DialogueNotSupported, DialogueNotSupported}));
    EXPECT_EQ(line.Opens(), 0);
}

} // namespace
