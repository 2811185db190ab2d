#include "platform/ScreenText.h"
#include "editing/forms/TextEditorWindow.h"
#include "InstallationFixture.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

TEST(ScreenTextTest, EveryByteComesBackAsItWas) {
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    const QString screen = ScreenTextOf(all);
    EXPECT_EQ(BytesOfScreenText(screen), all);
    // Shown as Windows-1252: 0x80 is the euro sign, 0x9F "Ÿ"; Latin-1 above 0xA0.
    EXPECT_EQ(screen.at(0x80), QChar(0x20AC));
    EXPECT_EQ(screen.at(0x9F), QChar(0x0178));
    EXPECT_EQ(screen.at(0xE9), QChar(0xE9));
    EXPECT_EQ(BytesOfScreenText(QStringLiteral("\u4e2d")), QByteArray("?"));
}

class TextEditorTest : public ::testing::Test {
protected:
    const QString file = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.pst");
    InstallationFixture fixture;
};

TEST_F(TextEditorTest, SavingUnchangedTextLeavesTheFileByteForByte) {
    // Mixed line ends and high bytes: nothing of it is touched without an edit.
    const QByteArray original("Post\r\nG\xe9ometrie \x80\nlast");
    fixture.Write(file, original);
    TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
    EXPECT_EQ(editor.Text(), QStringLiteral("Post\nG\u00e9ometrie \u20ac\nlast"));
    EXPECT_FALSE(editor.Modified());
    EXPECT_TRUE(editor.Save());
    EXPECT_EQ(fixture.Read(file), original);
}

TEST_F(TextEditorTest, AnEditIsSavedAsSingleByteLinesWithCrLf) {
    fixture.Write(file, "Feed\r\n");
    TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
    editor.SetText(QStringLiteral("Feed : 2000\nTrailer \u20ac\n"));
    ASSERT_TRUE(editor.Modified());
    EXPECT_TRUE(editor.Save());
    EXPECT_EQ(fixture.Read(file), QByteArray("Feed : 2000\r\nTrailer \x80\r\n"));
    EXPECT_FALSE(editor.Modified());
}

TEST_F(TextEditorTest, TheOpenWindowRunsUntilClosedAndAsksAboutUnsavedChanges) {
    fixture.Write(file, "A\r\n");
    QWidget owner;
    auto program = TextEditorWindow::Open(fixture.Files(), fixture.Messages(), file, owner);
    EXPECT_TRUE(program->Running());
    TextEditorWindow* found = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* editor = qobject_cast<TextEditorWindow*>(w); editor && editor->isVisible())
            found = editor;
    ASSERT_TRUE(found);
    found->SetText(QStringLiteral("B\n"));

    fixture.Messages().Script({Answer::Cancel, Answer::Yes});
    found->close();
    EXPECT_TRUE(program->Running()); // Cancel keeps it open
    found->close();
    EXPECT_FALSE(program->Running());
    EXPECT_EQ(fixture.Messages().Texts(),
              QStringList(2, QStringLiteral("Save Changes To \"C:\\Kestrova\\Setup\\Data\\PUNCH1.pst\" ?")));
    EXPECT_EQ(fixture.Read(file), QByteArray("B\r\n"));
}

} // namespace
