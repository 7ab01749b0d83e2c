#include "SineShape.h"

#include <tracery/measures/peaks.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace tracery::measures {

namespace {

constexpr double kRise = 4;     // 6 dB
constexpr double kAlike = 0.06; // shares of the strongest bin
constexpr std::size_t kFewBins = 8;
constexpr std::size_t kSurroundings = 32; // bins on either side
constexpr double kLeastLeaking = 8;       // side lobes are 13 dB below their sine at least
constexpr double kMostBetween = 4;        // times its strongest bin's power that a sine between bins may have

/// For each bin the lowest value of `ground` between it and the nearest bin before that is stronger, or the first one.
template <class Weaker>
std::vector<double> dipsBefore(std::span<const double> power, std::span<const double> ground, Weaker&& weaker)
{
    struct Bin {
        double power, dip;
    };
    std::vector<Bin> falling;
    std::vector<double> dips;
    for (std::size_t k = 0; k < power.size(); ++k) {
        const double here = power[k];
        double dip = ground[k];
        for (; !falling.empty() && weaker(falling.back().power, here); falling.pop_back())
            dip = std::min(dip, falling.back().dip);
        falling.push_back({here, dip});
        dips.push_back(dip);
    }
    return dips;
}

/// The power that a quarter of the bins does not reach; 0 of hardly any bins.
double lowerQuarter(std::span<const double> bins)
{
    if (bins.size() < kFewBins)
        return 0;
    std::array<double, kSurroundings> sorted{};
    std::ranges::copy(bins, sorted.begin());
    const auto quarter = sorted.begin() + static_cast<std::ptrdiff_t>(bins.size() / 4);
    std::nth_element(sorted.begin(), quarter, sorted.begin() + static_cast<std::ptrdiff_t>(bins.size()));
    return *quarter;
}

/// What stays of the spectrum without its peaks: by bin, what most of the bins on one side of it have.
std::vector<double> floorOf(std::span<const double> power)
{
    std::vector<double> floor(power.size());
    for (std::size_t k = 0; k < power.size(); ++k) {
        const std::size_t before = std::min(k, kSurroundings), after = std::min(power.size() - k - 1, kSurroundings);
        floor[k] = std::max(lowerQuarter(power.subspan(k - before, before)), lowerQuarter(power.subspan(k + 1, after)));
    }
    return floor;
}

/// A bin, and beyond the ends of the spectrum its repetition or its mirror image.
double powerAt(std::span<const double> power, std::ptrdiff_t bin, const PeakSearch& search)
{
    const auto count = static_cast<std::ptrdiff_t>(power.size());
    if (search.complex)
        bin = (bin + count) % count;
    else if (bin >= count)
        bin = static_cast<std::ptrdiff_t>(search.segment) - bin;
    return power[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(std::abs(bin), 0, count - 1))];
}

/// For each bin the higher of the lowest values of `ground` before and after it, up to a stronger bin.
std::vector<double> dipsBeside(std::span<const double> power, std::span<const double> ground)
{
    // Of equals, the first counts as the stronger.
    std::vector<double> dips = dipsBefore(power, ground, std::less<>());
    const std::vector<double> after =
        dipsBefore(std::vector<double>(power.rbegin(), power.rend()),
                   std::vector<double>(ground.rbegin(), ground.rend()), std::less_equal<>());
    for (std::size_t k = 0; k < dips.size(); ++k)
        dips[k] = std::max(dips[k], after[dips.size() - 1 - k]);
    return dips;
}

