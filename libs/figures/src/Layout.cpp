#include "Layout.h"

#include <tracery/figures/Figure.h>

#include <algorithm>
#include <cmath>

namespace tracery::figures {

namespace {
constexpr double kEdge = 6; // pixels at scale 1 around everything
constexpr double kUnderTitle = 8;
constexpr double kUnderLegend = 6;
constexpr double kPanelGap = 1.5;     // in sizes of tick labels, so that those of neighbouring panels never meet
constexpr double kLegendShare = 0.22; // of the height
} // namespace

Layout::Layout(int width, int height, const Sizes& sizes, const Heights& heights)
{
    double top = kEdge * sizes.scale;
    titleBaseline = top + sizes.title.size;
    if (heights.title)
        top = titleBaseline + kUnderTitle * sizes.scale;
    legendTop = top;
    if (heights.legend > 0)
        top += heights.legend + kUnderLegend * sizes.scale;
    top += heights.strip;
    top = std::ceil(std::max(top, sizes.tick.size)); // room for half of a tick label at least

    labelBaseline = height - kEdge * sizes.scale;
    tickBaseline = labelBaseline - 1.45 * sizes.label.size;
    const double bottom = std::max(top + 1, std::floor(tickBaseline - 1.4 * sizes.tick.size));

    const auto count = static_cast<double>(heights.panels);
    const double gap = std::round(std::min(kPanelGap * sizes.tick.size, (bottom - top) / (2 * count)));
    const double each = (bottom - top - gap * (count - 1)) / count;
    const double left = leftMargin(width);
    for (std::size_t i = 0; i < heights.panels; ++i) {
        const double start = top + static_cast<double>(i) * (each + gap);
        const double panelTop = std::round(start);
        panels.push_back({left, panelTop, left + plotWidth(width), std::max(panelTop + 1, std::round(start + each))});
    }
}

int mostLegendRows(int height, const Sizes& sizes)
{
    return std::max(1, static_cast<int>(kLegendShare * height / (1.45 * sizes.tick.size)));
}

} // namespace tracery::figures
