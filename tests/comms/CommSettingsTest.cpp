#include "comms/CommSettings.h"

#include "InstallationFixture.h"
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

TEST(CommParsers, HandshakeKeywordsAnywhereAndInAnyCase) {
    EXPECT_EQ(HandshakeCode("xon/xoff"), 1);
    EXPECT_EQ(HandshakeCode("XOFF only"), 1);
    EXPECT_EQ(HandshakeCode("RTS/CTS XON"), 3);
    EXPECT_EQ(HandshakeCode("cts"), 2);
    EXPECT_EQ(HandshakeCode("DTR"), 0);
    EXPECT_EQ(HandshakeCode("DSR"), 0);
    EXPECT_EQ(HandshakeCode(""), 0);
    EXPECT_TRUE(HandshakeWantsDtr("dtr"));
    EXPECT_TRUE(HandshakeWantsDtr("XON DTR"));
    EXPECT_FALSE(HandshakeWantsDtr("DSR"));
}

TEST(CommParsers, StartModeFirstTestThatHoldsDecides) {
    EXPECT_EQ(ParseStartMode("IMMEDIATE AUTO"), StartMode::Auto);
    EXPECT_EQ(ParseStartMode("force"), StartMode::Immediate);
    EXPECT_EQ(ParseStartMode("Immediate"), StartMode::Immediate);
    EXPECT_EQ(ParseStartMode("EVENT DSR"), StartMode::Event);
    EXPECT_EQ(ParseStartMode("EVENT"), StartMode::Event);
    EXPECT_EQ(ParseStartMode("DSR CTS"), StartMode::Dsr);
    EXPECT_EQ(ParseStartMode("cts"), StartMode::Cts);
    EXPECT_EQ(ParseStartMode("any character"), StartMode::Any);
    EXPECT_EQ(ParseStartMode("FORCE ANY"), StartMode::Immediate);
    EXPECT_EQ(ParseStartMode(""), StartMode::Manual);
    EXPECT_EQ(ParseStartMode("operator"), StartMode::Manual);
}

TEST(CommParsers, StartCharacterIsACodeWhenItStartsWithADigit) {
    EXPECT_EQ(ParseStartCharacter("17"), Chars({17}));
    EXPECT_EQ(ParseStartCharacter("%"), "%");
    EXPECT_EQ(ParseStartCharacter("  "), "");
    EXPECT_EQ(ParseStartCharacter(""), "");
    EXPECT_EQ(ParseStartCharacter("1A"), Chars({1}));
    EXPECT_EQ(ParseStartCharacter("0"), Chars({0}));
    EXPECT_EQ(ParseStartCharacter("AB"), "A");
}

TEST(CommParsers, SequencesArePairsAndAnUnpairedNumberIsIgnored) {
    EXPECT_EQ(ParseSequence("1,13,1,10"), Chars({13, 10}));
    EXPECT_EQ(ParseSequence("3,0,1"), Chars({0, 0, 0}));
    EXPECT_EQ(ParseSequence("2"), "");
    EXPECT_EQ(ParseSequence(""), "");
    EXPECT_EQ(ParseSequence("50,0").size(), 50);
    EXPECT_EQ(ParseSequence("1,37"), "%");
    EXPECT_EQ(ParseSequence(" 2 , 65 , 1 , 66 "), "AAB");
    // Text that is not a number counts as 0: a count of none, or the NUL character.
    EXPECT_EQ(ParseSequence("x,65,2,y"), Chars({0, 0}));
    EXPECT_EQ(ParseSequence("-1,65,1,66"), "B");
}

TEST(CommParsers, ListsTakeEveryCodeIncludingASingleOne) {
    EXPECT_EQ(ParseCharacterList("13"), QList<QChar>{QChar(13)});
    EXPECT_EQ(ParseCharacterList("0,127"), (QList<QChar>{QChar(0), QChar(127)}));
    EXPECT_TRUE(ParseCharacterList("").isEmpty());
    EXPECT_EQ(ParseCharacterList("32, 9"), (QList<QChar>{QChar(32), QChar(9)}));
}

