#pragma once

#include "Canvas.h"

namespace tracery::figures {

/// Sizes of text and lines, which grow more slowly than the figure.
struct Sizes {
    Sizes(int width, int height);

    double scale; ///< 1 at 1200 × 600 pixels
    Font tick;
    Font label;
    Font title;
    double hairline;  ///< frame, grid, markers; whole pixels
    double traceLine; ///< 1 to 1.5 pixels
};

/// Pixels left and right of the plotting area; they depend on the width alone.
int leftMargin(int width);
int rightMargin(int width);

} // namespace tracery::figures
