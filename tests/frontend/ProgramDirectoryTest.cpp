#include "Frontend/ProgramDirectory.h"

#include "Frontend/Session.h"
#include "Frontend/StartUp.h"
#include "QtPrinters.h"
#include "RecordingMessageService.h"
#include "platform/DemoInstallation.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::RecordingMessageService;

namespace {

void Put(const QString& hostPath, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(hostPath).path());
    QFile f(hostPath);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

QByteArray Get(const QString& hostPath) {
    QFile f(hostPath);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

QString Missing(const QString& dir) {
    return QStringLiteral("No Kestrova Installation In \"%1\" !\n"
                          "Start Kestrova with its program directory, the one that holds \"Kestrova.cfg\":\n"
                          "    kestrova /path/to/Kestrova")
        .arg(dir);
}
const QString Offer = QStringLiteral("\nLay Out The Demo Installation In A Directory Of Your Choice ?");

class ProgramDirectoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        root = tmp.path();
        demo = root + "/delivered";
        Put(demo + "/c/Kestrova/Kestrova.cfg", "C:\\Kestrova\r\n");
        Put(demo + "/c/Jobs/M1/Parts/P1.prg", "G1\r\n");
        Put(root + "/standin", "stand-in");
        Put(root + "/installed/kestrova.CFG", "C:\\Kestrova\r\n");
        QDir().mkpath(root + "/empty");
    }
    QString Start(const QStringList& args, const QString& current, const QString& chosen = {}) {
        chooserCalls = 0;
        const DemoOffer offer{withDemo ? demo : QString(), root + "/standin", [this, chosen] {
                                  ++chooserCalls;
                                  return chosen;
                              }};
        return ProgramDirectoryToStart(args, current, messages, offer);
    }

    QTemporaryDir tmp;
    QString root, demo;
    bool withDemo = true;
    int chooserCalls = 0;
    RecordingMessageService messages;
};

} // namespace

TEST_F(ProgramDirectoryTest, AnInstallationGivenOrCurrentIsStartedWithoutAWord) {
    const struct {
        QStringList args;
        QString current;
        QString expected;
    } cases[] = {
        {{}, root + "/installed", root + "/installed"},
        {{root + "/installed"}, root + "/empty", root + "/installed"},
        {{"../installed"}, root + "/empty", root + "/installed"}, // relative to the current directory
        {{"  " + root + "/installed/  "}, "/", root + "/installed"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Start(c.args, c.current), c.expected) << c.args.join(' ').toStdString();
        EXPECT_TRUE(messages.Log().isEmpty());
    }
}

TEST_F(ProgramDirectoryTest, WithoutAnInstallationOneMessageTellsHowAndOffersTheDemo) {
    const struct {
        bool withDemo;
        Answer answer;
        QString chosen;
        int chooserCalls;
        QString expectedMessage;
    } cases[] = {
        {false, Answer::Yes, QString(), 0, Missing(root + "/empty")},
        {true, Answer::No, QString(), 0, Missing(root + "/empty") + Offer},
        {true, Answer::Yes, QString(), 1, Missing(root + "/empty") + Offer}, // the chooser cancelled
    };
    for (const auto& c : cases) {
        messages.Clear();
        if (c.withDemo)
            messages.Script({c.answer});
        withDemo = c.withDemo;
        EXPECT_EQ(Start({root + "/empty"}, "/"), QString());
        EXPECT_EQ(messages.Texts(), QStringList{c.expectedMessage});
        EXPECT_EQ(chooserCalls, c.chooserCalls);
        EXPECT_EQ(QDir(root + "/empty").entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }
    EXPECT_EQ(messages.Messages().at(0).message.buttons, Buttons::YesNo);
    EXPECT_EQ(messages.Messages().at(0).message.defaultButton, 2);
}

TEST_F(ProgramDirectoryTest, TheDemoIsLaidOutWhereChosenAndWorkDoneInItIsKept) {
    messages.Script({Answer::Yes});
    const QString target = root + "/my demo";
    EXPECT_EQ(Start({}, root + "/empty", target), target + "/c/Kestrova");
    EXPECT_EQ(messages.Texts(), QStringList{Missing(root + "/empty") + Offer});
    EXPECT_EQ(Get(target + "/c/Jobs/M1/Parts/P1.prg"), "G1\r\n");
    EXPECT_EQ(Get(target + "/c/Kestrova/StandIn/kestrova-standin"), "stand-in");
    EXPECT_EQ(Get(target + "/c/Kestrova/Devices.cfg"),
              ("C: fixed " + target + "/c\r\nA: removable " + target + "/floppy\r\nE: removable " + target +
               "/usb\r\n******\r\n")
                  .toUtf8());
    EXPECT_TRUE(QFileInfo(target + "/floppy").isDir() && QFileInfo(target + "/usb").isDir());

    // Laid out again over a demo that has been worked in: nothing of the work is overwritten.
    Put(target + "/c/Jobs/M1/Parts/P1.prg", "edited");
    EXPECT_EQ(LayOutDemoInstallation(demo, root + "/standin", target), target + "/c/Kestrova");
    EXPECT_EQ(Get(target + "/c/Jobs/M1/Parts/P1.prg"), "edited");
}

TEST_F(ProgramDirectoryTest, ADemoThatCannotBeLaidOutIsNamedAndNothingStarts) {
    messages.Script({Answer::Yes});
    Put(root + "/blocked", "a file where the directory should be");
    EXPECT_EQ(Start({}, root + "/empty", root + "/blocked"), QString());
    ASSERT_EQ(messages.Texts().size(), 2);
    EXPECT_TRUE(messages.Texts().at(1).contains(root + "/blocked")) << messages.Texts().at(1).toStdString();

    EXPECT_THROW((void)LayOutDemoInstallation(root + "/empty", {}, root + "/x"), FileNotFoundError);
}

// The delivered demo, laid out by the program, is an installation that starts.
TEST_F(ProgramDirectoryTest, TheDeliveredDemoLaidOutStarts) {
    const QString dir = LayOutDemoInstallation(QStringLiteral(KESTROVA_DEMO_DIR), {}, root + "/demo");
    ASSERT_TRUE(HoldsInstallation(dir));
    FileSystem files = FileSystem::AtStartDirectory(dir);
    GlobalSettings settings;
    Session session{settings, files, messages};
    EXPECT_EQ(LoadAtStartUp(session), 0);
    EXPECT_EQ(messages.Texts(), QStringList());
    EXPECT_TRUE(files.IsFile(settings.SystemPath + "Machine.lst"));
}
