#pragma once

#include <cstddef>
#include <span>

namespace tracery {

/// What a thinning pass leaves: the doubles written, and the time of the point that opened the last column.
struct ThinnedLine {
    std::size_t written;
    double columnStart;
};

/// Reduces a line to the opening point and the extremes of each pixel column, in one pass.
/// line         (time, value) pairs
/// columnStart  time of the point that opened the current column; -inf or NaN for none
/// out          room for as many points as the line has: each one is written at most once
/// Extremes of the last column are dropped.
ThinnedLine thinLine(std::span<const double> line, double columnsPerSecond, double columnStart, std::span<double> out);

} // namespace tracery
