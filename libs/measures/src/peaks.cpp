#include <tracery/measures/peaks.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace tracery::measures {

namespace {

constexpr double kRise = 4;         // 6 dB
constexpr double kRounding = 1e-30; // of the strongest bin's power

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
                                    const OneSided& oneSided, PeakLevel level, std::size_t most)
{
    // What leaks out of an end bin must not look stronger than the bin itself because it is counted twice.
    std::vector<double> even(power.begin(), power.end());
    even.front() *= oneSided.firstAlone ? 2 : 1;
    even.back() *= oneSided.lastAlone ? 2 : 1;
    // Of equals, the first counts as the stronger.
    const std::vector<double> before = dipsBefore(even, std::less<>());
    const std::vector<double> after = dipsBefore(std::vector<double>(even.rbegin(), even.rend()), std::less_equal<>());

    const double least = kRounding * *std::max_element(even.begin(), even.end());
    std::vector<SpectrumPeak> peaks;
    for (std::size_t k = 1; k + 1 < even.size(); ++k) {
        const double here = even[k];
        if (!(here > even[k - 1] && here >= even[k + 1] && here > least &&
              here >= kRise * std::max(before[k], after[even.size() - 1 - k])))
            continue;
        const double low = std::log(even[k - 1] / here), high = std::log(even[k + 1] / here);
        const double top = (low - high) / (2 * (low + high));
        const double offset = std::isfinite(top) ? top : 0; // not beside bins without power
        const double rise = offset == 0 || level == PeakLevel::Bin ? 1 : std::exp((high - low) * offset / 4);
        peaks.push_back({frequencies[k] + offset * (frequencies[k + 1] - frequencies[k]), here * rise});
    }
    std::stable_sort(peaks.begin(), peaks.end(), [](auto& a, auto& b) { return a.power > b.power; });
    peaks.resize(std::min(most, peaks.size()));
    return peaks;
}

} // namespace tracery::measures
