// The communication settings and transfers at the very limits their rules state: the values at
// which a rule starts or stops holding, where a fault that moves a limit by one shows.
#include "EventScript.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "comms/CommParsers.h"
#include "comms/GeneralReceive.h"
#include "comms/PortSetup.h"
#include "comms/ReceiveFormLogic.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

TEST(CommLimits, CharacterCodesOnEachSideOfTheDigitBoundaries) {
    const struct {
        const char* value;
        QList<int> codes; // what the list, the start character and a pair of count 1 give
    } cases[] = {
        {"0", {0}}, {"9", {9}}, {"10", {10}}, {"99", {99}}, {"100", {100}}, {"255", {255}},
    };
    for (const auto& c : cases) {
        const QChar expected(char16_t(c.codes.first()));
        EXPECT_EQ(ParseCharacterList(c.value), QList<QChar>{expected}) << c.value;
        EXPECT_EQ(ParseStartCharacter(c.value), QString(expected)) << c.value;
        EXPECT_EQ(ParseSequence(QStringLiteral("1,%1").arg(c.value)), QString(expected)) << c.value;
    }
    EXPECT_EQ(ParseCharacterList("9,10,99,100"), (QList<QChar>{QChar(9), QChar(10), QChar(99), QChar(100)}));
    EXPECT_EQ(ParseSequence("9,1,10,2"), QString(9, QChar(1)) + QString(10, QChar(2)));
}

TEST(CommLimits, ASequenceMayHoldUpTo65535Characters) {
    EXPECT_EQ(ParseSequence("65535,0").size(), 65535);
    EXPECT_EQ(ParseSequence("65534,0,1,13").size(), 65535);
    EXPECT_THROW((void)ParseSequence("65536,0"), OverflowError);
    EXPECT_THROW((void)ParseSequence("65535,0,1,13"), OverflowError);
}

TEST(CommLimits, TheSmallestAndLargestFramingsAndPortsAreTaken) {
    const struct {
        int port;
        const char* settings;
        LineFraming framing;
    } taken[] = {
        {1, "1,N,5,1", {1, 'N', 5, 1}},
        {255, "921600,S,8,2", {921600, 'S', 8, 2}},
        {2, " 110 , m , 5 , 1.5 ", {110, 'M', 5, 3}},
        {3, "115200,o,8,1", {115200, 'O', 8, 1}},
    };
    for (const auto& t : taken) {
        ScriptedSerialLine line;
        PreparePort(line, PortSetupFor(TransferKind::Background, t.port, t.settings, 0));
        EXPECT_TRUE(line.PortOpen()) << t.settings;
        const std::optional<LineFraming> f = ParseFraming(t.settings);
        ASSERT_TRUE(f) << t.settings;
        EXPECT_EQ(std::tuple(f->baud, f->parity, f->dataBits, f->stopBits),
                  std::tuple(t.framing.baud, t.framing.parity, t.framing.dataBits, t.framing.stopBits));
    }
    const struct {
        int port;
        const char* settings;
    } refused[] = {{0, "9600,E,7,2"}, {256, "9600,E,7,2"}, {1, "0,N,8,1"},
                   {1, "9600,N,4,1"}, {1, "9600,N,9,1"},   {1, "9600,N,8,3"}};
    for (const auto& r : refused) {
        ScriptedSerialLine line;
        EXPECT_THROW(PreparePort(line, PortSetupFor(TransferKind::Background, r.port, r.settings, 0)),
                     DeviceUnavailableError)
            << r.port << " " << r.settings;
        EXPECT_FALSE(line.PortOpen());
    }
}

namespace {

// The background receive over a scripted line, on an installation whose "Kestrova.cms" names
// the given port and whose machine list holds the first `machines` machines of the fixture.
struct BackgroundInstallation {
    BackgroundInstallation(const QString& port, int machines) {
        TestApplication();
        QStringList cms = fx.ReadLines("C:\\Kestrova\\Kestrova.cms");
        cms[1] = LabelledLine("Port", port);
        fx.WriteLines("C:\\Kestrova\\Kestrova.cms", cms);
        const QStringList list = fx.ReadLines("C:\\Kestrova\\Machine.lst");
        fx.WriteLines("C:\\Kestrova\\Machine.lst", list.mid(0, machines) << EndMarker);
        fx.Load();
        auto owned = std::make_unique<ScriptedSerialLine>();
        line = owned.get();
        receive = std::make_unique<BackgroundReceive>(fx.session(), std::move(owned));
        receive->Start();
    }
    InstallationFixture fx;
    ScriptedSerialLine* line = nullptr;
    std::unique_ptr<BackgroundReceive> receive;
};

} // namespace

TEST(CommLimits, PortOneIsTheLowestThatListensInTheBackground) {
    BackgroundInstallation at("1", 3);
    EXPECT_TRUE(at.receive->Settings().Enabled);
    EXPECT_TRUE(at.line->PortOpen());
    EXPECT_EQ(at.line->Log().value(0), "CommPort=1");
}

TEST(CommLimits, TheReceiveListNamesTheMachineFromTwoMachinesOn) {
    const struct {
        int machines;
        QString entry;
    } cases[] = {{1, "P1 in Parts"}, {2, "P1 in Parts for Trumpf Punch 5000"}};
    for (const auto& c : cases) {
        BackgroundInstallation at("2", c.machines);
        EXPECT_EQ(at.fx.Settings().MachineCount, c.machines);
        at.line->Feed("\x17\r\n\x18\r\n\x19P1\r\nG1\r\n%");
        EXPECT_EQ(at.fx.ReadLines("C:\\Kestrova\\Receive.lst"), QStringList{c.entry});
    }
}

// A receive that ends by its time-out having kept nothing but filtered characters has received
// nothing: the program the operator agreed to overwrite stays as it was.
TEST(CommLimits, OnlyFilteredCharactersBeforeTheTimeOutIsNothingReceived) {
    TestApplication();
    InstallationFixture fx;
    QStringList cms = fx.ReadLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms");
    cms[15] = LabelledLine("Receive Time Out", "100"); // the filter is NUL and DEL
    fx.WriteLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms", cms);
    fx.Load();
    fx.Settings().ReceiveOperation = 2; // a program
    const QString cover = "C:\\Jobs\\PUNCH1\\Parts\\Cover.prg";
    const QByteArray before = fx.Read(cover);
    ScriptedSerialLine line;
    GeneralReceive receive{line};
    ReceiveFormLogic logic{fx.session(), receive};
    logic.Form_Load();
    QObject script;
    When(
        &script, [&] { return line.PortOpen() && receive.Display().LabelVisible; },
        [&] { line.Feed("\x7f\x7f\x7f"); });
    fx.Messages().Clear();
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(logic.ReceiveOk_Click("Cover"), ReceiveOkOutcome::Close);
    EXPECT_TRUE(receive.TimedOut());
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"\"Cover\" Already Exists !\n\nOverwrite It ?", "Nothing Received !"}));
    EXPECT_EQ(fx.Read(cover), before);
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\Commstmp.prg"));
}
