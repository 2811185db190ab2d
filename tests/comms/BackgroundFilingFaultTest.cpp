// The background receive's filing under faults of the host (a full disk, a pulled drive) at each
// step: the received program is afterwards whole where it was meant to go or whole in a file of
// its own, one message names the file and the reason, and the next program is filed as usual.
#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "settings/SettingsFile.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;
using kestrova::testing::ScriptedSerialLine;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QString Kestrova = QStringLiteral("C:\\Kestrova\\");

struct Started {
    Started() {
        kestrova::testing::TestApplication();
        QStringList cms = fx.ReadLines(Kestrova + "Kestrova.cms");
        cms[1] = LabelledLine("Port", "2");
        cms[11] = LabelledLine("Trailer", "1,37");
        fx.WriteLines(Kestrova + "Kestrova.cms", cms);
        fx.Write(Parts + "Job.prg", "old job\r\n");
        fx.Load();
        auto owned = std::make_unique<ScriptedSerialLine>();
        line = owned.get();
        receive = std::make_unique<BackgroundReceive>(fx.session(), std::move(owned));
        receive->Start();
        fx.Messages().Clear();
    }
    InstallationFixture fx;
    ScriptedSerialLine* line = nullptr;
    std::unique_ptr<BackgroundReceive> receive;
};

} // namespace

TEST(BackgroundFilingFault, AProgramIsFiledWholeOrKeptWholeAndTheNextOneIsFiled) {
    const QByteArray plain = "G1\r\nG2\r\n";
    const QByteArray headed = "\x17PUNCH1\r\n\x18Parts\r\n\x19Job\r\nG1\r\nG2\r\n";
    const QByteArray newDirectory = "\x17PUNCH1\r\n\x18Sheets\r\nG1\r\n";
    const struct {
        const char* what;
        FileStep step;
        const char* file;
        QByteArray program; // sent before its trailer, in two chunks
        const char* filed;  // where it is whole afterwards, relative to C:\ ; the received text
                            // ("" for the text the header rules give)
        const char* named;  // the file the message names
    } cases[] = {
        {"temporary file open", FileStep::Open, "Receive.tmp", plain, "Kestrova\\Unfiled 1.prg",
         "Receive.tmp"},
        {"temporary file write", FileStep::Write, "Receive.tmp", plain, "Kestrova\\Unfiled 1.prg",
         "Receive.tmp"},
        {"temporary file close", FileStep::Close, "Receive.tmp", plain, "Kestrova\\Unfiled 1.prg",
         "Receive.tmp"},
        {"temporary file read", FileStep::Read, "Receive.tmp", plain, "Kestrova\\Unfiled 1.prg",
         "Receive.tmp"},
        {"plain program open", FileStep::Open, "New Program 1.prg", plain, "Kestrova\\Unfiled 1.prg",
         "New Program 1.prg"},
        {"plain program write", FileStep::Write, "New Program 1.prg", plain, "Kestrova\\Unfiled 1.prg",
         "New Program 1.prg"},
        {"plain program close", FileStep::Close, "New Program 1.prg", plain, "Kestrova\\Unfiled 1.prg",
         "New Program 1.prg"},
        {"plain program sync", FileStep::Sync, "New Program 1.prg", plain, "Kestrova\\Unfiled 1.prg",
         "New Program 1.prg"},
        {"plain program replace", FileStep::Replace, "New Program 1.prg", plain, "Kestrova\\Unfiled 1.prg",
         "New Program 1.prg"},
        {"old program delete", FileStep::Delete, "Job.prg", headed, "Kestrova\\Unfiled 1.prg", "Job.prg"},
        {"headed program open", FileStep::Open, "Job.prg", headed, "Kestrova\\Unfiled 1.prg", "Job.prg"},
        {"headed program write", FileStep::Write, "Job.prg", headed, "Kestrova\\Unfiled 1.prg", "Job.prg"},
        {"headed program close", FileStep::Close, "Job.prg", headed, "Kestrova\\Unfiled 1.prg", "Job.prg"},
        {"new directory", FileStep::MakeDirectory, "Sheets", newDirectory, "Kestrova\\Unfiled 1.prg",
         "Sheets"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Started s;
        InstallationFixture& fx = s.fx;
        {
            FaultInjector faults(fx.Files());
            faults.Fail(c.step, QLatin1String(c.file), ENOSPC);
            s.line->Feed(c.program.left(5));
            s.line->Feed(c.program.mid(5) + "%");
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_EQ(fx.Read("C:\\" + QLatin1String(c.filed)), c.program);
        ASSERT_EQ(fx.Messages().Texts().size(), 1);
        const QString shown = fx.Messages().Texts().first();
        EXPECT_TRUE(shown.startsWith("Disk full")) << shown.toStdString();
        EXPECT_TRUE(shown.contains(QLatin1String(c.file) + u'"')) << shown.toStdString();
        // Nothing half written where the program was meant to go: the old one or none.
        if (c.step == FileStep::Delete || fx.OnDisk(Parts + "Job.prg")) {
            EXPECT_EQ(fx.Read(Parts + "Job.prg"), "old job\r\n");
        }

        s.line->Feed("G9\r\n%");
        EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G9\r\n");
        EXPECT_TRUE(s.line->PortOpen());
        EXPECT_EQ(fx.Messages().Texts().size(), 1);
    }
}

TEST(BackgroundFilingFault, AListLineThatCannotBeWrittenLeavesTheProgramFiledOnce) {
    Started s;
    InstallationFixture& fx = s.fx;
    {
        FaultInjector faults(fx.Files());
        faults.Fail(FileStep::Write, QStringLiteral("Receive.lst"), ENOSPC);
        s.line->Feed("G1\r\nG2\r\n%");
        EXPECT_EQ(faults.Fired(), 1);
    }
    EXPECT_EQ(fx.Read(Parts + "New Program 1.prg"), "G1\r\nG2\r\n");
    EXPECT_FALSE(fx.OnDisk(Kestrova + "Unfiled 1.prg")) << "filed, so not kept a second time";
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().first().contains(QStringLiteral("Receive.lst\"")))
        << fx.Messages().Texts().first().toStdString();

    s.line->Feed("G9\r\n%");
    EXPECT_EQ(fx.Read(Parts + "New Program 2.prg"), "G9\r\n");
    const QStringList listed = fx.ReadLines(Kestrova + "Receive.lst");
    ASSERT_EQ(listed.size(), 1);
    EXPECT_TRUE(listed.first().startsWith(QStringLiteral("New Program 2 in Parts")));
    EXPECT_EQ(fx.Messages().Texts().size(), 1);
}
