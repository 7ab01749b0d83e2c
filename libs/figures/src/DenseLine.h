#pragma once

#include "Sizes.h"

#include <tracery/figures/Figure.h>

#include <cairo.h>

#include <vector>

namespace tracery::figures {

/// Draws a line whose segments fill whole pixel columns: of each column just the stretch from its lowest to its highest
/// place is filled, which looks the same as stroking every segment and takes a fraction of the time.
class DenseLine {
public:
    /// left, right  pixels between which there are columns
    DenseLine(cairo_t* context, double left, double right, double lineWidth);

    /// Adds a segment, in pixels.
    void segment(Point from, Point to);
    /// Segments may follow anywhere; nothing is to be joined.
    void finish() {}
    /// Fills what was added.
    void fill();

private:
    struct Column {
        double top;
        double bottom;
    };

    cairo_t* context_;
    double left_;
    double halfWidth_;
    std::vector<Column> columns_;
};

} // namespace tracery::figures
