#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace tracery {

/// Closed intervals for each of four doubles in a row: two samples of a real block, or one of a complex one.
struct LaneBounds {
    double low[4];
    double high[4];
};

/// Doubles per step of quietLength.
constexpr std::size_t kQuietStep = 32;

/// How many doubles from the front lie all within the bounds, lane by lane; a multiple of kQuietStep. NaN is outside.
std::size_t quietLength(const double* data, std::size_t count, const LaneBounds& bounds);

/// Which of up to 64 samples lie below one level and above another: bit i for sample i.
struct LevelMasks {
    std::uint64_t below;
    std::uint64_t above;
};
constexpr std::size_t kMaskSamples = 64;

/// Masks of 64 (time, value) pairs: value < low, value > high.
LevelMasks compareSamples(const double* pairs, double low, double high);

} // namespace tracery
