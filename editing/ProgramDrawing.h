#pragma once

#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace kestrova {

// What one block of an NC program draws.
enum class ElementKind : std::uint8_t {
    Rapid,  // G00: the table travels, the tool does not act
    Feed,   // G01 on a profiling machine, or without a tool: a cut along a line
    ArcCw,  // G02
    ArcCcw, // G03
    Hit,    // a position where the punch strikes the sheet (ProgramReader.h says when)
};

// One drawn element: it runs from the end of the element before it (the start point for the
// first) to its own end point. Sixteen bytes, so that a program of millions of blocks stays
// small: floats are finer than any sheet needs, and the line is the program line (from 0, as
// the editor counts its blocks) of the block that drew it.
struct DrawnElement {
    float x = 0;
    float y = 0;
    std::int32_t line = 0;
    std::uint16_t tool = 0; // the tool active when it was drawn; 0 before the first T word
    ElementKind kind = ElementKind::Feed;
    bool blockDelete = false; // the block starts with "/": the control may skip it
};
static_assert(sizeof(DrawnElement) == 16);

// The centre of an arc element, kept apart because arcs are few in punching programs.
struct ArcCentre {
    std::uint32_t element = 0;
    float x = 0;
    float y = 0;
};

// An M word of the program, kept as its text for the operator ("M30").
struct MWord {
    std::int32_t line = 0;
    std::array<char, 8> text{};
    [[nodiscard]] QString Text() const { return QString::fromLatin1(text.data()); }
};

struct Bounds {
    float minX = 0, minY = 0, maxX = 0, maxY = 0;
    [[nodiscard]] bool Empty() const { return maxX < minX || maxY < minY; }
    void Add(float x, float y);
};

// The drawing of a whole program as the reader leaves it. Elements are kept in blocks of a
// fixed size, so that growing never copies what is already there nor holds twice the memory.
class ProgramDrawing {
public:
    static constexpr int ChunkBits = 16;
    static constexpr std::uint32_t ChunkSize = 1u << ChunkBits;

    [[nodiscard]] std::uint32_t Count() const { return m_count; }
    [[nodiscard]] const DrawnElement& At(std::uint32_t i) const {
        return m_chunks[i >> ChunkBits][i & (ChunkSize - 1)];
    }
    // The blocks of elements in order, for the loops that visit millions of them.
    [[nodiscard]] std::uint32_t ChunkCount() const { return std::uint32_t(m_chunks.size()); }
    [[nodiscard]] const DrawnElement* Chunk(std::uint32_t c) const { return m_chunks[c].get(); }
    [[nodiscard]] std::uint32_t ChunkLength(std::uint32_t c) const {
        return c + 1 < m_chunks.size() ? ChunkSize : m_count - c * ChunkSize;
    }
    void Append(const DrawnElement& element);

    // Visits every element in order as visit(index, element, fromX, fromY, centre): where it
    // starts, and the centre of an arc (null for the others). The one loop of the painter and of
    // the pick over programs of millions of elements.
    template <typename Visit>
    void ForEach(Visit&& visit) const {
        float fromX = startX, fromY = startY;
        auto arc = m_arcs.begin();
        for (std::uint32_t c = 0, i = 0; c < ChunkCount(); ++c) {
            const DrawnElement* chunk = Chunk(c);
            const std::uint32_t n = ChunkLength(c);
            for (std::uint32_t k = 0; k < n; ++k, ++i) {
                const DrawnElement& e = chunk[k];
                while (arc != m_arcs.end() && arc->element < i)
                    ++arc;
                visit(i, e, fromX, fromY, arc != m_arcs.end() && arc->element == i ? &*arc : nullptr);
                fromX = e.x;
                fromY = e.y;
            }
        }
    }

    // The centre of arc element i; nothing for an element that is not an arc.
    [[nodiscard]] std::optional<ArcCentre> CentreOf(std::uint32_t element) const;
    [[nodiscard]] const std::vector<ArcCentre>& Arcs() const { return m_arcs; }
    void AddArcCentre(const ArcCentre& centre) { m_arcs.push_back(centre); }

    // The first element drawn by the given line or, where that line drew none, by the next
    // line that did; nothing past the last element.
    [[nodiscard]] std::optional<std::uint32_t> ElementAtOrAfterLine(std::int32_t line) const;
    // The element drawn by exactly that line (its first one).
    [[nodiscard]] std::optional<std::uint32_t> ElementOfLine(std::int32_t line) const;

    // Where the program starts: the machine's zero, where the first element begins.
    float startX = 0;
    float startY = 0;
    // Every position the drawing reaches, the start point included.
    Bounds bounds{0, 0, 0, 0};
    // The sheet's size from a comment such as "(SHEET 3000X1500 ...)", when the program has one.
    std::optional<std::pair<float, float>> sheet;
    // The tools that act in the program, in ascending order.
    std::vector<std::uint16_t> toolsUsed;
    std::vector<MWord> mWords;
    // Blocks that held words the reader does not draw, and the first few of their lines.
    std::int64_t blocksNotDrawn = 0;
    std::vector<std::int32_t> linesNotDrawn;
    std::int64_t lines = 0;

private:
    std::vector<std::unique_ptr<DrawnElement[]>> m_chunks;
    std::uint32_t m_count = 0;
    std::vector<ArcCentre> m_arcs;
};

} // namespace kestrova
