#pragma once

#include "support/sampleKernels.h"
#include "support/vectorUnit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <span>
#include <type_traits>

/// How detectors read interleaved blocks of (time, value) pairs: one loop for real and complex elements.
namespace tracery {

struct TimedSample {
    double time;
    double value;
};

/// The time at which the straight line from `before` to `now` reaches `level`. Not guarded: NaN without a
/// sample before, and not finite where the line is level, as it can be when auto level moves the level between samples.
inline double crossingTime(TimedSample before, TimedSample now, double level)
{
    return (now.time - before.time) / (now.value - before.value) * (level - before.value) + before.time;
}

/// Part selectors: what a detector sees of an element.
struct RealPart {
    static double of(double x) { return x; }
    static double of(const std::complex<double>& z) { return z.real(); }
};
struct ImagPart {
    static double of(const std::complex<double>& z) { return z.imag(); }
};

/// Calls `use` with the part selector to read `Element`s through; real elements leave no choice.
template <class Element, class Use>
auto withPart([[maybe_unused]] bool imagPart, Use&& use)
{
    if constexpr (!std::is_floating_point_v<Element>) {
        if (imagPart)
            return use(ImagPart{});
    }
    return use(RealPart{});
}

/// Sample i of a block, read through a part selector, and through the part chosen by a flag.
template <class Part, class Element>
TimedSample sampleThrough(Part, std::span<const Element> pairs, std::size_t i)
{
    return {Part::of(pairs[2 * i]), Part::of(pairs[2 * i + 1])};
}
template <class Element>
TimedSample sampleAt(bool imagPart, std::span<const Element> pairs, std::size_t i)
{
    return withPart<Element>(imagPart, [&](auto part) { return sampleThrough(part, pairs, i); });
}

/// Shows `rule` each sample of a block together with its predecessor; `before` is that of the first one.
/// Returns the last sample.
template <class Element, class Rule>
TimedSample scan(std::span<const Element> pairs, bool imagPart, TimedSample before, Rule&& rule)
{
    withPart<Element>(imagPart, [&](auto part) {
        for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
            const TimedSample now = sampleThrough(part, pairs, i);
            rule(before, now);
            before = now;
        }
    });
    return before;
}

/// Samples that a rule has no use for in its present state: those of a value in [low, high] that are not after
/// `latest`.
struct QuietSamples {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
    double latest = std::numeric_limits<double>::infinity();
};
constexpr QuietSamples kNoneQuiet{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

/// The number of samples from the front that are surely quiet.
template <class Element>
std::size_t countQuiet(std::span<const Element> pairs, bool imagPart, const QuietSamples& quiet)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    constexpr std::size_t kParts = sizeof(Element) / sizeof(double);
    LaneBounds bounds{{-kInf, -kInf, -kInf, -kInf}, {kInf, kInf, kInf, kInf}};
    for (std::size_t time = imagPart ? kParts - 1 : 0; time < 4; time += 2 * kParts) {
        bounds.high[time] = quiet.latest;
        bounds.low[time + kParts] = quiet.low;
        bounds.high[time + kParts] = quiet.high;
    }
    const auto* doubles = reinterpret_cast<const double*>(pairs.data()); // as complex numbers may be read
    return quietLength(doubles, pairs.size() * kParts, bounds) / (2 * kParts);
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

/// scan for rules that have no use for samples that are `quiet(last)` after the last one they saw. The first sample of a
/// block is always shown: levels may have moved since the one before it.
template <class Element, class Rule, class Quiet>
void scanPassingQuiet(std::span<const Element> pairs, bool imagPart, TimedSample before, Rule&& rule, Quiet&& quiet)
{
    withPart<Element>(imagPart, [&](auto part) {
        const std::size_t count = pairs.size() / 2;
        Patience<16> patience;
        for (std::size_t i = 0; i < count;) {
            for (const std::size_t end = kPlainKernels ? count : i + patience.stretch(count - i); i < end; ++i) {
                const TimedSample now = sampleThrough(part, pairs, i);
                rule(before, now);
                before = now;
            }
            if (i == count)
                break;
            const std::size_t passed = countQuiet(pairs.subspan(2 * i), imagPart, quiet(before));
            patience.tell(passed);
            i += passed;
            before = sampleThrough(part, pairs, i - 1);
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

/// scan for rules that look at a sample's relation to levels only and do nothing with one that has the same as the
/// sample before, as long as the levels, from lowest to highest, are in order.
template <class Element, std::size_t kCount, class Rule>
void scanRegions(std::span<const Element> pairs, bool imagPart, TimedSample before,
                 const std::array<double, kCount>& levels, Rule&& rule)
{
    const Regions regions(levels);
    scanPassingQuiet(pairs, imagPart, before, rule, [&](TimedSample last) { return regions.around(last.value); });
}

} // namespace tracery
