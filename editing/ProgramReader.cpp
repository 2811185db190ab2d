#include "editing/ProgramReader.h"

#include "editing/LineEnds.h"

#include <algorithm>
#include <cmath>

namespace kestrova {

namespace {

// Blocks whose lines are kept for the view to name; the rest are only counted.
constexpr std::size_t LinesNotDrawnKept = 100;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

char Upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

// The number of an NC word from at on: sign, digits, a decimal point, digits. Advances at past
// it; nothing when no digit follows.
std::optional<double> NumberAt(QByteArrayView text, qsizetype& at) {
    qsizetype i = at;
    const qsizetype end = text.size();
    bool negative = false;
    if (i < end && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    double value = 0;
    bool digits = false;
    while (i < end && IsDigit(text[i])) {
        value = value * 10 + (text[i++] - '0');
        digits = true;
    }
    if (i < end && text[i] == '.') {
        ++i;
        double scale = 0.1;
        while (i < end && IsDigit(text[i])) {
            value += (text[i++] - '0') * scale;
            scale /= 10;
            digits = true;
        }
    }
    if (!digits)
        return std::nullopt;
    at = i;
    return negative ? -value : value;
}

// What one block says, before it moves anything.
struct Block {
    std::optional<double> x, y, i, j, r;
    int motion = -1;
    int distance = -1; // 90 or 91
    std::optional<double> tool;
    bool notUnderstood = false;
    bool noMove = false; // X and Y are the arguments of a code, not a place to go
};

// Codes whose X and Y are no move of the tool: a dwell's time, data set, the returns to the
// reference point, and the coordinate settings (a punching program's G92 gives its sheet size).
bool TakesXyAsArguments(int code) {
    return code == 4 || code == 10 || (code >= 27 && code <= 30) || code == 52 || code == 92;
}

} // namespace

ProgramReader::ProgramReader(ReaderOptions options) : m_options(options), m_toolActs(1 << 16, false) {}

void ProgramReader::ReadComment(QByteArrayView comment) {
    if (m_drawing.sheet)
        return;
    // "(SHEET 3000X1500 ...)": the sheet this program punches.
    qsizetype i = comment.indexOf("SHEET");
    if (i < 0)
        i = comment.indexOf("sheet");
    if (i < 0)
        return;
    i += 5;
    while (i < comment.size() && comment[i] == ' ')
        ++i;
    const auto width = NumberAt(comment, i);
    while (i < comment.size() && comment[i] == ' ')
        ++i;
    if (!width || i >= comment.size() || (Upper(comment[i]) != 'X' && comment[i] != '*'))
        return;
    ++i;
    while (i < comment.size() && comment[i] == ' ')
        ++i;
    const auto height = NumberAt(comment, i);
    if (height && *width > 0 && *height > 0)
        m_drawing.sheet = std::pair{float(*width), float(*height)};
}

void ProgramReader::ReadLine(QByteArrayView text) {
    const std::int32_t line = m_line++;
    Block block;
    qsizetype at = 0;
    const qsizetype end = text.size();
    while (at < end && (text[at] == ' ' || text[at] == '\t'))
        ++at;
    const bool blockDelete = at < end && text[at] == '/';
    if (blockDelete)
        ++at;
    while (at < end) {
        const char c = text[at];
        if (c == ' ' || c == '\t' || c == '%') {
            ++at;
            continue;
        }
        if (c == ';')
            break;
        if (c == '(') {
            qsizetype close = text.indexOf(')', at);
            if (close < 0)
                close = end;
            ReadComment(text.sliced(at + 1, close - at - 1));
            at = close + 1;
            continue;
        }
        const char letter = Upper(c);
        if (c == ':') { // an ISO program number
            ++at;
            (void)NumberAt(text, at);
            continue;
        }
        if (letter < 'A' || letter > 'Z') {
            block.notUnderstood = true;
            ++at;
            continue;
        }
        ++at;
        const qsizetype wordStart = at;
        const std::optional<double> value = NumberAt(text, at);
        if (!value) {
            block.notUnderstood = true;
            continue;
        }
        switch (letter) {
        case 'N':
        case 'O':
        case 'F':
        case 'S':
            break;
        case 'X':
            block.x = value;
            break;
        case 'Y':
            block.y = value;
            break;
        case 'I':
            block.i = value;
            break;
        case 'J':
            block.j = value;
            break;
        case 'R':
            block.r = value;
            break;
        case 'T':
            block.tool = value;
            break;
        case 'G': {
            const int code = int(*value);
            if (code != *value)
                block.notUnderstood = true;
            else if (code >= 0 && code <= 3)
                block.motion = code;
            else if (code == 90 || code == 91)
                block.distance = code;
            else {
                block.notUnderstood = true;
                block.noMove = block.noMove || TakesXyAsArguments(code);
            }
            break;
        }
        case 'M': {
            MWord word{line, {}};
            word.text[0] = 'M';
            const qsizetype length = std::min<qsizetype>(at - wordStart, qsizetype(word.text.size()) - 2);
            std::copy_n(text.data() + wordStart, length, word.text.data() + 1);
            m_drawing.mWords.push_back(word);
            break;
        }
        default:
            block.notUnderstood = true;
        }
    }

    const auto countNotDrawn = [&] {
        if (!block.notUnderstood)
            return;
        ++m_drawing.blocksNotDrawn;
        if (m_drawing.linesNotDrawn.size() < LinesNotDrawnKept)
            m_drawing.linesNotDrawn.push_back(line);
    };
    if (block.distance >= 0)
        m_incremental = block.distance == 91;
    if (block.motion >= 0)
        m_motion = block.motion;
    if (block.tool)
        m_tool = std::uint16_t(std::clamp(*block.tool, 0.0, 65535.0));

    const bool arc = m_motion == 2 || m_motion == 3;
    const bool moves = !block.noMove && (block.x || block.y || (arc && (block.i || block.j)));
    if (!moves) {
        countNotDrawn();
        return;
    }

    const double startX = m_x, startY = m_y;
    if (block.x)
        m_x = m_incremental ? m_x + *block.x : *block.x;
    if (block.y)
        m_y = m_incremental ? m_y + *block.y : *block.y;

    DrawnElement element;
    element.x = float(m_x);
    element.y = float(m_y);
    element.line = line;
    element.tool = m_tool;
    element.blockDelete = blockDelete;
    if (m_motion == 0)
        element.kind = ElementKind::Rapid;
    else if (m_motion == 1)
        element.kind = m_options.punching && m_tool > 0 ? ElementKind::Hit : ElementKind::Feed;
    else
        element.kind = m_motion == 2 ? ElementKind::ArcCw : ElementKind::ArcCcw;

    std::optional<std::pair<double, double>> centre;
    if (arc && (block.i || block.j)) {
        centre = std::pair{startX + block.i.value_or(0), startY + block.j.value_or(0)};
    } else if (arc && block.r && *block.r != 0) {
        // The centre on the perpendicular through the chord's middle: to the right of the way
        // from start to end for a short clockwise arc, to the left for a short counter-clockwise
        // one, and the other side for the long arcs (negative R).
        const double dx = m_x - startX, dy = m_y - startY;
        const double chord = std::hypot(dx, dy);
        const double radius = std::abs(*block.r);
        if (chord > 0) {
            const double h = std::sqrt(std::max(0.0, radius * radius - chord * chord / 4));
            const double side = (m_motion == 2 ? 1.0 : -1.0) * (*block.r > 0 ? 1.0 : -1.0);
            centre =
                std::pair{startX + dx / 2 + side * h * dy / chord, startY + dy / 2 - side * h * dx / chord};
            if (chord > 2 * radius + 1e-6)
                block.notUnderstood = true; // no such arc: drawn about the chord's middle
        }
    }
    if (arc && !centre)
        element.kind = ElementKind::Feed; // an arc without a centre is drawn as its chord

    if (centre) {
        m_drawing.AddArcCentre({m_drawing.Count(), float(centre->first), float(centre->second)});
        const double radius = std::hypot(startX - centre->first, startY - centre->second);
        m_drawing.bounds.Add(float(centre->first - radius), float(centre->second - radius));
        m_drawing.bounds.Add(float(centre->first + radius), float(centre->second + radius));
    }
    m_drawing.bounds.Add(element.x, element.y);
    if (element.kind != ElementKind::Rapid && element.tool > 0)
        m_toolActs[element.tool] = true;
    m_drawing.Append(element);
    countNotDrawn();
}

ProgramDrawing ProgramReader::Finish() {
    m_drawing.lines = m_line;
    m_drawing.toolsUsed.clear();
    for (std::size_t tool = 1; tool < m_toolActs.size(); ++tool)
        if (m_toolActs[tool])
            m_drawing.toolsUsed.push_back(std::uint16_t(tool));
    return std::move(m_drawing);
}

ProgramDrawing ReadProgramText(const QByteArray& text, ReaderOptions options) {
    ProgramReader reader(options);
    qsizetype at = 0;
    for (;;) {
        const LineSpan span = LineAt(text, at);
        if (span.end == LineEnd::None && span.length == 0 && span.start == text.size() && at > 0)
            break; // the empty line after the last line end is no block
        reader.ReadLine(QByteArrayView(text).sliced(span.start, span.length));
        if (span.end == LineEnd::None)
            break;
        at = span.start + span.length + qsizetype(qstrlen(LineEndBytes(span.end)));
    }
    return reader.Finish();
}

} // namespace kestrova
