#include "comms/CommSettings.h"

#include "InstallationFixture.h"
#include "Thrown.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

QString Chars(std::initializer_list<int> codes) {
    QString s;
    for (int c : codes)
        s += QChar(char16_t(c));
    return s;
}

QList<QChar> List(std::initializer_list<int> codes) {
    QList<QChar> list;
    for (int c : codes)
        list << QChar(char16_t(c));
    return list;
}

// A settings file with the given values for lines 1..n, each labelled as the suite writes them.
QStringList Labelled(const QStringList& values) {
    QStringList lines;
    for (qsizetype i = 0; i < values.size(); ++i)
        lines << LabelledLine(QStringLiteral("Line %1").arg(i + 1), values.at(i));
    return lines;
}

const QStringList SixteenLines = {"Fanuc",     "2", "4800",  "O",         "8",    "1",    "RTS/CTS xon DTR",
                                  "EVENT DSR", "%", "3,0,1", "1,13,1,10", "1,37", "2,26", "127",
                                  "0,10",      "-5"};

} // namespace

TEST(CommParsers, KeywordsAndNumbersReadAsTheSettingsFilesMeanThem) {
    // Handshake keywords anywhere and in any case; DSR means nothing.
    const std::pair<const char*, int> handshakes[] = {
        {"xon/xoff", 1}, {"XOFF only", 1}, {"RTS/CTS XON", 3}, {"cts", 2}, {"DTR", 0}, {"DSR", 0}, {"", 0}};
    for (const auto& [text, code] : handshakes)
        EXPECT_EQ(HandshakeCode(text), code) << text;
    for (const auto& [text, dtr] : {std::pair{"dtr", true}, {"XON DTR", true}, {"DSR", false}})
        EXPECT_EQ(HandshakeWantsDtr(text), dtr) << text;

    // The first test of the start mode that holds decides.
    const std::pair<const char*, StartMode> modes[] = {{"IMMEDIATE AUTO", StartMode::Auto},
                                                       {"force", StartMode::Immediate},
                                                       {"Immediate", StartMode::Immediate},
                                                       {"EVENT DSR", StartMode::Event},
                                                       {"EVENT", StartMode::Event},
                                                       {"DSR CTS", StartMode::Dsr},
                                                       {"cts", StartMode::Cts},
                                                       {"any character", StartMode::Any},
                                                       {"FORCE ANY", StartMode::Immediate},
                                                       {"", StartMode::Manual},
                                                       {"operator", StartMode::Manual}};
    for (const auto& [text, mode] : modes)
        EXPECT_EQ(ParseStartMode(text), mode) << text;

    // Numbers round, halves to the even neighbour; beyond 32 bits they overflow.
    const std::pair<const char*, int> numbers[] = {{"12.6 ms", 13}, {"2.5", 2}, {"3.5", 4}, {"abc", 0}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(RoundedNumber(text), number) << text;
    EXPECT_THROW((void)RoundedNumber("1e12"), OverflowError);
}

TEST(CommParsers, CodesSequencesAndListsUpToTheirLimits) {
    // A code on each side of the digit boundaries, as a list, a start character and a pair.
    for (const char* code : {"0", "9", "10", "99", "100", "255"}) {
        const QChar expected(char16_t(QByteArray(code).toInt()));
        EXPECT_EQ(ParseCharacterList(code), QList<QChar>{expected}) << code;
        EXPECT_EQ(ParseStartCharacter(code), QString(expected)) << code;
        EXPECT_EQ(ParseSequence(QStringLiteral("1,%1").arg(code)), QString(expected)) << code;
    }
    // A start character is a code when it starts with a digit, else its first character.
    const std::pair<const char*, QString> starts[] = {{"17", Chars({17})}, {"%", "%"}, {"  ", ""}, {"", ""},
                                                      {"1A", Chars({1})},  {"AB", "A"}};
    for (const auto& [text, start] : starts)
        EXPECT_EQ(ParseStartCharacter(text), start) << text;
    // Count,code pairs; an unpaired number is ignored, text that is not a number counts as 0.
    const std::pair<const char*, QString> sequences[] = {
        {"1,13,1,10", Chars({13, 10})},
        {"3,0,1", Chars({0, 0, 0})},
        {"2", ""},
        {"", ""},
        {" 2 , 65 , 1 , 66 ", "AAB"},
        {"x,65,2,y", Chars({0, 0})},
        {"-1,65,1,66", "B"},
        {"9,1,10,2", QString(9, QChar(1)) + QString(10, QChar(2))},
    };
    for (const auto& [text, sequence] : sequences)
        EXPECT_EQ(ParseSequence(text), sequence) << text;
    const std::pair<const char*, QList<QChar>> lists[] = {{"0,127", List({0, 127})},
                                                          {"", {}},
                                                          {"32, 9", List({32, 9})},
                                                          {"9,10,99,100", List({9, 10, 99, 100})}};
    for (const auto& [text, list] : lists)
        EXPECT_EQ(ParseCharacterList(text), list) << text;
    // A sequence may hold up to 65535 characters.
    EXPECT_EQ(ParseSequence("65535,0").size(), 65535);
    EXPECT_EQ(ParseSequence("65534,0,1,13").size(), 65535);
    EXPECT_THROW((void)ParseSequence("65536,0"), OverflowError);
    EXPECT_THROW((void)ParseSequence("65535,0,1,13"), OverflowError);
}

class CommSettingsFiles : public ::testing::Test {
protected:
    InstallationFixture fx;
    const QString machineFile = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms");
    const QString cms = QStringLiteral("C:\\Kestrova\\Kestrova.cms");
};

TEST_F(CommSettingsFiles, TheReadersTakeEveryLineAndEachPauseTheFileHolds) {
    fx.WriteLines(machineFile, Labelled(SixteenLines + QStringList{"250", "100.4", "7", "70000"}));
    const SendSettings s = ReadSendSettings(fx.Files(), machineFile);
    EXPECT_EQ(s.Port, 2);
    EXPECT_EQ(s.Settings, "4800,O,8,1");
    EXPECT_EQ(s.Handshaking, 3);
    EXPECT_TRUE(s.Dtr);
    EXPECT_EQ(s.Start, StartMode::Event);
    EXPECT_EQ(s.StartCharacter, "%");
    EXPECT_EQ(s.Leader, Chars({0, 0, 0}));
    EXPECT_EQ(s.LineEnd, Chars({13, 10}));
    EXPECT_EQ(s.Trailer, "%");
    EXPECT_EQ(s.EndSequence, Chars({26, 26}));
    EXPECT_EQ(s.SendFilter, QList<QChar>{QChar(127)});
    EXPECT_EQ(s.ReceiveFilter, List({0, 10}));
    const ReceiveSettings r = ReadReceiveSettings(fx.Files(), machineFile);
    EXPECT_EQ(std::tuple(r.Port, r.Handshaking, r.Trailer, r.ReceiveFilter),
              std::tuple(2, 3, "%", List({0, 10})));

    const struct {
        QStringList pauses; // lines 17 to 20, as far as the file goes
        QList<int> read;
    } cases[] = {
        {{}, {0, 0, 0, 0}},
        {{"10", "20"}, {10, 20, 0, 0}},
        {{"250", "100.4", "7", "70000"}, {250, 100, 7, 70000}}, // clamped by the pause, not the reader
    };
    for (const auto& c : cases) {
        fx.WriteLines(machineFile, Labelled(SixteenLines + c.pauses));
        const SendSettings p = ReadSendSettings(fx.Files(), machineFile);
        EXPECT_EQ((QList<int>{p.PauseAfterStart, p.PauseAfterLeader, p.PauseAfterLine, p.PauseAfterTrailer}),
                  c.read)
            << c.pauses.join(',').toStdString();
    }

    // A short file is past its end, a missing one not found, for both readers.
    fx.WriteLines(machineFile, Labelled(SixteenLines.mid(0, 15)));
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), InputPastEndError);
    EXPECT_THROW((void)ReadReceiveSettings(fx.Files(), machineFile), InputPastEndError);
    fx.Remove(machineFile);
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), FileNotFoundError);
    EXPECT_THROW((void)ReadReceiveSettings(fx.Files(), machineFile), FileNotFoundError);
}

