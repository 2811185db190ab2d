// Programs sent by the simulated machine control through a real pseudo-terminal into the
// running main window, whose background receive listens on the host's port as in the program.
#include "MainWindowFixture.h"
#include "SimulatorProcess.h"
#include "comms/BackgroundReceive.h"

#include <QDirIterator>
#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QString Machine = QStringLiteral(" for Trumpf Punch 5000");

class ReceiveIntoWindow : public MainWindowFixture {
protected:
    void SetUp() override {
        machine = std::make_unique<SimulatorProcess>(fx.Host(QStringLiteral("C:\\Kestrova\\Devices.cfg")), 2);
        UseBackgroundPort(2);
        // The installation's device map is read from here on, with the machine's port in it.
        Open();
        ASSERT_TRUE(window->Receive().Line().PortOpen()) << fx.Messages().Log().join(u'|').toStdString();
        machine->Run(QStringLiteral("wait-open 5000"));
        m_before = Files();
    }
    QString Program(const QByteArray& bytes) {
        const QString path = fx.Root() + QStringLiteral("/program%1.nc").arg(++m_files);
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        return path;
    }
    void Send(const QByteArray& bytes, const QString& options) {
        machine->Run(QStringLiteral("send ") + Program(bytes) + u' ' + options);
    }
    // Waits until the window lists this many programs.
    bool Listed(int count) {
        return RunEventsUntil([&] { return window->ReceivedPrograms().size() >= count; });
    }
    bool FrameShown() const { return Child("ReceiveFrame")->isVisible(); }
    // Every file of the installation but the program files sent, "Receive.lst" and "Receive.tmp"
    // (the last program received stays there until the next one starts or the receive stops).
    QStringList Files() const {
        QStringList found;
        QDirIterator it(fx.Root(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next().mid(fx.Root().size());
            if (!path.startsWith(QStringLiteral("/program")) &&
                !path.endsWith(QStringLiteral("/Receive.lst")) &&
                !path.endsWith(QStringLiteral("/Receive.tmp")))
                found << path;
        }
        found.sort();
        return found;
    }
    // The files that were not there when the window opened.
    QStringList NewFiles() const {
        QStringList added = Files();
        for (const QString& path : m_before)
            added.removeOne(path);
        return added;
    }

    std::unique_ptr<SimulatorProcess> machine;

private:
    int m_files = 0;
    QStringList m_before;
};

TEST_F(ReceiveIntoWindow, WithAndWithoutTheHeaderAndTwoProgramsInOneWrite) {
    // The header names another machine and a directory it does not have yet.
    Send("  G1 X10\r\n\r\nG2 Y5  \r\n", QStringLiteral("header=RAINER,Sheets,P100 trailer=1,37 chunk=7"));
    ASSERT_TRUE(Listed(1));
    EXPECT_TRUE(FrameShown());
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Jobs\\RAINER\\Sheets\\P100.prg")), "G1 X10\r\nG2 Y5\r\n");

    Send("  G1 X10\r\n\r\n", QStringLiteral("trailer=1,37 chunk=3 pace=5"));
    ASSERT_TRUE(Listed(2));
    EXPECT_EQ(fx.Read(Parts + QStringLiteral("New Program 1.prg")), "  G1 X10\r\n\r\n");

    // One write holding two programs: the first trailer's character may start the second.
    Send("A1\r\n%B2\r\n", QStringLiteral("trailer=1,37 chunk=100000"));
    ASSERT_TRUE(Listed(4));
    EXPECT_EQ(fx.Read(Parts + QStringLiteral("New Program 2.prg")), "A1\r\n");
    const QByteArray second = fx.Read(Parts + QStringLiteral("New Program 3.prg"));
    EXPECT_TRUE(second == "%B2\r\n" || second == "B2\r\n") << second.toStdString();

    const QStringList expected{"P100 in Sheets for Rainer Combi 1250", "New Program 1 in Parts" + Machine,
                               "New Program 2 in Parts" + Machine, "New Program 3 in Parts" + Machine};
    EXPECT_EQ(window->ReceivedPrograms(), expected);
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Receive.lst")), expected);
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(ReceiveIntoWindow, AnUnknownMachineAndHostileHeaderValuesStayInTheDataDirectories) {
    Send("G1\r\n", QStringLiteral("header=NOSUCH,Parts,P5 trailer=1,37"));
    Send("G2\r\n", QStringLiteral("header=..,../../../../tmp,/etc/x trailer=1,37"));
    Send("G3\r\n", QStringLiteral("header=RAINER,C:,a\\b trailer=1,37"));
    ASSERT_TRUE(Listed(3));
    EXPECT_EQ(fx.Read(Parts + QStringLiteral("P5.prg")), "G1\r\n");
    EXPECT_EQ(fx.Read(Parts + QStringLiteral("New Program 1.prg")), "G2\r\n");
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Jobs\\RAINER\\Parts\\New Program 1.prg")), "G3\r\n");
    EXPECT_EQ(window->ReceivedPrograms(),
              (QStringList{"P5 in Parts" + Machine, "New Program 1 in Parts" + Machine,
                           "New Program 1 in Parts for Rainer Combi 1250"}));
    // Nothing else was written anywhere in the installation but the transfer log.
    EXPECT_EQ(NewFiles(),
              (QStringList{"/c/Jobs/PUNCH1/Parts/New Program 1.prg", "/c/Jobs/PUNCH1/Parts/P5.prg",
                           "/c/Jobs/RAINER/Parts/New Program 1.prg", "/c/Kestrova/Transfer.log"}));
}

TEST_F(ReceiveIntoWindow, AHangUpInTheMiddleClosesThePortReportsOnceAndFilesNothing) {
    Send("G1\r\nG2\r\nG3", QString());
    ASSERT_TRUE(RunEventsUntil([&] {
        return window->Receive().Receiving() && fx.OnDisk(QStringLiteral("C:\\Kestrova\\Receive.tmp"));
    }));
    machine->Run(QStringLiteral("hangup"));
    ASSERT_TRUE(RunEventsUntil([&] { return !fx.Messages().Texts().isEmpty(); }));
    // The lost device is watched for now; a pseudo-terminal's number may go at once to another
    // program's line, which this test does not want to open.
    window->Receive().Line().WatchDevice(false);
    // However long the dead line is left, it is not reported again.
    RunEventsUntil([] { return false; }, 300);
    ASSERT_EQ(fx.Messages().Texts().size(), 1) << fx.Messages().Texts().join(u'|').toStdString();
    EXPECT_TRUE(fx.Messages().Texts().first().contains(QStringLiteral("\"COM2\"")));
    EXPECT_FALSE(window->Receive().Line().PortOpen());
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Receive.tmp")));
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Receive.lst")));
    EXPECT_TRUE(NewFiles().isEmpty());
    EXPECT_TRUE(window->ReceivedPrograms().isEmpty());
    EXPECT_FALSE(FrameShown());
    EXPECT_TRUE(window->isVisible());
}

} // namespace
