#pragma once

#include "editing/ProgramDrawing.h"

#include <QByteArray>
#include <QByteArrayView>

namespace kestrova {

struct ReaderOptions {
    // The program is for a punching machine: where a tool is active, a positioning block is a hit.
    bool punching = true;
};

// Reads the ISO text of a punching or profiling machine's NC program, block by block (one line
// each), into its drawing. What a block means:
//  - G90 absolute, G91 incremental coordinates (modal; absolute at the start).
//  - G00 rapid, G01 linear, G02/G03 clockwise/counter-clockwise arcs (modal; G01 at the start).
//    An arc's centre is I/J, always incremental from the arc's start point, or comes from R: a
//    positive R the arc of at most half a circle, a negative one the longer arc. An arc with I/J
//    and no X/Y, or ending where it starts, is a full circle.
//  - X/Y with or without a decimal point, with leading zeros and signs: "X25", "X0025",
//    "X25.0" and "X+25." are all 25 mm (or inches): a whole number is whole units, as the
//    suite's own programs write them, never thousandths.
//  - T words choose the tool; M words are kept as their text; F and S are understood and not
//    drawn; the block number (N, O, ":"), "%", comments in parentheses and everything after ";"
//    are passed over. "/" at the start is a block delete: drawn, and shown as such.
//  - How a tool acts on a punching machine: once a T word has chosen a tool, every G01 block
//    with X or Y (written or modal) positions the sheet under the punch and strikes it: a hit,
//    marked in the tool's colour. G00 positions without striking (a rapid); G02/G03 nibble or
//    cut along the arc and are drawn as arcs. Without a tool, or on a profiling machine, G01 is
//    a feed move.
// Any other word (an unknown G code, a letter this system does not draw, a letter without a
// number, a stray character) is passed over and its block counted, never an error.
class ProgramReader {
public:
    explicit ProgramReader(ReaderOptions options = {});

    // The next line of the program, without its line end.
    void ReadLine(QByteArrayView line);
    // The drawing of every line read; the reader is spent.
    [[nodiscard]] ProgramDrawing Finish();

    [[nodiscard]] const ProgramDrawing& Drawing() const { return m_drawing; }

private:
    void ReadComment(QByteArrayView comment);

    ReaderOptions m_options;
    ProgramDrawing m_drawing;
    std::vector<bool> m_toolActs;
    std::int32_t m_line = 0;
    double m_x = 0;
    double m_y = 0;
    int m_motion = 1;
    bool m_incremental = false;
    std::uint16_t m_tool = 0;
};

// The drawing of a whole program text.
[[nodiscard]] ProgramDrawing ReadProgramText(const QByteArray& text, ReaderOptions options = {});

} // namespace kestrova
