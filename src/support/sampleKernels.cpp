#include "support/sampleKernels.h"

#include "support/lanes.h"

namespace tracery {

namespace {

using Lanes = FourLanes::Lanes;
using Mask = FourLanes::Mask;
constexpr std::size_t kLanes = 4;

template <bool kLow, bool kHigh>
TRACERY_INLINE std::size_t quietLengthWithin(const double* data, std::size_t count, const LaneBounds& bounds)
{
    Lanes low, high;
    load(low, bounds.low);
    load(high, bounds.high);
    std::size_t i = 0;
    for (; i + kQuietStep <= count; i += kQuietStep) {
        Mask inside = {-1, -1, -1, -1};
        for (std::size_t k = 0; k < kQuietStep; k += kLanes) {
            Lanes x;
            load(x, data + i + k);
            if constexpr (kLow)
                inside &= x >= low;
            if constexpr (kHigh)
                inside &= x <= high;
        }
        if (bitsOf(inside) != 0xF)
            break;
    }
    return i;
}

/// One comparison a double suffices where all intervals are open to the same side.
TRACERY_INLINE std::size_t quietLengthOf(const double* data, std::size_t count, const LaneBounds& bounds)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    bool openBelow = true, openAbove = true;
    for (std::size_t k = 0; k < kLanes; ++k) {
        openBelow &= bounds.low[k] == -kInf;
        openAbove &= bounds.high[k] == kInf;
    }
    if (openBelow)
        return quietLengthWithin<false, true>(data, count, bounds);
    if (openAbove)
        return quietLengthWithin<true, false>(data, count, bounds);
    return quietLengthWithin<true, true>(data, count, bounds);
}

TRACERY_INLINE LevelMasks compareSamplesOf(const double* pairs, double low, double high)
{
    const Lanes lows = {low, low, low, low}, highs = {high, high, high, high};
    LevelMasks masks{0, 0};
    for (std::size_t i = 0; i < kMaskSamples; i += kLanes) {
        Lanes first, second;
        load(first, pairs + 2 * i);
        load(second, pairs + 2 * i + kLanes);
        const Lanes values = __builtin_shufflevector(first, second, 1, 3, 5, 7);
        masks.below |= std::uint64_t{bitsOf(values < lows)} << i;
        masks.above |= std::uint64_t{bitsOf(values > highs)} << i;
    }
    return masks;
}

TRACERY_AVX2 std::size_t quietLengthAvx2(const double* data, std::size_t count, const LaneBounds& bounds)
{
    return quietLengthOf(data, count, bounds);
}
TRACERY_AVX2 LevelMasks compareSamplesAvx2(const double* pairs, double low, double high)
{
    return compareSamplesOf(pairs, low, high);
}

} // namespace

std::size_t quietLength(const double* data, std::size_t count, const LaneBounds& bounds)
{
    return useAvx2() ? quietLengthAvx2(data, count, bounds) : quietLengthOf(data, count, bounds);
}

LevelMasks compareSamples(const double* pairs, double low, double high)
{
    return useAvx2() ? compareSamplesAvx2(pairs, low, high) : compareSamplesOf(pairs, low, high);
}

} // namespace tracery
