#include "platform/ProgramLauncher.h"

#include "InstallationFixture.h"

#include <QStandardPaths>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

// Stands in for the built-in editor: remembers what it opened and is done at once.
struct EditorDouble {
    struct Closed final : StartedProgram {
        [[nodiscard]] bool Running() const override { return false; }
    };
    QStringList opened;
    ProgramLauncher::EditorWindow Factory() {
        return [this](const QString& file) {
            opened << file;
            return std::make_unique<Closed>();
        };
    }
};

class ProgramLauncherTest : public ::testing::Test {
protected:
    void SetUp() override {
        fixture.Files().ChangeDrive(QStringLiteral("C:"));
        fixture.Files().ChangeDirectory(QStringLiteral("C:\\Kestrova"));
        launcher.SetBuiltInEditor(editor.Factory());
        // Records how it was called: the number of arguments, each argument, the directory.
        fixture.WriteProgram(QStringLiteral("C:\\Tools\\Record.exe"),
                             "printf '%s\\r\\n' \"$#\" \"$@\" \"$(pwd)\" > Record.txt");
    }
    QStringList Recorded() { return fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Record.txt")); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    EditorDouble editor;
};

TEST_F(ProgramLauncherTest, AnExecutableRunsInTheCurrentDirectoryWithHostFileNames) {
    auto program = launcher.Start(QStringLiteral("c:\\tools\\RECORD.EXE"), {QStringLiteral("Kestrova.cms")});
    ASSERT_TRUE(program);
    EXPECT_TRUE(WaitFor(*program));
    EXPECT_FALSE(program->Running());
    EXPECT_EQ(Recorded(), (QStringList{"1", fixture.Host("C:\\Kestrova\\Kestrova.cms"), fixture.StartDir()}));
}

TEST_F(ProgramLauncherTest, WhatCannotStartGivesNothing) {
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Tools\\Missing.exe")));
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Tools")));
    EXPECT_FALSE(launcher.StartCommandLine(QStringLiteral("   ")));
    EXPECT_FALSE(launcher.StartDetached(QStringLiteral("Q:\\Unmapped.exe")));
    // A plain file that is not a program at all.
    EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Kestrova\\Machine.lst")));
    if (QStandardPaths::findExecutable(QStringLiteral("wine")).isEmpty()) {
        // A Windows program needs wine; the fixture's stand-ins are not executable.
        EXPECT_FALSE(launcher.Start(QStringLiteral("C:\\Kestrova\\Kestrdrw.exe")));
    }
    EXPECT_TRUE(editor.opened.isEmpty());
}

} // namespace
