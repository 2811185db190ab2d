#include "editing/ProgramReader.h"

#include <gtest/gtest.h>
#include <vector>

using namespace kestrova;

namespace {

using K = ElementKind;

struct Expected {
    std::int32_t line;
    K kind;
    float x, y;
    std::uint16_t tool = 0;
    bool blockDelete = false;
};

struct Centre {
    std::uint32_t element;
    float x, y;
};

void ExpectElements(const ProgramDrawing& drawing, const std::vector<Expected>& expected) {
    ASSERT_EQ(drawing.Count(), expected.size());
    for (std::uint32_t i = 0; i < drawing.Count(); ++i) {
        SCOPED_TRACE(testing::Message() << "element " << i);
        const DrawnElement& e = drawing.At(i);
        EXPECT_EQ(e.line, expected[i].line);
        EXPECT_EQ(e.kind, expected[i].kind);
        EXPECT_FLOAT_EQ(e.x, expected[i].x);
        EXPECT_FLOAT_EQ(e.y, expected[i].y);
        EXPECT_EQ(e.tool, expected[i].tool);
        EXPECT_EQ(e.blockDelete, expected[i].blockDelete);
    }
}

void ExpectCentres(const ProgramDrawing& drawing, const std::vector<Centre>& expected) {
    ASSERT_EQ(drawing.Arcs().size(), expected.size());
    for (const Centre& c : expected) {
        SCOPED_TRACE(testing::Message() << "arc " << c.element);
        const auto centre = drawing.CentreOf(c.element);
        ASSERT_TRUE(centre);
        EXPECT_NEAR(centre->x, c.x, 1e-4);
        EXPECT_NEAR(centre->y, c.y, 1e-4);
    }
}

const ReaderOptions Profiling{false};

TEST(ProgramReaderTest, AbsoluteAndIncrementalMoves) {
    const ProgramDrawing d = ReadProgramText("%\r\n"
                                             "O100 (PLATE)\r\n"
                                             "N10 G90 G00 X10 Y20\r\n"
                                             "N20 G01 X30.5 Y20\r\n"
                                             "N30 G91 X-10 Y5.\r\n"
                                             "N40 Y+005\r\n"
                                             "N50 G90 X0 Y0\r\n"
                                             "M30\r\n",
                                             Profiling);
    ExpectElements(d, {
                          {2, K::Rapid, 10, 20},
                          {3, K::Feed, 30.5f, 20},
                          {4, K::Feed, 20.5f, 25},
                          {5, K::Feed, 20.5f, 30},
                          {6, K::Feed, 0, 0},
                      });
    ASSERT_EQ(d.mWords.size(), 1u);
    EXPECT_EQ(d.mWords[0].line, 7);
    EXPECT_EQ(d.mWords[0].Text(), QStringLiteral("M30"));
    EXPECT_EQ(d.blocksNotDrawn, 0);
    EXPECT_EQ(d.lines, 8);
    EXPECT_FLOAT_EQ(d.bounds.maxX, 30.5f);
    EXPECT_FLOAT_EQ(d.bounds.maxY, 30);
}

TEST(ProgramReaderTest, ArcsBothWaysWithCentreOrRadius) {
    const ProgramDrawing d = ReadProgramText("G00 X10 Y0\n"
                                             "G02 X0 Y10 I-10 J0\n"  // clockwise, the long way round
                                             "G03 X-10 Y0 R10\n"     // short counter-clockwise
                                             "G02 X0 Y-10 R-10\n"    // long clockwise
                                             "G03 I0 J10\n"          // a full circle
                                             "G91 G02 X10 Y10 I10\n" // incremental end
                                             "G90 G03 X50 Y0 R1\n",  // too short a radius
                                             Profiling);
    ExpectElements(d, {
                          {0, K::Rapid, 10, 0},
                          {1, K::ArcCw, 0, 10},
                          {2, K::ArcCcw, -10, 0},
                          {3, K::ArcCw, 0, -10},
                          {4, K::ArcCcw, 0, -10},
                          {5, K::ArcCw, 10, 0},
                          {6, K::ArcCcw, 50, 0},
                      });
    ExpectCentres(d, {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 10 - 10}, {5, 10, -10}, {6, 30, 0}});
    EXPECT_FALSE(d.CentreOf(0));
    EXPECT_EQ(d.blocksNotDrawn, 1);
    EXPECT_EQ(d.linesNotDrawn, std::vector<std::int32_t>{6});
    // The bounds hold the whole circles the arcs lie on: the last one's radius is 20.
    EXPECT_FLOAT_EQ(d.bounds.minX, -10);
    EXPECT_FLOAT_EQ(d.bounds.maxY, 20);
}

