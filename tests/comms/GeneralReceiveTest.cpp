#include "comms/GeneralReceive.h"

#include "EventScript.h"
#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/ReceiveFormLogic.h"
#include "filestore/LastFile.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Temp = QStringLiteral("C:\\Kestrova\\Commstmp.prg");

class GeneralReceiveTest : public ::testing::Test {
protected:
    GeneralReceiveTest() {
        TestApplication();
        settings.Port = 2;
        settings.Settings = QStringLiteral("9600,E,7,2");
        settings.Handshaking = 1;
        settings.StartCharacter = QStringLiteral("\x11");
        settings.Trailer = QStringLiteral("%");
        settings.ReceiveFilter = {QChar(0x7F)};
    }
    // Feeds the chunks, one per turn of the event loop, once the receive waits for data.
    void FeedWhenWaiting(const QList<QByteArray>& chunks) {
        When(
            &script, [&] { return line.PortOpen() && receive.Display().LabelVisible; },
            [this, chunks] {
                for (const QByteArray& chunk : chunks)
                    QTimer::singleShot(0, &script, [this, chunk] { line.Feed(chunk); });
            });
    }
    QByteArray Receive(const QList<QByteArray>& chunks) {
        receive.SetSettings(settings);
        FeedWhenWaiting(chunks);
        receive.Run(fx.Files(), QStringLiteral("P1"), Temp);
        return fx.OnDisk(Temp) ? fx.Read(Temp) : QByteArray("<none>");
    }

    InstallationFixture fx;
    ReceiveSettings settings;
    ScriptedSerialLine line;
    GeneralReceive receive{line};
    QObject script;
};

TEST_F(GeneralReceiveTest, LineEndsBecomeCrLfAndTheFilterDrops) {
    struct Case {
        QByteArray in;
        QByteArray stored;
        QList<QChar> filter;
    };
    const QList<Case> cases = {
        {"G1\nG2\n%", "G1\r\nG2\r\n%", {}},
        {"G1\r\n\nG2\r%", "G1\r\n\r\nG2\r\n%", {}},
        {"G1\r\n\rG2\n\r\n%", "G1\r\n\r\nG2\r\n\r\n%", {}},
        {"G1\n\rG2\x7F%", "G1\r\nG2%", {QChar(0x7F)}},
        {"G1\r\nG2\nG3\r\r%", "G1G2\r\nG3%", {QChar(13)}}, // a filtered CR still swallows its LF
        {"G1 \x80\x8A\x9E\x9F%", "G1 \x80\x9E%", ParseCharacterList(QStringLiteral("138,159"))},
    };
    for (const Case& c : cases) {
        settings.ReceiveFilter = c.filter;
        EXPECT_EQ(Receive({c.in}), c.stored) << c.in.toStdString();
    }
    // The start character went out once per receive; the port was set for a general receive.
    EXPECT_EQ(line.Sent(), QByteArray(6, '\x11'));
    EXPECT_EQ(line.Log().mid(0, 12).join(' '),
              "CommPort=2 Settings=9600,E,7,2 Handshaking=1 DTREnable=1 RTSEnable=1 InBufferCount=0 "
              "OutBufferCount=0 RThreshold=0 SThreshold=0 InputLen=0 NullDiscard=1 PortOpen=1");
    EXPECT_FALSE(line.PortOpen());
}

TEST_F(GeneralReceiveTest, TheTrailerEndsTheProgramAndIsKept) {
    settings.Trailer = QStringLiteral("M30%");
    EXPECT_EQ(Receive({"G1\r\nM3", "0X\r\nM3", "0%G2\r\n"}), "G1\r\nM30X\r\nM30%");
    EXPECT_FALSE(receive.Aborted());
    EXPECT_EQ(receive.CharacterCount(), 12); // a CR LF counts as one
    EXPECT_EQ(receive.Display().Chars, "12");
    EXPECT_EQ(receive.Display().Label, "P1\n\nReceiving");
}

TEST_F(GeneralReceiveTest, SilenceAfterDataEndsTheReceiveButNotBeforeIt) {
    settings.Trailer.clear();
    settings.ReceiveTimeOut = 150;
    receive.SetSettings(settings);
    QString labelBeforeData;
    // No data for twice the time-out: still waiting. Then characters 60 ms apart: each one
    // restarts the time-out, so all of them are kept.
    When(
        &script, [&] { return line.PortOpen(); },
        [&] {
            QTimer::singleShot(300, &script, [&] {
                labelBeforeData = receive.Display().Label;
                for (int i = 0; i < 5; ++i)
                    QTimer::singleShot(i * 60, &script, [this, i] { line.Feed(QByteArray::number(i)); });
            });
        });
    receive.Run(fx.Files(), QStringLiteral("P1"), Temp);
    EXPECT_EQ(labelBeforeData, "P1\n\nWaiting To Receive");
    EXPECT_TRUE(receive.TimedOut());
    EXPECT_FALSE(receive.Aborted());
    EXPECT_EQ(fx.Read(Temp), "01234");
    EXPECT_FALSE(receive.TimeOutActive());
}