TEST(CommParsers, NumbersRoundAndOverflowIsAnError) {
    EXPECT_EQ(RoundedNumber("12.6 ms"), 13);
    EXPECT_EQ(RoundedNumber("2.5"), 2); // halves go to the even neighbour
    EXPECT_EQ(RoundedNumber("3.5"), 4);
    EXPECT_EQ(RoundedNumber("abc"), 0);
    EXPECT_THROW((void)RoundedNumber("1e12"), OverflowError);
}

class CommSettingsFiles : public ::testing::Test {
protected:
    InstallationFixture fx;
    const QString machineFile = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms");
};

TEST_F(CommSettingsFiles, SendReaderTakesAllTwentyLines) {
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
    EXPECT_EQ(s.ReceiveFilter, (QList<QChar>{QChar(0), QChar(10)}));
    EXPECT_EQ(s.PauseAfterStart, 250);
    EXPECT_EQ(s.PauseAfterLeader, 100);
    EXPECT_EQ(s.PauseAfterLine, 7);
    EXPECT_EQ(s.PauseAfterTrailer, 70000); // clamped by the pause itself, not by the reader
}

TEST_F(CommSettingsFiles, SendReaderWithSixteenOrEighteenLines) {
    fx.WriteLines(machineFile, Labelled(SixteenLines));
    SendSettings s = ReadSendSettings(fx.Files(), machineFile);
    EXPECT_EQ(s.PauseAfterStart, 0);
    EXPECT_EQ(s.PauseAfterLeader, 0);
    EXPECT_EQ(s.PauseAfterLine, 0);
    EXPECT_EQ(s.PauseAfterTrailer, 0);

    fx.WriteLines(machineFile, Labelled(SixteenLines + QStringList{"10", "20"}));
    s = ReadSendSettings(fx.Files(), machineFile);
    EXPECT_EQ(s.PauseAfterStart, 10);
    EXPECT_EQ(s.PauseAfterLeader, 20);
    EXPECT_EQ(s.PauseAfterLine, 0);
}

TEST_F(CommSettingsFiles, MachineReadersFailOnAShortOrMissingFile) {
    fx.WriteLines(machineFile, Labelled(SixteenLines.mid(0, 15)));
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), InputPastEndError);
    EXPECT_THROW((void)ReadReceiveSettings(fx.Files(), machineFile), InputPastEndError);
    fx.Remove(machineFile);
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), FileNotFoundError);
    EXPECT_THROW((void)ReadReceiveSettings(fx.Files(), machineFile), FileNotFoundError);
}

TEST_F(CommSettingsFiles, ReceiveReaderClampsTheTimeOut) {
    QStringList lines = SixteenLines;
    fx.WriteLines(machineFile, Labelled(lines));
    ReceiveSettings r = ReadReceiveSettings(fx.Files(), machineFile);
    EXPECT_EQ(r.ReceiveTimeOut, 0); // "-5"
    EXPECT_EQ(r.Port, 2);
    EXPECT_EQ(r.Handshaking, 3);
    EXPECT_EQ(r.Trailer, "%");
    EXPECT_EQ(r.ReceiveFilter, (QList<QChar>{QChar(0), QChar(10)}));
    lines[15] = "100000";
    fx.WriteLines(machineFile, Labelled(lines));
    EXPECT_EQ(ReadReceiveSettings(fx.Files(), machineFile).ReceiveTimeOut, 65535);
    lines[15] = "65535";
    fx.WriteLines(machineFile, Labelled(lines));
    EXPECT_EQ(ReadReceiveSettings(fx.Files(), machineFile).ReceiveTimeOut, 65535);
}

