#include "comfortableLimits.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tracery::figures {

namespace {

constexpr double kFarthest = 1e300;       // so that a span and its pixels cannot overflow
constexpr double kNarrowest = 1e-280;     // so that the step between ticks stays a normal number
constexpr double kNarrowestSpacings = 8;  // of an axis, in units of the spacing of doubles at the limits
constexpr double kConstantSpacings = 256; // what varies less is constant but for rounding

double spacings(double count, double low, double high)
{
    const double magnitude = std::max(std::abs(low), std::abs(high));
    return std::max(kNarrowest, magnitude * (count * std::numeric_limits<double>::epsilon()));
}

} // namespace

double narrowestSpan(double low, double high) { return spacings(kNarrowestSpacings, low, high); }

Limits usableLimits(double low, double high)
{
    if (!(low <= high))
        return {0, 1};
    low = std::clamp(low, -kFarthest, kFarthest);
    high = std::clamp(high, -kFarthest, kFarthest);
    if (low == high)
        return comfortableLimits(low, high);
    const double missing = narrowestSpan(low, high) - (high - low);
    return missing > 0 ? Limits{low - missing, high + missing} : Limits{low, high};
}

Limits usableDecades(double low, double high)
{
    if (!(low > 0 && low <= high))
        return {1, 10};
    low = std::clamp(low, kNarrowest, kFarthest);
    high = std::clamp(high, kNarrowest, kFarthest);
    return {low, std::max(high, 10 * low)};
}

Limits comfortableLimits(double low, double high)
{
    if (!(low <= high) || std::isinf(low) || std::isinf(high))
        return {0, 1};
    low = std::clamp(low, -kFarthest, kFarthest);
    high = std::clamp(high, -kFarthest, kFarthest);
    if (high - low < spacings(kConstantSpacings, low, high)) {
        const double reach = low == 0 ? 1 : std::max(std::abs(low) / 10, kNarrowest);
        return {low - reach, high + reach};
    }
    // A grid of 1, 2 or 5 × 10ⁿ, at most a twentieth of the range, to round the 5 % margin outward to.
    const double margin = (high - low) / 20;
    const double power = std::pow(10.0, std::floor(std::log10(margin)));
    const double lead = margin / power;
    const double grid = (lead >= 5 ? 5 : lead >= 2 ? 2 : 1) * power;
    return {std::floor((low - margin) / grid) * grid, std::ceil((high + margin) / grid) * grid};
}

} // namespace tracery::figures