TEST(ProgramReaderTest, ToolsHitsAndBlockDeleteOnAPunchingMachine) {
    const ProgramDrawing d = ReadProgramText("G01 X5 Y5\n"        // no tool yet: a move, not a hit
                                             "T1 G00 X100 Y100\n" // a rapid never strikes
                                             "G01 X110\n"
                                             "/X120\n"
                                             "T22\n"
                                             "X130 Y0100.\n"
                                             "G00 X0 Y0\n"
                                             "G02 X10 Y0 R5\n");
    ExpectElements(d, {
                          {0, K::Feed, 5, 5},
                          {1, K::Rapid, 100, 100, 1},
                          {2, K::Hit, 110, 100, 1},
                          {3, K::Hit, 120, 100, 1, true},
                          {5, K::Hit, 130, 100, 22},
                          {6, K::Rapid, 0, 0, 22},
                          {7, K::ArcCw, 10, 0, 22},
                      });
    EXPECT_EQ(d.toolsUsed, (std::vector<std::uint16_t>{1, 22}));

    // The same text on a profiling machine cuts where the punch would strike.
    const ProgramDrawing cut = ReadProgramText("T1\nG01 X110\n/X120\n", Profiling);
    ExpectElements(cut, {{1, K::Feed, 110, 0, 1}, {2, K::Feed, 120, 0, 1, true}});
}

TEST(ProgramReaderTest, CoordinateSpellings) {
    struct Case {
        const char* word;
        float value;
    };
    const Case cases[] = {
        {"X25", 25},     {"X0025", 25}, {"X25.0", 25},        {"X+25.", 25},
        {"X-.5", -0.5f}, {"x7", 7},     {"X-012.50", -12.5f}, {"X1234.5678", 1234.5678f},
        {"X0", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.word);
        const ProgramDrawing d = ReadProgramText(QByteArray("G01 ") + c.word, Profiling);
        ASSERT_EQ(d.Count(), 1u);
        EXPECT_FLOAT_EQ(d.At(0).x, c.value);
        EXPECT_EQ(d.blocksNotDrawn, 0);
    }
}

TEST(ProgramReaderTest, CommentsAndGarbageAreCountedNeverFatal) {
    const ProgramDrawing d = ReadProgramText("N1 (X99 Y99 G02 IN A COMMENT) G01 X1 Y1\n"
                                             "N2 Q5 X2\n"
                                             "N3 G17 X3\n"
                                             "N4 X Y4\n"
                                             "N5 #$@\n"
                                             "N6 G01.5\n"
                                             "N7 X4 ; Y99\n"
                                             "(SHEET 1000 x 500 - 2 MM)\n"
                                             "(SHEET 9X9)\n"
                                             "F2000 S300 :12 %\n"
                                             "(UNCLOSED X77\n"
                                             "N8 G92 X2500. Y1250.\n"
                                             "N9 G04 X2\n"
                                             "N10 G28 X0 Y0\n"
                                             "N11 X5\n",
                                             Profiling);
    // The sheet size of G92, a dwell's time and a reference return are no moves: the tool goes
    // on from where it was.
    ExpectElements(d, {
                          {0, K::Feed, 1, 1},
                          {1, K::Feed, 2, 1},
                          {2, K::Feed, 3, 1},
                          {3, K::Feed, 3, 4},
                          {6, K::Feed, 4, 4},
                          {14, K::Feed, 5, 4},
                      });
    EXPECT_EQ(d.blocksNotDrawn, 8);
    EXPECT_EQ(d.linesNotDrawn, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 11, 12, 13}));
    ASSERT_TRUE(d.sheet);
    EXPECT_FLOAT_EQ(d.sheet->first, 1000);
    EXPECT_FLOAT_EQ(d.sheet->second, 500);
}

TEST(ProgramReaderTest, ElementsOfLinesAcrossStorageBlocks) {
    // More elements than one storage block holds, every third line drawing nothing.
    QByteArray text;
    const std::int32_t blocks = std::int32_t(ProgramDrawing::ChunkSize) * 3 / 2 + 600;
    for (std::int32_t i = 0; i < blocks; ++i)
        text += i % 3 == 2 ? "M08\n" : "G01 X" + QByteArray::number(i) + "\n";
    const ProgramDrawing d = ReadProgramText(text, Profiling);
    const auto elementOf = [](std::int32_t line) { return std::uint32_t(line - (line + 1) / 3); };
    ASSERT_GT(d.Count(), ProgramDrawing::ChunkSize);
    ASSERT_EQ(d.Count(), elementOf(blocks - 2) + 1);
    struct Case {
        std::int32_t line;
        std::optional<std::uint32_t> atOrAfter, exact;
    };
    const Case cases[] = {
        {0, 0, 0},
        {2, 2, std::nullopt},
        {3, 2, 2},
        {98'400, elementOf(98'400), elementOf(98'400)},
        {98'402, elementOf(98'403), std::nullopt},
        {blocks - 2, d.Count() - 1, d.Count() - 1},
        {blocks - 1, std::nullopt, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(d.ElementAtOrAfterLine(c.line), c.atOrAfter);
        EXPECT_EQ(d.ElementOfLine(c.line), c.exact);
        if (c.exact) {
            EXPECT_FLOAT_EQ(d.At(*c.exact).x, float(c.line));
        }
    }
}

} // namespace