TEST_F(CommSettingsFiles, NumbersOutOfRangeClampOrAreRefusedNamingTheLine) {
    // The receive time-out clamps whatever its size; a character code outside 0..255 would turn
    // silently into another character, so it is refused, naming the file and the line.
    struct Case {
        int line; // 1-based
        QString value;
        int timeOut; // expected, when accepted
        bool refused;
    };
    const Case cases[] = {
        {16, "-5", 0, false},       {16, "100000", 65535, false}, {16, "65535", 65535, false},
        {16, "1e12", 65535, false}, {16, "-1e12", 0, false},      {16, "4294967296", 65535, false},
        {9, "273", 0, true},        {10, "3,256", 0, true},       {12, "1,-1", 0, true},
        {14, "127,300", 0, true},   {15, "0,255", 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value.toStdString());
        QStringList lines = SixteenLines;
        lines[c.line - 1] = c.value;
        fx.WriteLines(machineFile, Labelled(lines));
        for (const bool send : {false, true}) {
            try {
                if (send) {
                    (void)ReadSendSettings(fx.Files(), machineFile);
                } else {
                    EXPECT_EQ(ReadReceiveSettings(fx.Files(), machineFile).ReceiveTimeOut, c.timeOut);
                }
                EXPECT_FALSE(c.refused) << "taken";
            } catch (const SystemError& e) {
                EXPECT_TRUE(c.refused) << e.text().toStdString();
                EXPECT_EQ(e.subject(), machineFile);
                EXPECT_TRUE(e.text().contains(QStringLiteral("line %1").arg(c.line)))
                    << e.text().toStdString();
            }
        }
    }
    QStringList lines = SixteenLines;
    lines[1] = "40000"; // a port beyond sixteen bits
    fx.WriteLines(machineFile, Labelled(lines));
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), OverflowError);

    fx.WriteLines(cms,
                  {"Title", "2", "9600", "E", "7", "2", "XON", "", "", "", "", "1,37", "", "", "0,999", "0"});
    const auto refused = kestrova::testing::Thrown<SystemError>(
        [&] { (void)ReadBackgroundSettings(fx.Files(), "C:\\Kestrova\\"); });
    ASSERT_TRUE(refused) << "code 999 taken";
    EXPECT_EQ(refused->subject(), cms);
    EXPECT_TRUE(refused->text().contains("line 15")) << refused->text().toStdString();
}

