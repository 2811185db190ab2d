#include "InstallationFixture.h"
#include "editing/forms/ProgramView.h"
#include "editing/forms/TextEditorWindow.h"

#include <QAction>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

class ProgramViewEditorTest : public ::testing::Test {
protected:
    // Opens the program in the editor and shows its drawing as the operator does, with F4's action.
    TextEditorWindow& Open(const QByteArray& program) {
        fixture.Write(file, program);
        editor = std::make_unique<TextEditorWindow>(fixture.Files(), fixture.Messages(), file, nullptr,
                                                    MachineFrame{100, 100, false, true});
        editor->resize(900, 500);
        editor->show();
        auto* action = editor->findChild<QAction*>(QStringLiteral("ShowDrawing"));
        EXPECT_EQ(action->shortcut(), QKeySequence(Qt::Key_F4));
        QSignalSpy read(&editor->Drawing(), &ProgramView::LoadFinished);
        action->trigger();
        EXPECT_TRUE(editor->DrawingShown());
        EXPECT_TRUE(read.wait(5000));
        return *editor;
    }

    const QString file = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Square.prg");
    InstallationFixture fixture;
    std::unique_ptr<TextEditorWindow> editor;
};

const QByteArray Program = "%\r\n"
                           "O1 (SHEET 100X100)\r\n"
                           "T1 G01 X20 Y20\r\n"
                           "X80 Y20\r\n"
                           "T2\r\n"
                           "X80 Y80\r\n"
                           "G00 X20 Y80\r\n"
                           "M30\r\n";

TEST_F(ProgramViewEditorTest, TheCursorLineHighlightsItsElementAndAClickOnOnePutsTheCursorOnItsLine) {
    TextEditorWindow& window = Open(Program);
    ProgramView& view = window.Drawing();
    ASSERT_EQ(view.Drawing().Count(), 4u);
    struct Case {
        int line; // as Go To Line counts, from 1
        std::optional<std::uint32_t> element;
    };
    const Case cases[] = {{3, 0}, {6, 2}, {5, std::nullopt}, {7, 3}, {4, 1}, {1, std::nullopt}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        window.GoToLine(c.line);
        EXPECT_EQ(view.Highlighted(), c.element);
    }
    // The arrow keys in the text move the highlight as well.
    window.GoToLine(3);
    QTest::keyClick(window.findChild<QPlainTextEdit*>(QStringLiteral("EditorText")), Qt::Key_Down);
    EXPECT_EQ(view.Highlighted(), 1u);

    // A click on an element puts the cursor on its line.
    const DrawingTransform& t = view.Transform();
    const struct {
        float x, y;
        QString position;
    } clicks[] = {
        {80, 80, QStringLiteral("Ln 6, Col 1")},
        {20, 20, QStringLiteral("Ln 3, Col 1")},
        {50, 80, QStringLiteral("Ln 7, Col 1")}, // on the rapid move
        {80, 20, QStringLiteral("Ln 4, Col 1")},
    };
    for (const auto& c : clicks) {
        SCOPED_TRACE(c.position.toStdString());
        QTest::mouseClick(&view, Qt::LeftButton, {},
                          QPoint(int(std::lround(t.ToX(c.x))), int(std::lround(t.ToY(c.y)))));
        EXPECT_EQ(window.Position(), c.position);
        EXPECT_EQ(view.Drawing().At(*view.Highlighted()).line + 1,
                  c.position.section(u' ', 1, 1).chopped(1).toInt());
    }
}

TEST_F(ProgramViewEditorTest, TheDrawingFollowsAnEditAndHidesWithF4) {
    TextEditorWindow& window = Open(Program);
    ProgramView& view = window.Drawing();
    // A line typed at the top moves every element one line down.
    window.GoToLine(1);
    auto* text = window.findChild<QPlainTextEdit*>(QStringLiteral("EditorText"));
    QTest::keyClicks(text, "G01 X50 Y50");
    QTest::keyClick(text, Qt::Key_Return);
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.Drawing().Count() == 5; }, 5000));
    EXPECT_EQ(view.Drawing().At(0).line, 0);
    EXPECT_EQ(view.Drawing().At(1).line, 3);
    window.GoToLine(7);
    EXPECT_EQ(view.Highlighted(), 3u);

    window.ShowDrawing(false);
    EXPECT_FALSE(window.DrawingShown());
    EXPECT_FALSE(window.findChild<QAction*>(QStringLiteral("ShowDrawing"))->isChecked());
}

} // namespace
