// Faults of the host (a full disk, a pulled drive) at each step of the program's own rewrites:
// the old file or the complete new one is there afterwards, one message names the file and the
// reason, and the program goes on.
#include "FaultInjector.h"
#include "Frontend/FrontEnd.h"
#include "Frontend/StartUp.h"
#include "InstallationFixture.h"
#include "filestore/SelectDirectory.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;

namespace {

const QString Cfg = QStringLiteral("C:\\Kestrova\\Kestrova.cfg");
const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");

struct Fault {
    FileStep step;
    int error;
    QString reason;
};
const Fault Faults[] = {
    {FileStep::Open, ENOSPC, "Disk full"},
    {FileStep::Write, EIO, "Device I/O error"},
    {FileStep::Close, ENOSPC, "Disk full"},
    {FileStep::Replace, EIO, "Device I/O error"},
};

// The files of a directory as the host has them, hidden ones included.
QStringList HostFiles(const InstallationFixture& fx, const QString& dir) {
    return QDir(fx.Host(dir)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace

TEST(RewriteFault, TheDirectorySelectionKeepsKestrovaCfgWholeAndCanBeDoneAgain) {
    // A fault at any step keeps the old text under its own name and leaves nothing beside it.
    for (const Fault& f : Faults) {
        SCOPED_TRACE(f.reason.toStdString() + " at step " + std::to_string(int(f.step)));
        InstallationFixture fx;
        fx.Load();
        const QByteArray before = fx.Read(Cfg);
        const QStringList files = HostFiles(fx, QStringLiteral("C:\\Kestrova"));
        {
            FaultInjector faults(fx.Files());
            faults.Fail(f.step, QStringLiteral("Kestrova.cfg"), f.error);
            try {
                SelectDirectory(fx.session(), QStringLiteral("Archive"));
                ADD_FAILURE() << "the fault went unnoticed";
            } catch (const SystemError& e) {
                EXPECT_EQ(e.subject(), Cfg);
                EXPECT_TRUE(e.text().startsWith(f.reason)) << e.text().toStdString();
            }
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_EQ(fx.Read(Cfg), before);
        EXPECT_EQ(HostFiles(fx, QStringLiteral("C:\\Kestrova")), files);

        SelectDirectory(fx.session(), QStringLiteral("Archive"));
        EXPECT_EQ(fx.ReadLines(Cfg).value(4), QStringLiteral("Archive"));
    }
}

namespace {

class RestoreDefaultsFault : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(LoadAtStartUp(fx.session()), 0);
        window = std::make_unique<FrontEnd>(fx.session(), launcher);
        for (const char* ext : {"cms", "mch", "trt"})
            fx.Write(Data + "PUNCH1." + ext, "changed\r\n");
    }
    void Restore() {
        fx.Messages().Script({Answer::Ok});
        window->Entry(QStringLiteral("RestoreDefaults"))->trigger();
    }
    InstallationFixture fx;
    ProgramLauncher launcher{fx.Files()};
    std::unique_ptr<FrontEnd> window;
};

} // namespace

TEST_F(RestoreDefaultsFault, EachFileIsOldOrRestoredAndOneMessageNamesTheOneThatFailed) {
    const QString mch = Data + "PUNCH1.mch";
    const QByteArray delivered = fx.Read(Data + "Default\\PUNCH1.mch");
    ASSERT_NE(delivered, "changed\r\n");
    int round = 0;
    for (const Fault& f : Faults) {
        SCOPED_TRACE(f.reason.toStdString() + " at step " + std::to_string(int(f.step)));
        for (const char* ext : {"cms", "mch", "trt"})
            fx.Write(Data + "PUNCH1." + ext, "changed\r\n");
        fx.Messages().Clear();
        {
            FaultInjector faults(fx.Files());
            faults.Fail(f.step, QStringLiteral("Data\\PUNCH1.mch"), f.error);
            Restore();
            EXPECT_EQ(faults.Fired(), 1);
        }
        // The question, then one message for the fault.
        ASSERT_EQ(fx.Messages().Texts().size(), 2);
        const QString shown = fx.Messages().Texts().at(1);
        EXPECT_TRUE(shown.startsWith(f.reason)) << shown.toStdString();
        EXPECT_TRUE(shown.contains(mch)) << shown.toStdString();
        EXPECT_EQ(fx.Read(mch), "changed\r\n");
        EXPECT_EQ(fx.Read(Data + "PUNCH1.cms"), fx.Read(Data + "Default\\PUNCH1.cms")); // copied before
        EXPECT_EQ(HostFiles(fx, Data).filter("kestrova-new"),
                  QStringList()); // nothing half written beside it
        for (const QString& menu : TopLevelMenus())
            EXPECT_TRUE(window->Entry(menu)->isEnabled()) << menu.toStdString();
        EXPECT_EQ(fx.Messages().BusyDepth(), 0);
        ++round;
    }
    EXPECT_EQ(round, int(std::size(Faults)));

    // The disk has room again: the same entry restores everything.
    fx.Messages().Clear();
    Restore();
    EXPECT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_EQ(fx.Read(mch), delivered);
    EXPECT_EQ(fx.Read(Data + "PUNCH1.trt"), fx.Read(Data + "Default\\PUNCH1.trt"));
}
