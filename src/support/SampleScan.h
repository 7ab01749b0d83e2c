#pragma once

#include "support/sampleKernels.h"
#include "support/vectorUnit.h"

#include <tracery/SampleView.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

/// How detectors read blocks of samples: numbers that are times and values by turns. Real blocks and parts of complex ones
/// differ in their stride alone.
namespace tracery {

/// A block whose stride the compiler knows.
template <std::size_t kStride>
struct TimedSamples {
    const double* first;
    std::size_t count; ///< of samples

    TimedSample operator[](std::size_t i) const { return {first[2 * kStride * i], first[(2 * i + 1) * kStride]}; }
};

/// Calls `use` with the samples of a block.
template <class Use>
auto withSamples(SampleView pairs, Use&& use)
{
    if (pairs.stride == 1)
        return use(TimedSamples<1>{pairs.first, pairs.count / 2});
    return use(TimedSamples<2>{pairs.first, pairs.count / 2});
}

inline std::size_t countPairs(SampleView pairs) { return pairs.count / 2; }
inline TimedSample sampleAt(SampleView pairs, std::size_t i) { return {pairs[2 * i], pairs[2 * i + 1]}; }

/// The time at which the straight line from `before` to `now` reaches `level`. Not guarded: NaN without a
/// sample before, and not finite where the line is level, as it can be when auto level moves the level between samples.
inline double crossingTime(TimedSample before, TimedSample now, double level)
{
    return (now.time - before.time) / (now.value - before.value) * (level - before.value) + before.time;
}

/// Samples that a rule has no use for in its present state: those of a value in [low, high] that are not after
/// `latest`.
struct QuietSamples {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    double latest = std::numeric_limits<double>::infinity();
};
constexpr QuietSamples kNoneQuiet{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

/// The number of samples from sample `start` on that are surely quiet.
template <std::size_t kStride>
std::size_t countQuiet(TimedSamples<kStride> samples, std::size_t start, const QuietSamples& quiet)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    LaneBounds bounds{{-kInf, -kInf, -kInf, -kInf}, {kInf, kInf, kInf, kInf}};
    for (std::size_t time = 0; time < 4; time += 2 * kStride) {
        bounds.high[time] = quiet.latest;
        bounds.low[time + kStride] = quiet.low;
        bounds.high[time + kStride] = quiet.high;
    }
    constexpr std::size_t kStep = 2 * kStride; // doubles from sample to sample
    const std::size_t left = kStep * (samples.count - start);
    const std::size_t readable = left - std::min(left, kStride - 1); // nothing is behind the last value
    return quietLength(samples.first + kStep * start, readable, bounds) / kStep;
}

/// How many samples to take one by one before asking again whether what follows is quiet: less and less often where little
/// is.
template <std::size_t kShortest>
class Patience {
public:
    std::size_t stretch(std::size_t left) const { return std::min(stretch_, left); }
    void tell(std::size_t passed) { stretch_ = passed > 0 ? kShortest : std::min(2 * stretch_, 8 * kShortest); }

private:
    std::size_t stretch_ = kShortest;
};

/// Shows `rule` each sample together with its predecessor, but for those that it has no use for: samples that are
/// `quiet(last)` after the last one it saw. The first sample of a block is always shown: levels may have moved since
/// `before`, the one before it.
template <class Rule, class Quiet>
void scanPassingQuiet(SampleView pairs, TimedSample before, Rule&& rule, Quiet&& quiet)
{
    withSamples(pairs, [&](auto samples) {
        Patience<16> patience;
        for (std::size_t i = 0; i < samples.count;) {
            for (const std::size_t end = kPlainKernels ? samples.count : i + patience.stretch(samples.count - i);
                 i < end; ++i) {
                const TimedSample now = samples[i];
                rule(before, now);
                before = now;
            }
            if (i == samples.count)
                break;
            const std::size_t passed = countQuiet(samples, i, quiet(before));
            patience.tell(passed);
            i += passed;
            before = samples[i - 1];
        }
    });
}

/// Levels that divide values into regions, from the lowest to the highest, and their neighbours among the doubles.
template <std::size_t kCount>
class Regions {
public:
    explicit Regions(const std::array<double, kCount>& levels) : levels_(levels)
    {
        constexpr double kInf = std::numeric_limits<double>::infinity();
        for (std::size_t k = 0; k < kCount; ++k) {
            below_[k] = std::nextafter(levels[k], -kInf);
            above_[k] = std::nextafter(levels[k], kInf);
            ordered_ &= levels[k > 0 ? k - 1 : 0] <= levels[k];
        }
    }
    /// The values that compare with every level as this one does; none when the levels are not in order.
    QuietSamples around(double value) const
    {
        if (std::isnan(value) || !ordered_)
            return kNoneQuiet;
        QuietSamples region;
        for (std::size_t k = 0; k < kCount; ++k) {
            if (value >= levels_[k])
                region.low = value > levels_[k] ? above_[k] : levels_[k];
            if (value <= levels_[k]) {
                region.high = value < levels_[k] ? below_[k] : levels_[k];
                break;
            }
        }
        return region;
    }

private:
    std::array<double, kCount> levels_, below_, above_;
    bool ordered_ = true;
};

/// The same for rules that look at a sample's relation to levels only and do nothing with one that has the same as the
/// sample before, as long as the levels, from lowest to highest, are in order.
template <std::size_t kCount, class Rule>
void scanRegions(SampleView pairs, TimedSample before, const std::array<double, kCount>& levels, Rule&& rule)
{
    const Regions regions(levels);
    scanPassingQuiet(pairs, before, rule, [&](TimedSample last) { return regions.around(last.value); });
}

} // namespace tracery
