#pragma once

#include <complex>
#include <cstddef>
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
template <class Element, class Rule>
void scan(std::span<const Element> pairs, bool imagPart, TimedSample before, Rule&& rule)
{
    withPart<Element>(imagPart, [&](auto part) {
        for (std::size_t i = 0; i < pairs.size() / 2; ++i) {
            const TimedSample now = sampleThrough(part, pairs, i);
            rule(before, now);
            before = now;
        }
    });
}

} // namespace tracery
