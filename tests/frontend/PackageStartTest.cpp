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
    // What a package leaves behind for the front end: "Kestrova.cfg" naming a machine and directory.
    void PackageChooses(int machine, const QString& directory) {
        fixture.WriteLines(Program + "Next.cfg",
                           {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup"),
                            QStringLiteral("C:\\Jobs"), QString::number(machine), directory,
                            QStringLiteral("******")});
    }
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

TEST_F(PackageStartTest, APackageThatEndsAtOnceStillLeadsToTheReload) {
    PackageChooses(1, QStringLiteral("Archive"));
    fixture.WriteProgram(Program + "Kestrdrw.exe", "cp Next.cfg Kestrova.cfg");
    Start(Package::Drawing);
    EXPECT_EQ(frame.log,
              (QStringList{"disable DrawingPackage", "logo", "setup", "status", "enable DrawingPackage"}));
    EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Archive"));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

TEST_F(PackageStartTest, AnotherMachineAfterThePackageResetsWhatBelongsToTheMachine) {
    RememberLastFile(fixture.session(), QStringLiteral("Parts"), QStringLiteral("Bracket"));
    PackageChooses(2, QStringLiteral("Kestrova"));
    fixture.WriteProgram(Program + "Kestrshp.exe", "cp Next.cfg Kestrova.cfg");
    Start(Package::ShapesTooling);
    EXPECT_EQ(frame.log, (QStringList{"disable ShapeManager", "logo", "machine changed", "setup", "status",
                                      "enable ShapeManager"}));
    EXPECT_EQ(fixture.Settings().MachineDescription, QStringLiteral("Rainer Combi 1250"));
    // The remembered drawing was one of the other machine.
    EXPECT_EQ(fixture.ReadLines(Program + "Lastfile.lst"), QStringList{"******"});
}

TEST_F(PackageStartTest, PackagesThatCannotChangeTheMachineAreNotFollowedByAReload) {
    PackageChooses(2, QStringLiteral("Kestrova"));
    for (Package package : {Package::ToolLibrary, Package::StockManager}) {
        frame.log.clear();
        fixture.WriteProgram(Program + InfoOf(package).executable, "cp Next.cfg Kestrova.cfg");
        Start(package);
        EXPECT_EQ(frame.log,
                  (QStringList{"disable " + InfoOf(package).entry, "enable " + InfoOf(package).entry}));
        EXPECT_EQ(fixture.Settings().MachineNumber, 1);
        EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Parts"));
    }
}

TEST_F(PackageStartTest, APackageThatCannotStartOnThisHostChangesNothing) {
    if (!QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty())
        GTEST_SKIP() << "wine is installed: the fixture's Windows stand-ins would run";
    PackageChooses(2, QStringLiteral("Kestrova"));
    fixture.Write(Program + "Kestrova.cfg", fixture.Read(Program + "Next.cfg"));
    Start(Package::Drawing);
    EXPECT_TRUE(frame.log.isEmpty());
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
    EXPECT_EQ(fixture.Settings().MachineNumber, 1);
}

} // namespace
