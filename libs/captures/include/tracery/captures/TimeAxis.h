#pragma once

#include <tracery/captures/Time.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace tracery::captures {

/// Steps per second, a ratio of two whole numbers in lowest terms, each 1 to 10^15.
class Rate {
public:
    /// throws  TimeError, as do all, when there is no such ratio
    explicit Rate(std::int64_t numerator, std::int64_t denominator = 1);
    /// The decimal that a number stands for, the shortest that reads back as it: 0.1 is 1/10.
    static Rate of(double stepsPerSecond);
    /// "48000", "1e9", "0.1", "30000/1001".
    static Rate parse(std::string_view text);

    std::int64_t numerator() const { return numerator_; }
    std::int64_t denominator() const { return denominator_; }
    double toDouble() const { return static_cast<double>(numerator_) / static_cast<double>(denominator_); }
    /// As `parse` reads it.
    std::string text() const;

    friend bool operator==(const Rate&, const Rate&) = default;

private:
    std::int64_t numerator_;
    std::int64_t denominator_;
};

/// Even steps: step n, of either sign, is at start + n / rate, exactly. A whole number of femtoseconds need not be: times
/// that are given out are rounded down to one, and no two steps share it.
struct TimeAxis {
    Time start;
    Rate rate{1};

    /// throws  TimeError, as do all, when seconds or a step's number do not fit into 64 bits
    Time timeOf(std::int64_t step) const;
    /// The first step at `time` or later, so firstFrom(timeOf(n)) is n.
    std::int64_t firstFrom(const Time& time) const;
    /// The last step at `time` or earlier.
    std::int64_t lastUpTo(const Time& time) const;

    friend bool operator==(const TimeAxis&, const TimeAxis&) = default;
};

/// The steps of an axis in seconds from an origin, each the nearest double of the exact difference: what the engine takes.
/// Never decreasing.
/// Complexity  some nanoseconds a step, some hundred where the nearest double is hard to tell
/// thread      any
class RelativeTimes {
public:
    /// throws  TimeError when only one of start and origin is UTC, or they are too far apart
    RelativeTimes(const TimeAxis& axis, const Time& origin);

    /// step  of a size below 2^62
    double operator()(std::int64_t step) const
    {
        const double parts = static_cast<double>(step - base_) * denominator_;
        if (fraction_ == 0 && parts < kExact && parts > -kExact)
            return parts / numerator_;
        return fromFraction(step);
    }

private:
    static constexpr double kExact = 0x1p53; ///< whole numbers below it are doubles

    double fromFraction(std::int64_t step) const;
    double exactly(std::int64_t step) const;

    Rate rate_;
    std::int64_t base_ = 0; ///< a step near the origin
    double numerator_, denominator_;
    double fraction_ = 0, fractionRest_ = 0;     ///< seconds from the origin to the base, to 106 digits
    std::int64_t seconds_ = 0;                   ///< the same exactly: whole seconds, rounded down, and parts …
    std::uint64_t partsHigh_ = 0, partsLow_ = 0; ///< … of which rate.numerator * 10^15 make one
};

} // namespace tracery::captures
