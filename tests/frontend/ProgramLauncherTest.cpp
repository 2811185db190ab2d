#include "platform/ProgramLauncher.h"

#include "RecordingFrame.h"

#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class ProgramLauncherTest : public FrameTest {
protected:
    void SetUp() override {
        FrameTest::SetUp();
        fx.Files().ChangeDrive(QStringLiteral("C:"));
        fx.Files().ChangeDirectory(QStringLiteral("C:\\Kestrova"));
        // Records how it was called: the number of arguments, each argument, the directory.
        fx.WriteProgram(QStringLiteral("C:\\Tools\\Record.exe"),
                        "printf '%s\\r\\n' \"$#\" \"$@\" \"$(pwd)\" > Record.txt");
    }
    QStringList Recorded() { return fx.ReadLines(QStringLiteral("C:\\Kestrova\\Record.txt")); }
};

TEST_F(ProgramLauncherTest, AnExecutableRunsInTheCurrentDirectoryWithHostFileNames) {
    auto program = launcher.Start(QStringLiteral("c:\\tools\\RECORD.EXE"), {QStringLiteral("Kestrova.cms")});
    ASSERT_TRUE(program);
    EXPECT_TRUE(WaitFor(*program));
    EXPECT_FALSE(program->Running());
    EXPECT_EQ(Recorded(), (QStringList{"1", fx.Host("C:\\Kestrova\\Kestrova.cms"), fx.StartDir()}));
}

TEST_F(ProgramLauncherTest, WhatCannotStartGivesNothing) {
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Tools\\Missing.exe")));
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Tools")));
    EXPECT_FALSE(launcher.StartCommandLine(QStringLiteral("   ")));
    EXPECT_FALSE(launcher.StartDetached(QStringLiteral("Q:\\Unmapped.exe")));
    // A plain file that is not a program at all.
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Kestrova\\Machine.lst")));
    if (QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty()) {
        // A Windows program needs wine; the fx's stand-ins are not executable.
        EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Kestrova\\Kestrdrw.exe")));
    }
    EXPECT_TRUE(builtIn.isEmpty());
}

} // namespace
