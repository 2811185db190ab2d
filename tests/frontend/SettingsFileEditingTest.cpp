#include "settings/SettingsFileEditing.h"

#include "InstallationFixture.h"
#include "RecordingFrame.h"
#include "settings/BackupCommand.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::RecordingFrame;

namespace {

const QString EditorCfg = QStringLiteral("C:\\Kestrova\\Editor.cfg");

class SettingsFileEditingTest : public ::testing::Test {
protected:
    void SetUp() override {
        fixture.Load();
        launcher.SetBuiltInEditor([this](const QString& file) {
            builtIn << file;
            struct Closed final : StartedProgram {
                [[nodiscard]] bool Running() const override { return false; }
            };
            return std::make_unique<Closed>();
        });
        // Records its arguments, one a line.
        fixture.WriteProgram(QStringLiteral("C:\\Tools\\Edit.exe"),
                             "printf '%s\\r\\n' \"$#\" \"$@\" > Args.txt");
    }
    void Edit(const QString& file, bool wait = true, bool hide = true) {
        EditSettingsFile(fixture.session(), launcher, frame, file, wait, hide);
    }
    QStringList Args() { return fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Args.txt")); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    RecordingFrame frame;
    QStringList builtIn;
};

TEST_F(SettingsFileEditingTest, TheEditorGetsTheFileWithoutTheOptionsOfItsLine) {
    fixture.WriteLines(EditorCfg, {QStringLiteral("  C:\\Tools\\Edit.exe /readonly /tabs=4 ")});
    Edit(QStringLiteral(" C:\\Kestrova\\Setup\\Data\\PUNCH1.mch "));
    EXPECT_EQ(Args(), (QStringList{"1", fixture.Host("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch")}));
    EXPECT_EQ(frame.log, (QStringList{"hide", "show"}));
    EXPECT_TRUE(builtIn.isEmpty());
}

TEST_F(SettingsFileEditingTest, AMissingFileIsCreatedEmptyFirst) {
    fixture.WriteLines(EditorCfg, {QStringLiteral("C:\\Tools\\Edit.exe")});
    const QString file = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.xtr");
    ASSERT_FALSE(fixture.OnDisk(file));
    Edit(file, false, false);
    EXPECT_EQ(fixture.Read(file), QByteArray());
    EXPECT_TRUE(frame.log.isEmpty());
}

TEST_F(SettingsFileEditingTest, NotepadAndEditorsThatCannotRunHereOpenTheBuiltInEditor) {
    // Empty means "Notepad.exe "; a path with a blank is cut at it, leaving a program that is not there.
    for (const char* line :
         {"", "Notepad.exe", "C:\\WINDOWS\\NOTEPAD.EXE", "C:\\Program Files\\Editor\\Ed.exe"}) {
        fixture.WriteLines(EditorCfg, {QString::fromLatin1(line)});
        Edit(QStringLiteral("C:\\Kestrova\\Backup.cfg"), true, false);
    }
    EXPECT_EQ(builtIn, QStringList(4, QStringLiteral("C:\\Kestrova\\Backup.cfg")));
    EXPECT_EQ(frame.log, QStringList(4, QStringLiteral("show")));
}

TEST_F(SettingsFileEditingTest, BackupRunsItsCommandLineWithTheWindowHiddenOrIsRefusedWithoutOne) {
    // The fixture's "Backup.cfg" holds one empty line.
    RunBackup(fixture.session(), launcher, frame);
    EXPECT_EQ(fixture.Messages().Log(), (QStringList{"<beep>", "No Backup Software Selected !"}));
    EXPECT_TRUE(frame.log.isEmpty());

    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Backup.cfg"),
                       {QStringLiteral("C:\\Tools\\Edit.exe /all \"C:\\Jobs\"")});
    RunBackup(fixture.session(), launcher, frame);
    EXPECT_EQ(Args(), (QStringList{"2", "/all", "C:\\Jobs"}));
    EXPECT_EQ(frame.log, (QStringList{"hide", "show"}));
}

} // namespace
