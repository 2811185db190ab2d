#include "comms/GeneralReceive.h"

#include "CommsInstallation.h"
#include "EventScript.h"
#include "FaultInjector.h"
#include "comms/ReceiveFormLogic.h"
#include "comms/TransferLog.h"
#include "filestore/LastFile.h"
#include "filestore/ProgramHistory.h"

#include <QFile>
#include <QFileInfo>
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

TEST_F(GeneralReceiveTest, LineEndsBecomeCrLfTheFilterDropsAndTheTrailerIsKept) {
    const struct {
        QList<QByteArray> chunks;
        QByteArray stored;
        QList<QChar> filter = {};
        QString trailer = QStringLiteral("%");
    } cases[] = {
        {{"G1\nG2\n%"}, "G1\r\nG2\r\n%"},
        {{"G1\r\n\nG2\r%"}, "G1\r\n\r\nG2\r\n%"},
        {{"G1\r\n\rG2\n\r\n%"}, "G1\r\n\r\nG2\r\n\r\n%"},
        {{"G1\n\rG2\x7F%"}, "G1\r\nG2%", {QChar(0x7F)}},
        {{"G1\r\nG2\nG3\r\r%"}, "G1G2\r\nG3%", {QChar(13)}}, // a filtered CR still swallows its LF
        {{"G1 \x80\x8A\x9E\x9F%"}, "G1 \x80\x9E%", ParseCharacterList(QStringLiteral("138,159"))},
        {{"G1\r\nM3", "0X\r\nM3", "0%G2\r\n"}, "G1\r\nM30X\r\nM30%", {}, QStringLiteral("M30%")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stored.toStdString());
        settings.ReceiveFilter = c.filter;
        settings.Trailer = c.trailer;
        EXPECT_EQ(Receive(c.chunks), c.stored);
        EXPECT_FALSE(receive.Aborted());
        const qsizetype count = c.stored.size() - c.stored.count("\r\n"); // a CR LF counts as one
        EXPECT_EQ(receive.CharacterCount(), count);
        EXPECT_EQ(receive.Display().Chars, QString::number(count));
        EXPECT_EQ(receive.Display().Label, "P1\n\nReceiving");
    }
    // The start character went out once per receive; the port was set for a general receive.
    EXPECT_EQ(line.Sent(), QByteArray(std::size(cases), '\x11'));
    EXPECT_EQ(line.Log().mid(0, 12).join(' '),
              "CommPort=2 Settings=9600,E,7,2 Handshaking=1 DTREnable=1 RTSEnable=1 InBufferCount=0 "
              "OutBufferCount=0 RThreshold=0 SThreshold=0 InputLen=0 NullDiscard=1 PortOpen=1");
    EXPECT_FALSE(line.PortOpen());
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

    // Received over the stored program: its text goes to the history as received on the port,
    // and the transfer log tells how many lines changed.
    const QString cover = Parts + "Cover.prg";
    fx.Write(cover, "N1\r\nX1\r\n%");
    fx.Messages().Clear();
    fx.Messages().Script({Answer::Yes});
    FeedWhenWaiting({"N1\nX2\nM30\n%"});
    EXPECT_EQ(logic.ReceiveOk_Click("Cover"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Read(cover), "N1\r\nX2\r\nM30\r\n%");
    EXPECT_FALSE(fx.OnDisk(Temp));
    EXPECT_EQ(fx.Messages().Texts().last(), "\"Cover\" Received !");
    QString directory, name;
    ASSERT_TRUE(RecallLastFile(fx.session(), directory, name, 2));
    EXPECT_EQ(directory + '/' + name, "Parts/Cover");
    const QList<HistoryVersion> versions =
        ProgramHistory(fx.Files(), fx.Settings().SystemPath).Versions(cover);
    ASSERT_EQ(versions.size(), 1);
    EXPECT_EQ(versions[0].operation, "received on COM1");
    EXPECT_EQ(fx.Read(versions[0].file), "N1\r\nX1\r\n%");
    EXPECT_TRUE(
        LastTransferLogLines(fx.session(), 1).value(0).endsWith("  received (replaced, 2 lines changed)"))
        << LastTransferLogLines(fx.session(), 1).value(0).toStdString();
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

    // Only filtered characters before the time-out is nothing received: the program the operator
    // agreed to overwrite stays as it was.
    fx.Settings().ReceiveOperation = 2;
    SetValues(fx, MachineCms, {{"Receive Time Out", "100"}}); // the filter is NUL and DEL
    logic.Form_Load();
    const QByteArray cover = fx.Read(Parts + "Cover.prg");
    FeedWhenWaiting({"\x7f\x7f\x7f"});
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(logic.ReceiveOk_Click("Cover"), ReceiveOkOutcome::Close);
    EXPECT_TRUE(receive.TimedOut());
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"\"Cover\" Already Exists !\n\nOverwrite It ?", "Nothing Received !"}));
    EXPECT_EQ(fx.Read(Parts + "Cover.prg"), cover);
    EXPECT_FALSE(fx.OnDisk(Temp));
}