TEST_F(CommSettingsFiles, TheBackgroundReaderCarriesTheLastLineReadOverMissingLines) {
    const auto read = [&] { return ReadBackgroundSettings(fx.Files(), QStringLiteral("C:\\Kestrova\\")); };
    EXPECT_EQ(read().Port, 0); // the installation's own file says 0
    EXPECT_FALSE(read().Enabled);
    const struct {
        const char* what;
        QStringList lines;
        QString settings;
        int handshaking;
        QString trailer;
        QString endSequence;
        QList<QChar> filter;
    } cases[] = {
        {"all lines", SixteenLines + QStringList{"5"}, "4800,O,8,1", 3, "%", Chars({26, 26}), List({0, 10})},
        // The settings string is the port number four times; the trailer "2" is unpaired, so empty.
        {"two lines", {"Background", "2"}, "2,2,2,2", 0, "", "", List({2})},
        {"twelve lines", SixteenLines.mid(0, 12), "4800,O,8,1", 3, "%", "%", List({1, 37})},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.WriteLines(cms, Labelled(c.lines));
        const BackgroundSettings b = read();
        EXPECT_EQ(b.Port, 2);
        EXPECT_TRUE(b.Enabled);
        EXPECT_EQ(std::tuple(b.Settings, b.Handshaking, b.Trailer, b.EndSequence, b.ReceiveFilter),
                  std::tuple(c.settings, c.handshaking, c.trailer, c.endSequence, c.filter));
    }

    // A port that is not a number, an empty file or none: off.
    QStringList comPort = SixteenLines;
    comPort[1] = "COM2";
    for (const QStringList& lines : {Labelled(comPort), QStringList{}}) {
        fx.WriteLines(cms, lines);
        EXPECT_FALSE(read().Enabled) << lines.join('|').toStdString();
    }
    fx.Remove(cms);
    const BackgroundSettings b = read();
    EXPECT_EQ(b.Port, 0);
    EXPECT_FALSE(b.Enabled);
    EXPECT_TRUE(b.Trailer.isEmpty());
}
