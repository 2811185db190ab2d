#pragma once

#include <QColor>
#include <cstdint>
#include <vector>

namespace kestrova {

// The colour of each tool of a program, as the view marks its hits and its legend shows it:
// the tools in ascending order of number, each a hue well apart from the ones before, so that
// two tools of one program never share a colour. Before any tool, and for rapid moves, the
// plain colour of the drawing.
class ToolColours {
public:
    ToolColours() = default;
    explicit ToolColours(const std::vector<std::uint16_t>& tools);

    [[nodiscard]] QRgb Of(std::uint16_t tool) const { return tool < m_table.size() ? m_table[tool] : NoTool; }

    static constexpr QRgb NoTool = 0xff303030;

private:
    std::vector<QRgb> m_table;
};

} // namespace kestrova
