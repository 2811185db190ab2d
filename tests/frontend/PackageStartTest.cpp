#include "Frontend/PackageStart.h"

#include "InstallationFixture.h"
#include "RecordingFrame.h"
#include "filestore/LastFile.h"

#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::RecordingFrame;

namespace {

const QString Program = QStringLiteral("C:\\Kestrova\\");

class PackageStartTest : public ::testing::Test {
protected:
    void SetUp() override { fixture.Load(); }
    void Start(Package package) { StartPackage(fixture.session(), launcher, frame, package); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    RecordingFrame frame;
};

TEST_F(PackageStartTest, AMissingPackageIsReportedAndNothingElseHappens) {
    const QList<std::pair<Package, const char*>> packages{
        {Package::Drawing, "Drawing Package is Unavailable !"},
        {Package::Nesting, "Nesting Package is Unavailable !"},
        {Package::ProgramCreation, "Program Creation is Unavailable !"},
        {Package::ReverseEngineering, "Reverse Engineering is Unavailable !"},
        {Package::ToolLibrary, "Tool Library is Unavailable !"},
        {Package::StockManager, "Stock Manager is Unavailable !"},
        {Package::ShapesTooling, "Shapes & Tooling is Unavailable !"}};
    QStringList expected;
    for (const auto& [package, text] : packages) {
        fixture.Remove(Program + InfoOf(package).executable);
        Start(package);
        expected << QStringLiteral("<beep>") << QString::fromLatin1(text);
    }
    EXPECT_EQ(fixture.Messages().Log(), expected);
    for (const auto& shown : fixture.Messages().Messages()) {
        EXPECT_EQ(shown.message.buttons, Buttons::Ok);
        EXPECT_EQ(shown.message.icon, Icon::Exclamation);
        EXPECT_EQ(shown.message.title, QStringLiteral("Kestrova"));
    }
    EXPECT_TRUE(frame.log.isEmpty());
}

// Each package leaves "Kestrova.cfg" naming a machine and directory, then ends at once; the rows
// run one after another.
TEST_F(PackageStartTest, APackageIsFollowedByAReloadOnlyWhenItMayChangeTheMachine) {
    const struct {
        Package package;
        const char* machine; // and directory, chosen by the package
        const char* directory;
        QStringList reload; // what the frame shows between disabling and enabling the entry
        int machineAfter;
        QString directoryAfter;
    } rows[] = {
        {Package::ToolLibrary, "2", "Kestrova", {}, 1, "Parts"},
        {Package::StockManager, "2", "Kestrova", {}, 1, "Parts"},
        {Package::Drawing, "1", "Archive", {"logo", "setup", "status"}, 1, "Archive"},
        {Package::ShapesTooling,
         "2",
         "Kestrova",
         {"logo", "machine changed", "setup", "status"},
         2,
         "Kestrova"},
    };
    for (const auto& row : rows) {
        const QString entry = InfoOf(row.package).entry;
        SCOPED_TRACE(entry.toStdString());
        frame.log.clear();
        RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
        fixture.WriteLines(Program + "Next.cfg", {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs",
                                                  row.machine, row.directory, "******"});
        fixture.WriteProgram(Program + InfoOf(row.package).executable, "cp Next.cfg Kestrova.cfg");
        Start(row.package);
        EXPECT_EQ(frame.log, QStringList{"disable " + entry} + row.reload + QStringList{"enable " + entry});
        EXPECT_EQ(fixture.Settings().MachineNumber, row.machineAfter);
        EXPECT_EQ(fixture.Settings().CurrentDir, row.directoryAfter);
        // The remembered drawing was one of the machine before.
        EXPECT_EQ(fixture.ReadLines(Program + "Lastfile.lst").size(), row.machineAfter == 1 ? 3 : 1);
        EXPECT_TRUE(fixture.Messages().Log().isEmpty());
    }
    EXPECT_EQ(fixture.Settings().MachineDescription, QStringLiteral("Rainer Combi 1250"));
}

TEST_F(PackageStartTest, APackageThatCannotStartOnThisHostChangesNothing) {
    if (!QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty())
        GTEST_SKIP() << "wine is installed: the fixture's Windows stand-ins would run";
    fixture.WriteLines(Program + "Kestrova.cfg",
                       {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", "2", "Kestrova", "******"});
    Start(Package::Drawing);
    EXPECT_TRUE(frame.log.isEmpty());
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
    EXPECT_EQ(fixture.Settings().MachineNumber, 1);
}

} // namespace
