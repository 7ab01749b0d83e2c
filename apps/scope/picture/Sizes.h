#pragma once

#include "picture/Canvas.h"

namespace scope {

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

inline constexpr Colour kWhite = {1, 1, 1};
inline constexpr Colour kInk = {0.13, 0.13, 0.13};   ///< text
inline constexpr Colour kFrame = {0.35, 0.35, 0.35}; ///< frame and its ticks
inline constexpr Colour kGrid = {0.87, 0.87, 0.87};
inline constexpr Colour kZeroLine = {0.66, 0.66, 0.66}; ///< the grid line at 0
inline constexpr Colour kMarker = {0.30, 0.30, 0.30};

} // namespace scope
