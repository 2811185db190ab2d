#include "editing/forms/ToolColours.h"

#include <algorithm>

namespace kestrova {

ToolColours::ToolColours(const std::vector<std::uint16_t>& tools) {
    const std::uint16_t highest = tools.empty() ? 0 : *std::max_element(tools.begin(), tools.end());
    m_table.assign(std::size_t(highest) + 1, NoTool);
    // The golden angle between neighbours keeps any two hues of the first tools far apart.
    for (std::size_t i = 0; i < tools.size(); ++i) {
        const int hue = int(i * 137.508) % 360;
        const int value = i % 2 == 0 ? 210 : 160;
        m_table[tools[i]] = QColor::fromHsv(hue, 230, value).rgb();
    }
}

} // namespace kestrova
