#pragma once

#include "support/SampleScan.h"

#include <tracery/DetectorSettings.h>

#include <bit>
#include <cstdint>
#include <type_traits>

/// The crossing rules that the edge and the timeout detector share. Each is called once a sample, in order,
/// with the sample's value, and tells whether the level is crossed there. The flags belong to the detector
/// and outlive a block. Rules also tell which values would do nothing as the flags stand, and can take the 64 values of a
/// stretch at once.
namespace tracery {

/// Goes through 64 samples of which some arm and others, never the same ones, fire if armed, which disarms. Returns those
/// that fire. The carries of an addition run through the samples as the flag does: arming ones make a carry, firing ones
/// stop it, the rest pass it on.
inline std::uint64_t fireArmed(bool& armed, std::uint64_t arming, std::uint64_t firing)
{
    const std::uint64_t passing = ~firing;
    std::uint64_t sum = 0;
    bool carry = __builtin_add_overflow(passing, arming, &sum);
    carry |= __builtin_add_overflow(sum, std::uint64_t{armed}, &sum);
    armed = carry;
    return firing & (sum ^ passing ^ arming);
}

/// Below level - hysteresis arms; armed and above the level crosses.
struct RisingCrossing {
    bool& armed;
    double level;
    double armBelow;

    bool operator()(double x) const
    {
        if (x < armBelow) {
            armed = true;
        } else if (armed && x > level) {
            armed = false;
            return true;
        }
        return false;
    }
    QuietSamples quiet() const
    {
        QuietSamples quiet;
        (armed ? quiet.high : quiet.low) = armed ? level : armBelow;
        return quiet;
    }
    bool takesStretches() const { return true; }
    std::uint64_t stretch(const double* pairs) const
    {
        const LevelMasks masks = compareSamples(pairs, armBelow, level);
        return fireArmed(armed, masks.below, masks.above & ~masks.below);
    }
};

/// Above level + hysteresis arms; armed and below the level crosses.
struct FallingCrossing {
    bool& armed;
    double level;
    double armAbove;

    bool operator()(double x) const
    {
        if (x > armAbove) {
            armed = true;
        } else if (armed && x < level) {
            armed = false;
            return true;
        }
        return false;
    }
    QuietSamples quiet() const
    {
        QuietSamples quiet;
        (armed ? quiet.low : quiet.high) = armed ? level : armAbove;
        return quiet;
    }
    bool takesStretches() const { return true; }
    std::uint64_t stretch(const double* pairs) const
    {
        const LevelMasks masks = compareSamples(pairs, level, armAbove);
        return fireArmed(armed, masks.above, masks.below & ~masks.above);
    }
};

/// Both at once, at most one crossing a sample and the rising one first. A leap over both arming levels
/// crosses one way and arms the other.
struct EitherCrossing {
    bool& armedPositive;
    bool& armedNegative;
    double level;
    double armBelow;
    double armAbove;

    bool operator()(double x) const
    {
        if (x < armBelow)
            armedPositive = true;
        else if (x > armAbove)
            armedNegative = true;

        if (armedPositive && x > level) {
            armedPositive = false;
            return true;
        }
        if (armedNegative && x < level) {
            armedNegative = false;
            return true;
        }
        return false;
    }
    QuietSamples quiet() const
    {
        if (!takesStretches())
            return kNoneQuiet;
        QuietSamples quiet{armBelow, armAbove};
        if (armedPositive) {
            quiet.low = -std::numeric_limits<double>::infinity();
            quiet.high = level;
        }
        if (armedNegative) {
            quiet.low = level;
            quiet.high = armedPositive ? level : std::numeric_limits<double>::infinity();
        }
        return quiet;
    }
    /// With the levels in order no sample crosses both ways or crosses the way it arms, so that the two ways are apart.
    bool takesStretches() const { return armBelow <= level && level <= armAbove; }
    std::uint64_t stretch(const double* pairs) const
    {
        const LevelMasks arming = compareSamples(pairs, armBelow, armAbove);
        const LevelMasks firing = compareSamples(pairs, level, level);
        return fireArmed(armedPositive, arming.below, firing.above) |
               fireArmed(armedNegative, arming.above, firing.below);
    }
};

/// The rules for the flags and the level of a detector.
template <class Seen>
RisingCrossing risingCrossing(Seen& seen, const DetectorSettings& settings)
{
    return {seen.armedPositive, settings.level, settings.level - settings.hysteresis};
}
template <class Seen>
FallingCrossing fallingCrossing(Seen& seen, const DetectorSettings& settings)
{
    return {seen.armedNegative, settings.level, settings.level + settings.hysteresis};
}
template <class Seen>
EitherCrossing eitherCrossing(Seen& seen, const DetectorSettings& settings)
{
    return {seen.armedPositive, seen.armedNegative, settings.level, settings.level - settings.hysteresis,
            settings.level + settings.hysteresis};
}

/// Calls found(before, now) for each sample that crosses.
template <class Crossing, class Found>
void scanCrossings(SampleView pairs, TimedSample before, Crossing crosses, Found&& found)
{
    withSamples(pairs, [&](auto samples) {
        constexpr bool kSideBySide = std::is_same_v<decltype(samples), TimedSamples<1>> && !kPlainKernels;
        Patience<kMaskSamples> patience;
        for (std::size_t i = 0; i < samples.count;) {
            const std::size_t end = kPlainKernels ? samples.count : i + patience.stretch(samples.count - i);
            if constexpr (kSideBySide) {
                for (; end - i >= kMaskSamples && crosses.takesStretches(); i += kMaskSamples) {
                    for (std::uint64_t hits = crosses.stretch(samples.first + 2 * i); hits != 0; hits &= hits - 1) {
                        const std::size_t at = i + static_cast<std::size_t>(std::countr_zero(hits));
                        found(at == i ? before : samples[at - 1], samples[at]);
                    }
                    before = samples[i + kMaskSamples - 1];
                }
            }
            for (; i < end; ++i) {
                const TimedSample now = samples[i];
                if (crosses(now.value))
                    found(before, now);
                before = now;
            }
            if (i == samples.count)
                break;
            const std::size_t passed = countQuiet(samples, i, crosses.quiet());
            patience.tell(passed);
            i += passed;
            before = samples[i - 1];
        }
    });
}

} // namespace tracery
