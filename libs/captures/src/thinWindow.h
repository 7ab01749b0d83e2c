#pragma once

#include "CaptureView.h"

#include <cstdint>
#include <vector>

namespace tracery::captures {

/// A line's steps, and how they are thinned.
struct LineWindow {
    std::size_t line;
    std::int64_t first, end; ///< inside the view
    Time origin;
    double columnsPerSecond;
    bool finish; ///< whether the last column's extremes are sent out as well
};

/// The points, (time, value), that batch thinning of the steps gives. The overview says where the extremes of whole blocks
/// are; what blocks do not cover is looked at.
void thinWindow(const CaptureView& view, const LineWindow& window, std::vector<double>& points);

} // namespace tracery::captures