std::vector<std::size_t> peakBins(std::span<const double> power, const PeakSearch& search)
{
    // The whole circle of bins, negative frequencies as well, cut at the weakest: so what lies at an end has two sides.
    const std::size_t count = search.complex ? power.size() : search.segment;
    const auto weakest = static_cast<std::size_t>(std::ranges::min_element(power) - power.begin());
    std::vector<double> circle(count);
    for (std::size_t i = 0; i < count; ++i)
        circle[i] = powerAt(power, static_cast<std::ptrdiff_t>((i + weakest) % count), search);
    const std::vector<double> dips = dipsBeside(circle, circle);
    const std::vector<double> floors = dipsBeside(circle, floorOf(circle));
    const double least = search.range * *std::ranges::max_element(power);
    std::vector<bool> found(power.size());
    for (std::size_t i = 0; i < count; ++i) {
        const double here = circle[i];
        if (here > circle[(i + count - 1) % count] && here >= circle[(i + 1) % count] && here > least &&
            here >= kRise * dips[i] && here >= search.prominence * floors[i]) {
            const std::size_t bin = (i + weakest) % count;
            found[bin < power.size() ? bin : count - bin] = true;
        }
    }
    std::vector<std::size_t> bins;
    for (std::size_t k = 0; k < power.size(); ++k)
        if (found[k])
            bins.push_back(k);
    std::ranges::stable_sort(bins, std::greater<>(), [&](std::size_t k) { return power[k]; });
    return bins;
}

} // namespace

std::vector<SpectrumPeak> findPeaks(std::span<const double> frequencies, std::span<const double> power,
                                    const PeakSearch& search)
{
    if (search.most == 0 || power.size() < 3)
        return {};
    std::vector<double> even(power.begin(), power.end());
    if (!search.complex) { // the ends have no negative frequency whose power the others have as well
        even.front() *= 2;
        even.back() *= search.segment % 2 == 0 ? 2 : 1;
    }
    const SineShape shape(search.window, search.segment, search.complex);
    const auto likeConstant = [&](const SineShape::Bins& bins, double away) {
        const double share = shape.powerAt(away, {0, 1}) / shape.powerAt(0, {0, 1});
        return std::abs(bins[static_cast<std::size_t>(away) + 2] / bins[2] - share) < kAlike;
    };
    const double width = frequencies[1] - frequencies[0];
    std::vector<SineShape::Sine> sines;
    std::vector<SpectrumPeak> peaks;
    double last = 0; // power of the bin of the last peak that is wanted, if there are no stronger ones
    for (const std::size_t k : peakBins(even, search)) {
        if (kMostBetween * even[k] < last)
            break;
        const auto bin = static_cast<double>(k);
        double leaked = 0;
        for (auto sine = sines.begin(); sine != sines.end() && sine->power > kLeastLeaking * even[k]; ++sine)
            leaked += shape.powerAt(bin, *sine);
        if (even[k] < kRise * leaked) // a side lobe
            continue;
        SineShape::Bins around{};
        for (std::size_t i = 0; i < around.size(); ++i)
            around[i] = powerAt(even, static_cast<std::ptrdiff_t>(k + i) - 2, search);
        const bool end = !search.complex && (k == 0 || 2 * k == search.segment);
        if (end && likeConstant(around, 1) && likeConstant(around, 2)) { // does not turn within a segment
            sines.push_back({bin, even[k] / 2});
            if (k > 0)
                peaks.push_back({frequencies[k], power[k]});
            continue;
        }
        sines.push_back(shape.fit(bin, around));
        const double found = search.complex ? sines.back().bin : std::abs(sines.back().bin);
        peaks.push_back({frequencies[k] + (found - bin) * width, sines.back().power});
        if (peaks.size() == search.most)
            last = even[k];
    }
    std::ranges::stable_sort(peaks, std::greater<>(), &SpectrumPeak::power);
    peaks.resize(std::min(search.most, peaks.size()));
    return peaks;
}

double noiseProminence(double averages, std::size_t bins)
{
    // The mean power of noise has a chi-squared distribution; its quantiles by Wilson and Hilferty's formula, from those
    // of a normal one.
    const double chance = 0.01 / static_cast<double>(bins);
    double low = 0, high = 40;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (std::erfc(middle / std::numbers::sqrt2) / 2 > chance ? low : high) = middle;
    }
    const double middle = 1 - 1 / (9 * averages), width = 1 / (3 * std::sqrt(averages));
    constexpr double kQuarter = -0.6745;
    const double floorError = 1 + 0.9 / std::sqrt(averages); // as measured: the surroundings are noise, too
    return floorError * std::pow((middle + width * high) / (middle + width * kQuarter), 3);
}

} // namespace tracery::measures
