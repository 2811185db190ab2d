#include "editing/forms/ProgramView.h"

#include "editing/forms/ProgramPainter.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;

namespace {

// A punching machine with 100 x 100 mm of travel, so that a program's positions are easy to find.
const MachineFrame Machine{100, 100, false, true};

class ProgramViewTest : public ::testing::Test {
protected:
    void Show(const QByteArray& program) {
        view.SetMachine(Machine);
        view.resize(420, 360);
        view.SetProgramText(program);
        view.Fit();
    }
    [[nodiscard]] QPoint At(float x, float y) const {
        return QPoint(int(std::lround(view.Transform().ToX(x))), int(std::lround(view.Transform().ToY(y))));
    }
    [[nodiscard]] QRgb Pixel(const QImage& image, QPoint at) const { return image.pixel(at) | 0xff000000; }

    ProgramView view;
};

// A square of four hits, two with each tool, around an empty middle.
const QByteArray Square = "%\n"
                          "T1\n"
                          "G01 X20 Y20\n"
                          "X80 Y20\n"
                          "T2\n"
                          "X80 Y80\n"
                          "X20 Y80\n"
                          "M30\n";

TEST_F(ProgramViewTest, FourHitsWithTwoToolsShowTheirColoursAroundAnEmptyMiddle) {
    Show(Square);
    const QImage image = view.grab().toImage();
    const QRgb one = view.ToolColour(1), two = view.ToolColour(2);
    ASSERT_NE(one, two);
    struct Case {
        float x, y;
        QRgb colour;
    };
    const Case cases[] = {
        {20, 20, one}, {80, 20, one}, {80, 80, two}, {20, 80, two}, {50, 50, ProgramView::SheetColour}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.x << "," << c.y);
        const QPoint at = At(c.x, c.y);
        ASSERT_TRUE(image.rect().contains(at));
        EXPECT_EQ(Pixel(image, at), c.colour | 0xff000000);
    }
    // The square lies within the sheet, left to right and bottom to top as on the machine.
    EXPECT_LT(At(20, 20).x(), At(80, 20).x());
    EXPECT_GT(At(20, 20).y(), At(20, 80).y());
    EXPECT_EQ(view.Drawing().toolsUsed, (std::vector<std::uint16_t>{1, 2}));
    EXPECT_EQ(view.Notes(), QStringList{QStringLiteral("Travel 100 x 100 mm")});
}

TEST_F(ProgramViewTest, TheHighlightFollowsTheCurrentLine) {
    Show(Square);
    const QPoint ring(ProgramPainter::HitRadius + 4, 0);
    struct Case {
        int line;
        std::optional<std::uint32_t> element;
    };
    // The ring beside each hit is in the highlight's colour only for the element of the line.
    const Case cases[] = {{2, 0}, {6, 3}, {5, 2}, {1, std::nullopt}, {3, 1}, {4, std::nullopt}};
    const QPoint hits[] = {At(20, 20), At(80, 20), At(80, 80), At(20, 80)};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        view.SetCurrentLine(c.line);
        EXPECT_EQ(view.Highlighted(), c.element);
        const QImage image = view.grab().toImage();
        for (std::uint32_t i = 0; i < 4; ++i)
            EXPECT_EQ(Pixel(image, hits[i] + ring) == ProgramView::HighlightColour, c.element == i)
                << "hit " << i;
    }
}

