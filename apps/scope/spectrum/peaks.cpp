#include "spectrum/peaks.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace scope {

namespace {

constexpr double kRise = 4; // 6 dB

/// For each bin the lowest power between it and the nearest one before that is stronger, or the first one.
template <class Weaker>
std::vector<double> dipsBefore(std::span<const double> power, Weaker&& weaker)
{
    struct Bin {
        double power, dip;
    };
    std::vector<Bin> falling;
    std::vector<double> dips;
    for (const double here : power) {
        double dip = here;
        for (; !falling.empty() && weaker(falling.back().power, here); falling.pop_back())
            dip = std::min(dip, falling.back().dip);
        falling.push_back({here, dip});
        dips.push_back(dip);
    }
    return dips;
}

} // namespace

std::vector<SpectrumPeak> findPeaks(std::span<const double> frequencies, std::span<const double> power,
                                    const OneSided& oneSided, std::size_t most)
{
    // What leaks out of an end bin must not look stronger than the bin itself because it is counted twice.
    std::vector<double> even(power.begin(), power.end());
    even.front() *= oneSided.firstAlone ? 2 : 1;
    even.back() *= oneSided.lastAlone ? 2 : 1;
    // Of equals, the first counts as the stronger.
    const std::vector<double> before = dipsBefore(even, std::less<>());
    const std::vector<double> after = dipsBefore(std::vector<double>(even.rbegin(), even.rend()), std::less_equal<>());

    std::vector<SpectrumPeak> peaks;
    for (std::size_t k = 1; k + 1 < even.size(); ++k) {
        const double here = even[k];
        if (!(here > even[k - 1] && here >= even[k + 1] &&
              here >= kRise * std::max(before[k], after[even.size() - 1 - k])))
            continue;
        const double low = std::log(even[k - 1] / here), high = std::log(even[k + 1] / here);
        const double offset = (low - high) / (2 * (low + high));
        const double spacing = frequencies[k + 1] - frequencies[k];
        peaks.push_back({frequencies[k] + (std::isfinite(offset) ? offset * spacing : 0), here});
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](auto& a, auto& b) { return a.power > b.power; });
    peaks.resize(std::min(most, peaks.size()));
    return peaks;
}

} // namespace scope