TEST_F(CommSettingsFiles, PortBeyondSixteenBitsIsOverflow) {
    QStringList lines = SixteenLines;
    lines[1] = "40000";
    fx.WriteLines(machineFile, Labelled(lines));
    EXPECT_THROW((void)ReadSendSettings(fx.Files(), machineFile), OverflowError);
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
        {16, "1e12", 65535, false}, {16, "-1e12", 0, false}, {16, "4294967296", 65535, false},
        {9, "273", 0, true},        {10, "3,256", 0, true},  {12, "1,-1", 0, true},
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
    fx.WriteLines("C:\\Kestrova\\Kestrova.cms",
                  {"Title", "2", "9600", "E", "7", "2", "XON", "", "", "", "", "1,37", "", "", "0,999", "0"});
    try {
        (void)ReadBackgroundSettings(fx.Files(), QStringLiteral("C:\\Kestrova\\"));
        ADD_FAILURE() << "code 999 taken";
    } catch (const SystemError& e) {
        EXPECT_EQ(e.subject(), "C:\\Kestrova\\Kestrova.cms");
        EXPECT_TRUE(e.text().contains("line 15")) << e.text().toStdString();
    }
}

class BackgroundSettingsFile : public CommSettingsFiles {
protected:
    const QString cms = QStringLiteral("C:\\Kestrova\\Kestrova.cms");
    BackgroundSettings Read() { return ReadBackgroundSettings(fx.Files(), QStringLiteral("C:\\Kestrova\\")); }
};

TEST_F(BackgroundSettingsFile, FullFile) {
    fx.WriteLines(cms, Labelled(SixteenLines + QStringList{"5"}));
    const BackgroundSettings b = Read();
    EXPECT_EQ(b.Port, 2);
    EXPECT_TRUE(b.Enabled);
    EXPECT_EQ(b.Settings, "4800,O,8,1");
    EXPECT_EQ(b.Handshaking, 3);
    EXPECT_EQ(b.Trailer, "%");
    EXPECT_EQ(b.EndSequence, Chars({26, 26}));
    EXPECT_EQ(b.ReceiveFilter, (QList<QChar>{QChar(0), QChar(10)}));
}

TEST_F(BackgroundSettingsFile, MissingLinesCarryTheLastLineReadOver) {
    // Ends after line 2: the settings string is the port number four times, and the trailer
    // "2" is an unpaired number, so empty.
    fx.WriteLines(cms, Labelled({"Background", "2"}));
    BackgroundSettings b = Read();
    EXPECT_EQ(b.Port, 2);
    EXPECT_TRUE(b.Enabled);
    EXPECT_EQ(b.Settings, "2,2,2,2");
    EXPECT_EQ(b.Handshaking, 0);
    EXPECT_EQ(b.Trailer, "");
    EXPECT_EQ(b.ReceiveFilter, QList<QChar>{QChar(2)});

    // Ends after line 12: the end sequence and the receive filter are made of line 12's value.
    fx.WriteLines(cms, Labelled(SixteenLines.mid(0, 12)));
    b = Read();
    EXPECT_EQ(b.Trailer, "%");
    EXPECT_EQ(b.EndSequence, "%");
    EXPECT_EQ(b.ReceiveFilter, (QList<QChar>{QChar(1), QChar(37)}));
}

TEST_F(BackgroundSettingsFile, PortZeroMissingOrNonNumericLeavesItOff) {
    fx.Load();
    EXPECT_EQ(Read().Port, 0); // the installation's own file says 0
    EXPECT_FALSE(Read().Enabled);
    QStringList lines = SixteenLines;
    lines[1] = "COM2";
    fx.WriteLines(cms, Labelled(lines));
    EXPECT_FALSE(Read().Enabled);
    fx.WriteLines(cms, {});
    EXPECT_FALSE(Read().Enabled);
    fx.Remove(cms);
    const BackgroundSettings b = Read();
    EXPECT_EQ(b.Port, 0);
    EXPECT_FALSE(b.Enabled);
    EXPECT_TRUE(b.Trailer.isEmpty());
}
