#pragma once

#include "Canvas.h"
#include "Sizes.h"

#include <string>
#include <vector>

namespace tracery::figures {

/// Where everything of a figure stands, in whole pixels. From the top: title, legend, strip of position
/// markers, the panels, tick labels, axis label.
struct Layout {
    struct Heights {
        bool title;
        double legend;
        double strip;
        std::size_t panels;
    };
    Layout(int width, int height, const Sizes& sizes, const Heights& heights);

    double titleBaseline;
    double legendTop;
    std::vector<Box> panels;
    double tickBaseline;  ///< of the labels under the lowest panel
    double labelBaseline; ///< of the axis label under them
};

/// How many rows of legend a figure has room for.
int mostLegendRows(int height, const Sizes& sizes);

} // namespace tracery::figures