TEST_F(ReceiveFormLogicTest, AProgramThatCannotBeStoredIsKeptAndNamed) {
    // P9 exists as a link to the program's real file; each case receives onto it.

    fx.Write(Parts + "Real.prg", "OLD\r\n");
    ASSERT_TRUE(QFile::link(fx.Host(Parts + "Real.prg"), fx.Host(Parts + "P9.prg")));
    FaultInjector faults(fx.Files());
    struct Case {
        const char* what;
        std::function<void()> fault;
        QString keptIn; // named in the message; empty: stored
    };
    const Case cases[] = {
        {"stored onto the link", [] {}, {}},
        {"a full disk", [&] { faults.Fail(FileStep::Write, "P9.prg", ENOSPC, 1, true); },
         "C:\\Kestrova\\Unfiled 1.prg"},
        {"the replacement refused", [&] { faults.Fail(FileStep::Replace, "P9.prg", EIO, 1, true); },
         "C:\\Kestrova\\Unfiled 2.prg"},
        {"moved by a copy",
         [&] {
             fx.Files().SetFaultHook([](FileStep step, const QString& path) {
                 return (step == FileStep::Write && path.endsWith("P9.prg")) ||
                                (step == FileStep::Rename && path.endsWith("Commstmp.prg"))
                            ? EIO
                            : 0;
             });
         },
         "C:\\Kestrova\\Unfiled 3.prg"},
        {"not even moved",
         [&] {
             fx.Files().SetFaultHook([](FileStep step, const QString& path) {
                 const bool written = path.endsWith("P9.prg") || path.contains("Unfiled");
                 return (step == FileStep::Write && written) || step == FileStep::Rename ? EIO : 0;
             });
         },
         Temp},
    };
    int n = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QByteArray program = "G" + QByteArray::number(++n) + "\r\n%";
        fx.Messages().Clear();
        fx.Messages().Script({Answer::Yes});
        c.fault();
        FeedWhenWaiting({program});
        EXPECT_EQ(logic.ReceiveOk_Click("P9"), ReceiveOkOutcome::Close);
        faults.Fail(FileStep::Write, "no such file");
        ASSERT_EQ(fx.Messages().Texts().size(), 2); // the question, and the outcome
        const QString message = fx.Messages().Texts().last();
        EXPECT_TRUE(QFileInfo(fx.Host(Parts + "P9.prg")).isSymLink()); // a link stays a link
        if (c.keptIn.isEmpty()) {
            EXPECT_EQ(message, "\"P9\" Received !");
            EXPECT_EQ(fx.Read(Parts + "Real.prg"), program);
            continue;
        }
        EXPECT_TRUE(message.contains("\"" + c.keptIn + "\"")) << message.toStdString();
        EXPECT_EQ(fx.Read(c.keptIn), program);
        EXPECT_EQ(fx.Read(Parts + "Real.prg"), "G1\r\n%"); // the old program survives
    }

    // The next receive does not replace the program left in the temporary file: it moves it
    // first, and says where.
    fx.Messages().Clear();
    FeedWhenWaiting({"G9\r\n%"});
    EXPECT_EQ(logic.ReceiveOk_Click("P10"), ReceiveOkOutcome::Close);
    EXPECT_EQ(fx.Read("C:\\Kestrova\\Unfiled 4.prg"), "G5\r\n%");
    EXPECT_EQ(fx.Read(Parts + "P10.prg"), "G9\r\n%");
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"An Earlier Program Is Kept In \"C:\\Kestrova\\Unfiled 4.prg\" !",
                           "\"P10\" Received !"}));
}

} // namespace
