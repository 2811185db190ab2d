// Faults of the host (a full disk, a pulled drive) at each step of the program's own rewrites:
// the old file or the complete new one is there afterwards, one message names the file and the
// reason, and the program goes on.
#include "FaultInjector.h"
#include "Frontend/FrontEnd.h"
#include "Frontend/StartUp.h"
#include "InstallationFixture.h"
#include "Thrown.h"
#include "filestore/MachineSelection.h"
#include "filestore/SelectDirectory.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;
using kestrova::testing::Thrown;

namespace {

const QString Cfg = QStringLiteral("C:\\Kestrova\\Kestrova.cfg");
const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");

// The steps of the copy of a machine data file from its default: reading the default, then
// writing the new text beside the file and putting it in the file's place.
struct Fault {
    FileStep step;
    int error;
    QString reason;
    QString file; // the file the step meets, named by the message
};
const Fault Faults[] = {
    {FileStep::Read, EIO, "Device I/O error", "Default\\PUNCH1.mch"},
    {FileStep::Open, ENOSPC, "Disk full", "Data\\PUNCH1.mch"},
    {FileStep::Write, EIO, "Device I/O error", "Data\\PUNCH1.mch"},
    {FileStep::Close, ENOSPC, "Disk full", "Data\\PUNCH1.mch"},
    {FileStep::Sync, EIO, "Device I/O error", "Data\\PUNCH1.mch"},
    {FileStep::Replace, EIO, "Device I/O error", "Data\\PUNCH1.mch"},
};

// The files of a directory as the host has them, hidden ones included.
QStringList HostFiles(const InstallationFixture& fx, const QString& dir) {
    return QDir(fx.Host(dir)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

// An installation started as at start-up, with its main window.
struct Started {
    Started() {
        EXPECT_EQ(LoadAtStartUp(fx.session()), 0);
        window = std::make_unique<FrontEnd>(fx.session(), launcher);
    }
    InstallationFixture fx;
    ProgramLauncher launcher{fx.Files()};
    std::unique_ptr<FrontEnd> window;
};

} // namespace

TEST(RewriteFault, KestrovaCfgAndTheEnvironmentStayAsTheyWereAfterAFailedRewrite) {
    // A fault at any step of either rewrite (the machine change rewrites the file twice: the
    // number first, then the directory the new machine's load selects) keeps the old text under
    // its own name with nothing beside it, leaves the environment telling the same story as the
    // file, and the same operation succeeds once the disk is well again.
    struct Operation {
        const char* what;
        std::function<void(Session&, FrontEnd&)> run;
        int nth;
        QStringList written; // lines 4 and 5 once it succeeds
    };
    const Operation operations[] = {
        {"directory",
         [](Session& s, FrontEnd&) { SelectDirectory(s, QStringLiteral("Archive")); },
         1,
         {"1", "Archive"}},
        {"machine number",
         [](Session& s, FrontEnd& w) { (void)SelectMachine(s, w, 2); },
         1,
         {"2", "Kestrova"}},
        {"machine's directory",
         [](Session& s, FrontEnd& w) { (void)SelectMachine(s, w, 2); },
         2,
         {"2", "Kestrova"}},
    };
    const FileStep steps[] = {FileStep::Open, FileStep::Write, FileStep::Close, FileStep::Sync,
                              FileStep::Replace};
    for (const Operation& op : operations) {
        for (const FileStep step : steps) {
            SCOPED_TRACE(std::string(op.what) + " at step " + std::to_string(int(step)));
            Started started;
            InstallationFixture& fx = started.fx;
            FrontEnd& window = *started.window;
            const QByteArray before = fx.Read(Cfg);
            const GlobalSettings was = fx.Settings();
            {
                FaultInjector faults(fx.Files());
                faults.Fail(step, QStringLiteral("Kestrova.cfg"), EIO, op.nth);
                const auto error = Thrown<SystemError>([&] { op.run(fx.session(), window); });
                ASSERT_TRUE(error) << "the fault went unnoticed";
                EXPECT_EQ(error->subject(), Cfg);
                EXPECT_TRUE(error->text().startsWith("Device I/O error")) << error->text().toStdString();
                EXPECT_EQ(faults.Fired(), 1);
            }
            EXPECT_EQ(fx.Read(Cfg), before);
            EXPECT_EQ(HostFiles(fx, QStringLiteral("C:\\Kestrova")).filter("kestrova-new"), QStringList())
                << "nothing half written beside it";
            const GlobalSettings& g = fx.Settings();
            EXPECT_EQ(g.CurrentDir, was.CurrentDir);
            EXPECT_EQ(g.CurrentPath, was.CurrentPath);
            EXPECT_EQ(int(g.MachineNumber), int(was.MachineNumber));
            EXPECT_EQ(g.MachineDir, was.MachineDir);

            op.run(fx.session(), window);
            EXPECT_EQ(fx.ReadLines(Cfg).mid(3, 2), op.written);
        }
    }
}

namespace {

class RestoreDefaultsFault : public ::testing::Test {
protected:
    void Restore() {
        fx.Messages().Script({Answer::Ok});
        started.window->Entry(QStringLiteral("RestoreDefaults"))->trigger();
    }
    Started started;
    InstallationFixture& fx = started.fx;
};

} // namespace

TEST_F(RestoreDefaultsFault, EachFileIsOldOrRestoredAndOneMessageNamesTheOneThatFailed) {
    const QString mch = Data + "PUNCH1.mch";
    const QByteArray delivered = fx.Read(Data + "Default\\PUNCH1.mch");
    ASSERT_NE(delivered, "changed\r\n");
    for (const Fault& f : Faults) {
        SCOPED_TRACE(f.reason.toStdString() + " at step " + std::to_string(int(f.step)));
        for (const char* ext : {"cms", "mch", "trt"})
            fx.Write(Data + "PUNCH1." + ext, "changed\r\n");
        fx.Messages().Clear();
        {
            FaultInjector faults(fx.Files());
            faults.Fail(f.step, f.file, f.error);
            Restore();
            EXPECT_EQ(faults.Fired(), 1);
        }
        // The question, then one message for the fault.
        ASSERT_EQ(fx.Messages().Texts().size(), 2);
        const QString shown = fx.Messages().Texts().at(1);
        EXPECT_TRUE(shown.startsWith(f.reason)) << shown.toStdString();
        EXPECT_TRUE(shown.contains(f.file + u'"')) << shown.toStdString();
        EXPECT_EQ(fx.Read(mch), "changed\r\n");
        EXPECT_EQ(fx.Read(Data + "PUNCH1.cms"), fx.Read(Data + "Default\\PUNCH1.cms")); // copied before
        EXPECT_EQ(HostFiles(fx, Data).filter("kestrova-new"),
                  QStringList()); // nothing half written beside it
        for (const QString& menu : TopLevelMenus())
            EXPECT_TRUE(started.window->Entry(menu)->isEnabled()) << menu.toStdString();
        EXPECT_EQ(fx.Messages().BusyDepth(), 0);
    }

    // The disk has room again: the same entry restores everything.
    fx.Messages().Clear();
    Restore();
    EXPECT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_EQ(fx.Read(mch), delivered);
    EXPECT_EQ(fx.Read(Data + "PUNCH1.trt"), fx.Read(Data + "Default\\PUNCH1.trt"));
    for (const QString& menu : TopLevelMenus())
        EXPECT_TRUE(started.window->Entry(menu)->isEnabled()) << menu.toStdString();
}
