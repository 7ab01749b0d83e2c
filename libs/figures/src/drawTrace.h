#pragma once

#include "Canvas.h"
#include "Styles.h"

#include <tracery/figures/Figure.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace tracery::figures {

/// From data to pixels: the limits map to the edges of the box.
class Mapping {
public:
    /// yDecades  the y axis is logarithmic; its limits are positive
    Mapping(const Box& box, const Limits& x, const Limits& y, bool yDecades = false);

    double x(double value) const { return placed(value, x_.low, box_.left, xScale_); }
    double y(double value) const { return placed(onYAxis(value), onYAxis(y_.low), box_.bottom, yScale_); }
    const Box& box() const { return box_; }
    const Limits& xLimits() const { return x_; }
    const Limits& yLimits() const { return y_; }
    bool yDecades() const { return yDecades_; }

private:
    double onYAxis(double value) const { return yDecades_ ? std::log10(std::max(value, 0.0)) : value; }
    static double placed(double value, double from, double start, double scale);

    Box box_;
    Limits x_;
    Limits y_;
    bool yDecades_;
    double xScale_;
    double yScale_;
};

/// The part of the segment a to b inside of the box; nothing when they do not meet. Works for any finite
/// coordinates up to 1e150: a cut is computed from the end that is nearer, so the slope next to the box stays
/// true.
std::optional<std::pair<Point, Point>> clipped(Point a, Point b, const Box& box);

/// Draws a trace into the mapping's box.
void drawTrace(Canvas& canvas, const Trace& trace, const Mapping& mapping, const TraceStyle& style, double lineWidth);

/// A sample line for the legend, in the trace's style.
void drawSample(Canvas& canvas, double left, double right, double y, const TraceStyle& style, double lineWidth);

} // namespace tracery::figures
