#pragma once

#include "Canvas.h"
#include "Sizes.h"
#include "drawTrace.h"

#include <tracery/figures/Figure.h>

#include <span>
#include <string>
#include <vector>

namespace tracery::figures {

/// The vertical markers of a figure: a dashed line through every panel, a triangle above the first one, and
/// the label above that, in as many rows as keep labels apart. A label for which three rows are not enough is
/// left out.
class PositionMarkers {
public:
    /// left, right  edges of the plotting area, which `limits` map to; labels reach to `mostRight` at most
    PositionMarkers(Canvas& canvas, std::span<const Marker> positions, const Limits& limits, const Sizes& sizes,
                    double left, double right, double mostRight);

    /// Of the strip with labels and triangles above the first panel.
    double height() const;
    void drawLabels(Canvas& canvas, double bottom) const;
    void drawLines(Canvas& canvas, const Box& panel) const;

private:
    struct Placed {
        double x;
        std::string label;
        double labelLeft;
        int row;
    };
    double rowHeight() const;

    Sizes sizes_;
    std::vector<Placed> placed_;
    int rows_ = 0;
};

/// Draws the horizontal markers of a panel with their labels at its right edge.
void drawLevels(Canvas& canvas, std::span<const Marker> levels, const Mapping& mapping, const Sizes& sizes);

} // namespace tracery::figures
