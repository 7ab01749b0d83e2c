#include "DenseLine.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tracery::figures {

DenseLine::DenseLine(cairo_t* context, double left, double right, double lineWidth)
    : context_(context), left_(std::floor(left)), halfWidth_(lineWidth / 2),
      columns_(static_cast<std::size_t>(std::ceil(right) - left_),
               {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
{}

void DenseLine::segment(Point from, Point to)
{
    if (from.x > to.x)
        std::swap(from, to);
    const double first = std::max(0.0, std::floor(from.x - left_));
    const double last = std::min(static_cast<double>(columns_.size()) - 1, std::floor(to.x - left_));
    const double slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0;
    // The part of the segment within each column it passes.
    for (double x = first; x <= last; ++x) {
        const double enter = left_ + x <= from.x ? from.y : from.y + (left_ + x - from.x) * slope;
        const double leave = left_ + x + 1 >= to.x ? to.y : from.y + (left_ + x + 1 - from.x) * slope;
        Column& column = columns_[static_cast<std::size_t>(x)];
        column.top = std::min({column.top, enter, leave});
        column.bottom = std::max({column.bottom, enter, leave});
    }
}

void DenseLine::fill()
{
    for (std::size_t i = 0; i < columns_.size(); ++i)
        if (columns_[i].top <= columns_[i].bottom)
            cairo_rectangle(context_, left_ + static_cast<double>(i), columns_[i].top - halfWidth_, 1,
                            columns_[i].bottom - columns_[i].top + 2 * halfWidth_);
    cairo_fill(context_);
}

} // namespace tracery::figures
