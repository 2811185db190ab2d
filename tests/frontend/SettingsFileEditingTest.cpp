#include "settings/SettingsFileEditing.h"

#include "RecordingFrame.h"
#include "settings/BackupCommand.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString EditorCfg = QStringLiteral("C:\\Kestrova\\Editor.cfg");

class SettingsFileEditingTest : public FrameTest {
protected:
    void SetUp() override {
        FrameTest::SetUp();
        // Records its arguments, one a line.
        fx.WriteProgram(QStringLiteral("C:\\Tools\\Edit.exe"), "printf '%s\\r\\n' \"$#\" \"$@\" > Args.txt");
    }
    void Edit(const QString& file, bool wait = true, bool hide = true) {
        EditSettingsFile(fx.session(), launcher, frame, file, wait, hide);
    }
    QStringList Args() { return fx.ReadLines(QStringLiteral("C:\\Kestrova\\Args.txt")); }
};

TEST_F(SettingsFileEditingTest, TheEditorGetsTheFileWithoutTheOptionsOfItsLineAndAMissingOneEmpty) {
    fx.WriteLines(EditorCfg, {QStringLiteral("  C:\\Tools\\Edit.exe /readonly /tabs=4 ")});
    Edit(QStringLiteral(" C:\\Kestrova\\Setup\\Data\\PUNCH1.mch "));
    EXPECT_EQ(Args(), (QStringList{"1", fx.Host("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch")}));
    EXPECT_EQ(frame.log, (QStringList{"hide", "show"}));
    EXPECT_TRUE(builtIn.isEmpty());

    // A missing file is created empty first; neither waited for nor hidden, the window stays.
    frame.log.clear();
    const QString file = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.xtr");
    ASSERT_FALSE(fx.OnDisk(file));
    Edit(file, false, false);
    EXPECT_EQ(fx.Read(file), QByteArray());
    EXPECT_TRUE(frame.log.isEmpty());
}

TEST_F(SettingsFileEditingTest, NotepadAndEditorsThatCannotRunHereOpenTheBuiltInEditor) {
    // Empty means "Notepad.exe "; a path with a blank is cut at it, leaving a program that is not there.
    for (const char* line :
         {"", "Notepad.exe", "C:\\WINDOWS\\NOTEPAD.EXE", "C:\\Program Files\\Editor\\Ed.exe"}) {
        fx.WriteLines(EditorCfg, {QString::fromLatin1(line)});
        Edit(QStringLiteral("C:\\Kestrova\\Backup.cfg"), true, false);
    }
    EXPECT_EQ(builtIn, QStringList(4, QStringLiteral("C:\\Kestrova\\Backup.cfg")));
    EXPECT_EQ(frame.log, QStringList(4, QStringLiteral("show")));
}

TEST_F(SettingsFileEditingTest, BackupRunsItsCommandLineWithTheWindowHiddenOrIsRefusedWithoutOne) {
    // The fx's "Backup.cfg" holds one empty line.
    RunBackup(fx.session(), launcher, frame);
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "No Backup Software Selected !"}));
    EXPECT_TRUE(frame.log.isEmpty());

    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Backup.cfg"),
                  {QStringLiteral("C:\\Tools\\Edit.exe /all \"C:\\Jobs\"")});
    RunBackup(fx.session(), launcher, frame);
    EXPECT_EQ(Args(), (QStringList{"2", "/all", "C:\\Jobs"}));
    EXPECT_EQ(frame.log, (QStringList{"hide", "show"}));
}

} // namespace
