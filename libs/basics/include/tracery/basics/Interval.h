#pragma once

#include <algorithm>
#include <limits>

namespace tracery::basics {

/// From low to high, both included. At first it holds nothing: its ends are reversed.
struct Interval {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    bool empty() const { return !(low <= high); }
    bool contains(double value) const { return low <= value && value <= high; }
    /// Widens it to hold this too; NaN adds nothing.
    void extend(double value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    /// Adds another one; an empty one adds nothing.
    void extend(const Interval& other)
    {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
};

} // namespace tracery::basics