TEST_F(ProgramViewTest, AClickOnAnElementNamesItsLine) {
    Show("G00 X10 Y10\n"
         "G01 X90 Y10\n"
         "G03 X90 Y90 R40\n"
         "T7\n"
         "G01 X50 Y50\n");
    QSignalSpy clicked(&view, &ProgramView::LineClicked);
    struct Case {
        QPoint at;
        int line; // -1: nothing there
    };
    const Case cases[] = {
        {At(50, 50), 4},
        {At(50, 10) + QPoint(0, 3), 1}, // beside the line, within reach
        {At(130, 50), 2},               // the arc's far side (centre 90,50, radius 40)
        {At(5, 5) + QPoint(-2, 2), 0},  // the rapid from the start point
        {At(30, 70), -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        clicked.clear();
        QTest::mouseClick(&view, Qt::LeftButton, {}, c.at);
        if (c.line < 0) {
            EXPECT_TRUE(clicked.isEmpty());
            continue;
        }
        ASSERT_EQ(clicked.size(), 1);
        EXPECT_EQ(clicked.front().front().toInt(), c.line);
        EXPECT_EQ(view.Drawing().At(*view.Highlighted()).line, c.line);
    }
}

TEST_F(ProgramViewTest, ZoomPanAndFitFromTheKeyboard) {
    Show(Square);
    const DrawingTransform fitted = view.Transform();
    const double w = view.width() / 10.0, h = view.height() / 10.0;
    const QPointF middle(view.width() / 2.0, view.height() / 2.0);
    struct Case {
        Qt::Key key;
        double scale;  // times the fitted scale
        double dx, dy; // how far a point of the sheet moves on the screen, for a pan
    };
    const Case cases[] = {
        {Qt::Key_Plus, 1.25, 0, 0},   {Qt::Key_Left, 1.25, w, 0}, {Qt::Key_Down, 1.25, 0, -h},
        {Qt::Key_Right, 1.25, -w, 0}, {Qt::Key_Up, 1.25, 0, h},   {Qt::Key_Minus, 1, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.key));
        const DrawingTransform before = view.Transform();
        QTest::keyClick(&view, c.key);
        const DrawingTransform after = view.Transform();
        EXPECT_NEAR(after.scale, fitted.scale * c.scale, 1e-9);
        EXPECT_NEAR(after.ToX(50) - before.ToX(50) * after.scale / before.scale,
                    c.dx + middle.x() * (1 - after.scale / before.scale), 1e-6);
        EXPECT_NEAR(after.ToY(50) - before.ToY(50) * after.scale / before.scale,
                    c.dy + middle.y() * (1 - after.scale / before.scale), 1e-6);
    }
    QTest::keyClick(&view, Qt::Key_Plus);
    QTest::keyClick(&view, Qt::Key_Right);
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_DOUBLE_EQ(view.Transform().scale, fitted.scale);
    EXPECT_DOUBLE_EQ(view.Transform().centreX, fitted.centreX);
    EXPECT_DOUBLE_EQ(view.Transform().centreY, fitted.centreY);
}

TEST_F(ProgramViewTest, AProgramOfManyHitsIsSetPixelByPixel) {
    // More hits than are drawn smoothly: a row of the first tool, then two of the second.
    QByteArray program = "T1\n";
    for (std::size_t i = 0; i <= ProgramPainter::SmoothLimit; ++i)
        program += "G01 X" + QByteArray::number(10 + double(i % 800) / 10) + " Y10\n";
    program += "/T2 X20 Y80\nT2 X80 Y80\n(SHEET 100X100)\nG17 X0\n";
    Show(program);
    const QImage image = view.grab().toImage();
    EXPECT_EQ(Pixel(image, At(50, 10)), view.ToolColour(1));
    EXPECT_EQ(Pixel(image, At(80, 80)), view.ToolColour(2));
    // A block delete is a hollow mark: its middle stays the sheet's, its edge the tool's.
    EXPECT_EQ(Pixel(image, At(20, 80)), ProgramView::SheetColour);
    EXPECT_EQ(Pixel(image, At(20, 80) + QPoint(1, 1)), view.ToolColour(2));
    EXPECT_EQ(Pixel(image, At(50, 50)), ProgramView::SheetColour);
    EXPECT_EQ(view.Notes(),
              (QStringList{QStringLiteral("Sheet 100 x 100 mm"),
                           QStringLiteral("1 block with words not drawn (first on line 50006)")}));
}

} // namespace