TEST_F(GeneralReceiveTest, AnAbortOrAHangUpKeepsNothing) {
    settings.Trailer.clear();
    When(
        &script, [&] { return receive.CharacterCount() == 2; }, [&] { receive.ReceiveAbrt_Click(); });
    EXPECT_EQ(Receive({"G1", "\r\nG2"}), "<none>");
    EXPECT_TRUE(receive.Aborted());
    EXPECT_TRUE(receive.LostMessage().isEmpty());

    When(
        &script, [&] { return receive.CharacterCount() == 2; }, [&] { line.HangUp(); });
    EXPECT_EQ(Receive({"G1", "\r\nG2"}), "<none>");
    EXPECT_TRUE(receive.Aborted());
    EXPECT_TRUE(receive.LostMessage().contains("\"COM2\""));

    // A port that cannot open: the error passes on, with no file left and the name box back.
    line.FailNextOpen(SystemError::Kind::DeviceUnavailable);
    EXPECT_THROW(Receive({}), DeviceUnavailableError);
    EXPECT_FALSE(fx.OnDisk(Temp));
    EXPECT_TRUE(receive.Display().EntryVisible);
}

// The receive form's OK, over a whole installation.
class ReceiveFormLogicTest : public GeneralReceiveTest {
protected:
    void SetUp() override {
        fx.Load();
        fx.Settings().ReceiveOperation = 2;
        logic.Form_Load();
        // "Kestrova.cms" of the fixture's machine: trailer "%", filter NUL and DEL, 5 s time-out.
        fx.Messages().Clear();
    }
    ReceiveFormLogic logic{fx.session(), receive};
};

TEST_F(ReceiveFormLogicTest, NamesAreCheckedAndAnExistingProgramNeedsAYes) {
    EXPECT_EQ(logic.Caption(), "Communications - Receive Program");
    EXPECT_EQ(logic.NameLabel(), "Program Name");
    EXPECT_EQ(logic.ReceiveOk_Click("  "), ReceiveOkOutcome::StayOnName);
    EXPECT_EQ(logic.ReceiveOk_Click(QString(33, u'x')), ReceiveOkOutcome::StayOnName);
    EXPECT_EQ(fx.Messages().Log(),
              (QStringList{"<beep>", "Invalid File Name !", "<beep>", "Invalid File Name !"}));

    fx.Messages().Clear();
    fx.Messages().Script({Answer::No});
    EXPECT_EQ(logic.ReceiveOk_Click(" Cover "), ReceiveOkOutcome::StayOnName);
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "\"Cover\" Already Exists !\n\nOverwrite It ?"}));
    EXPECT_EQ(fx.Messages().Messages().first().message.defaultButton, 2);
    EXPECT_EQ(fx.Settings().LastAnswer, 7);
    EXPECT_EQ(line.Opens(), 0);

    fx.Messages().Clear();
    fx.Messages().Script({Answer::Yes});
    FeedWhenWaiting({"N1\nM30\n%"});
    EXPECT_EQ(logic.ReceiveOk_Click("Cover"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"), "N1\r\nM30\r\n%");
    EXPECT_FALSE(fx.OnDisk(Temp));
    EXPECT_EQ(fx.Messages().Texts().last(), "\"Cover\" Received !");
    QString directory, name;
    ASSERT_TRUE(RecallLastFile(fx.session(), directory, name, 2));
    EXPECT_EQ(directory + '/' + name, "Parts/Cover");
}

TEST_F(ReceiveFormLogicTest, NothingReceivedAndTheDialogueControls) {
    When(
        &script, [&] { return line.PortOpen(); }, [&] { receive.ReceiveAbrt_Click(); });
    EXPECT_EQ(logic.ReceiveOk_Click("P7"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Messages().Texts(), QStringList{"Nothing Received !"});
    EXPECT_FALSE(fx.OnDisk("C:\\Jobs\\PUNCH1\\Parts\\P7.prg"));

    // A lost line is told once, naming the port, instead.
    fx.Messages().Clear();
    When(
        &script, [&] { return line.PortOpen(); }, [&] { line.HangUp(); });
    EXPECT_EQ(logic.ReceiveOk_Click("P7"), ReceiveOkOutcome::Close);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"COM1\""));

    for (int operation : {4, 6}) {
        fx.Messages().Clear();
        fx.Settings().ReceiveOperation = Int16::From(operation);
        EXPECT_EQ(logic.ReceiveOk_Click("P8"), ReceiveOkOutcome::Close);
        EXPECT_EQ(fx.Messages().Texts(), QStringList{DialogueNotSupported});
    }
    EXPECT_EQ(logic.Caption(), "Communications - Receive Executive");
    EXPECT_EQ(line.Opens(), 2);
    fx.Messages().Clear();
    fx.Settings().ReceiveOperation = 0;
    EXPECT_EQ(logic.ReceiveOk_Click("P8"), ReceiveOkOutcome::Close);
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(ReceiveFormLogicTest, AProgramThatCannotBeStoredIsNamedWhereItIs) {
    FaultInjector faults(fx.Files());
    faults.Fail(FileStep::Write, "P9.prg", ENOSPC, 1, true);
    FeedWhenWaiting({"G1\n%"});
    EXPECT_EQ(logic.ReceiveOk_Click("P9"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Read(Temp), "G1\r\n%");
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains("Disk full"));
    EXPECT_TRUE(fx.Messages().Texts().first().contains("\"C:\\Kestrova\\Commstmp.prg\""))
        << fx.Messages().Texts().first().toStdString();
}

} // namespace
