#include "editing/ProgramDrawing.h"

#include <algorithm>

namespace kestrova {

void Bounds::Add(float x, float y) {
    minX = std::min(minX, x);
    minY = std::min(minY, y);
    maxX = std::max(maxX, x);
    maxY = std::max(maxY, y);
}

void ProgramDrawing::Append(const DrawnElement& element) {
    if ((m_count & (ChunkSize - 1)) == 0)
        m_chunks.push_back(std::make_unique_for_overwrite<DrawnElement[]>(ChunkSize));
    m_chunks.back()[m_count & (ChunkSize - 1)] = element;
    ++m_count;
}

std::optional<ArcCentre> ProgramDrawing::CentreOf(std::uint32_t element) const {
    const auto found = std::lower_bound(m_arcs.begin(), m_arcs.end(), element,
                                        [](const ArcCentre& a, std::uint32_t e) { return a.element < e; });
    if (found == m_arcs.end() || found->element != element)
        return std::nullopt;
    return *found;
}

std::optional<std::uint32_t> ProgramDrawing::ElementAtOrAfterLine(std::int32_t line) const {
    // Elements come in the order of their lines.
    std::uint32_t low = 0, high = m_count;
    while (low < high) {
        const std::uint32_t mid = low + (high - low) / 2;
        if (At(mid).line < line)
            low = mid + 1;
        else
            high = mid;
    }
    if (low == m_count)
        return std::nullopt;
    return low;
}

std::optional<std::uint32_t> ProgramDrawing::ElementOfLine(std::int32_t line) const {
    const auto found = ElementAtOrAfterLine(line);
    if (!found || At(*found).line != line)
        return std::nullopt;
    return found;
}

} // namespace kestrova
