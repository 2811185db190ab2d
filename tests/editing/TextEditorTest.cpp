#include "InstallationFixture.h"
#include "editing/forms/TextEditorWindow.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

class TextEditorTest : public ::testing::Test {
protected:
    const QString file = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.pst");
    InstallationFixture fixture;
};

TEST_F(TextEditorTest, UnchangedTextIsSavedByteForByteAndAnEditAsSingleByteLinesWithCrLf) {
    // Mixed line ends and high bytes: nothing of it is touched without an edit.
    const QByteArray original("Post\r\nG\xe9ometrie \x80\nlast");
    fixture.Write(file, original);
    TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
    EXPECT_EQ(editor.Text(), QStringLiteral("Post\nG\u00e9ometrie \u20ac\nlast"));
    EXPECT_FALSE(editor.Modified());
    EXPECT_TRUE(editor.Save());
    EXPECT_EQ(fixture.Read(file), original);

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

TEST_F(TextEditorTest, AChangedLineLeavesEveryOtherByteAsItWas) {
    QByteArray allBytes;
    for (int b = 0; b < 256; ++b)
        if (b != '\r' && b != '\n')
            allBytes.append(char(b));
    struct Case {
        QByteArray before;
        QByteArray after; // "Z" typed at the start of line 2
    };
    const Case cases[] = {
        {"%\r\nG01 X1\r\nM30\r\n", "%\r\nZG01 X1\r\nM30\r\n"},
        {"%\nG01\rX\r\nlast", "%\nZG01\rX\r\nlast"},
        {"a\n\n\r\r\n", "a\nZ\n\r\r\n"},
        {allBytes + "\r\n\n" + allBytes, allBytes + "\r\nZ\n" + allBytes},
        {"one line", "one line\r\nZ"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.before.toStdString());
        fixture.Write(file, c.before);
        TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
        editor.GoToLine(2);
        auto* text = editor.findChild<QPlainTextEdit*>(QStringLiteral("EditorText"));
        if (text->document()->blockCount() < 2) {
            text->moveCursor(QTextCursor::End);
            QTest::keyClick(text, Qt::Key_Return);
        }
        QTest::keyClicks(text, QStringLiteral("Z"));
        ASSERT_TRUE(editor.Save());
        EXPECT_EQ(fixture.Read(file), c.after);
    }
}

TEST_F(TextEditorTest, FindReplaceGoToLineAndUndo) {
    fixture.Write(file, "N10 G01 X5\r\nN20 g01 X6\r\nN30 G00 X7\r\n");
    TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
    auto* position = editor.findChild<QLabel*>(QStringLiteral("EditorPosition"));
    editor.GoToLine(3);
    EXPECT_EQ(position->text(), QStringLiteral("Ln 3, Col 1"));
    editor.GoToLine(99);
    EXPECT_EQ(editor.Position(), QStringLiteral("Ln 4, Col 1"));

    // From the end the search starts at the top again; case matters only when asked.
    EXPECT_TRUE(editor.FindNext(QStringLiteral("g01"), true));
    EXPECT_EQ(editor.Position(), QStringLiteral("Ln 2, Col 8"));
    EXPECT_TRUE(editor.FindNext(QStringLiteral("g01"), false));
    EXPECT_EQ(editor.Position(), QStringLiteral("Ln 1, Col 8"));
    EXPECT_FALSE(editor.FindNext(QStringLiteral("G02"), false));
    EXPECT_EQ(fixture.Messages().Beeps(), 1);

    EXPECT_EQ(editor.ReplaceAll(QStringLiteral("g01"), QStringLiteral("G02"), false), 2);
    EXPECT_EQ(editor.Text(), QStringLiteral("N10 G02 X5\nN20 G02 X6\nN30 G00 X7\n"));
    EXPECT_TRUE(editor.ReplaceNext(QStringLiteral("X"), QStringLiteral("Y"), true)); // selects the first X
    EXPECT_TRUE(editor.ReplaceNext(QStringLiteral("X"), QStringLiteral("Y"), true)); // replaces it
    EXPECT_EQ(editor.Text(), QStringLiteral("N10 G02 Y5\nN20 G02 X6\nN30 G00 X7\n"));

    // Each replace is one step back; Replace All is one step for all of its changes.
    auto* text = editor.findChild<QPlainTextEdit*>(QStringLiteral("EditorText"));
    text->undo();
    text->undo();
    EXPECT_EQ(editor.Text(), QStringLiteral("N10 G01 X5\nN20 g01 X6\nN30 G00 X7\n"));
    EXPECT_FALSE(editor.Modified());
}

TEST_F(TextEditorTest, ALargeProgramIsReadInWhileTheEventLoopRuns) {
    // Several pieces, and the largest program the editor is meant for.
    for (const qsizetype size : {4'000'000, 20'000'000}) {
        SCOPED_TRACE(size);
        QByteArray program("%\r\n");
        program.reserve(size + 64);
        for (int i = 1; program.size() < size; ++i)
            program +=
                "N" + QByteArray::number(i) + " G01 X" + QByteArray::number(i % 997) + ".5 Y20 (HIT)\r\n";
        program += "M30";
        fixture.Write(file, program);
        TextEditorWindow editor(fixture.Files(), fixture.Messages(), file);
        ASSERT_TRUE(editor.Loading());
        EXPECT_FALSE(editor.Save()); // nothing is written from a text that is not all in

        // A timer of another window keeps firing while the file comes in, and between its ticks
        // the reading goes on: it sees the progress at many points on the way.
        QStringList progressSeen;
        QTimer other;
        QObject::connect(&other, &QTimer::timeout, [&] {
            const QString shown = editor.statusBar()->currentMessage();
            if (editor.Loading() && (progressSeen.isEmpty() || progressSeen.last() != shown))
                progressSeen << shown;
        });
        other.start(0);
        QEventLoop loop;
        QObject::connect(&editor, &TextEditorWindow::LoadFinished, &loop, &QEventLoop::quit);
        QTimer::singleShot(120000, &loop, &QEventLoop::quit);
        loop.exec();
        ASSERT_FALSE(editor.Loading());
        EXPECT_GE(progressSeen.size(), 3) << progressSeen.join(u',').toStdString();
        EXPECT_FALSE(editor.Modified());
        const QString text = editor.Text(); // every CR LF is one line break on screen
        EXPECT_EQ(text.size() + text.count(u'\n'), program.size());

        editor.GoToLine(2);
        QTest::keyClicks(editor.findChild<QPlainTextEdit*>(QStringLiteral("EditorText")),
                         QStringLiteral("/"));
        ASSERT_TRUE(editor.Save());
        EXPECT_EQ(fixture.Read(file), program.left(3) + "/" + program.mid(3));
    }
}

} // namespace
