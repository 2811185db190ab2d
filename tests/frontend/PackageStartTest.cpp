#include "Frontend/PackageStart.h"

#include "RecordingFrame.h"
#include "filestore/LastFile.h"

#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Program = QStringLiteral("C:\\Kestrova\\");

class PackageStartTest : public FrameTest {
protected:
    void Start(Package package) { StartPackage(fx.session(), launcher, frame, package); }
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
        fx.Remove(Program + InfoOf(package).executable);
        Start(package);
        expected << QStringLiteral("<beep>") << QString::fromLatin1(text);
    }
    EXPECT_EQ(fx.Messages().Log(), expected);
    for (const auto& shown : fx.Messages().Messages()) {
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
        RememberLastFile(fx.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
        fx.WriteLines(Program + "Next.cfg", {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", row.machine,
                                             row.directory, "******"});
        fx.WriteProgram(Program + InfoOf(row.package).executable, "cp Next.cfg Kestrova.cfg");
        Start(row.package);
        EXPECT_EQ(frame.log, QStringList{"disable " + entry} + row.reload + QStringList{"enable " + entry});
        EXPECT_EQ(fx.Settings().MachineNumber, row.machineAfter);
        EXPECT_EQ(fx.Settings().CurrentDir, row.directoryAfter);
        // The remembered drawing was one of the machine before.
        EXPECT_EQ(fx.ReadLines(Program + "Lastfile.lst").size(), row.machineAfter == 1 ? 3 : 1);
        EXPECT_TRUE(fx.Messages().Log().isEmpty());
    }
    EXPECT_EQ(fx.Settings().MachineDescription, QStringLiteral("Rainer Combi 1250"));
}

TEST_F(PackageStartTest, APackageThatCannotStartOnThisHostChangesNothing) {
    if (!QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty())
        GTEST_SKIP() << "wine is installed: the fx's Windows stand-ins would run";
    fx.WriteLines(Program + "Kestrova.cfg",
                  {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", "2", "Kestrova", "******"});
    Start(Package::Drawing);
    EXPECT_TRUE(frame.log.isEmpty());
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
    EXPECT_EQ(fx.Settings().MachineNumber, 1);
}

} // namespace
