#pragma once

#include <compare>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tracery::captures {

/// What is wrong with a time, a rate or a sample number, in one line: "'1:30' is no time".
class TimeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr std::int64_t kFemtosPerSecond = 1'000'000'000'000'000;

/// A length of time, exact to the femtosecond: `seconds` and a fraction of one, 0 to 10^15 - 1 `femtos`. Of -0.25 s they
/// are -1 and 0.75e15.
/// throws  TimeError, whatever makes one, when the seconds do not fit into 64 bits
struct Duration {
    std::int64_t seconds = 0;
    std::int64_t femtos = 0;

    /// Decimal seconds: "-12.000000125", "3e-9". throws  TimeError for anything else, or finer than a femtosecond
    static Duration parse(std::string_view text);
    /// The decimal that a number stands for, the shortest that reads back as it: 0.1 is a tenth. Rounded to the
    /// femtosecond. throws  TimeError when it is not finite
    static Duration of(double seconds);

    /// All digits and no more: "3", "-0.25".
    std::string text() const;
    /// The nearest double.
    double toDouble() const;

    friend auto operator<=>(const Duration&, const Duration&) = default;
    friend Duration operator+(const Duration& a, const Duration& b);
    friend Duration operator-(const Duration& a, const Duration& b);
};

/// A point in time: since 1970-01-01T00:00:00Z, where a recording tells when it began, or on a scale of its own. Leap
/// seconds do not count, as in POSIX.
struct Time {
    Duration since;
    bool utc = false;

    /// What a person asks for: "2026-03-01T12:00:00.25Z" (a "T" or a blank, "Z" or an offset such as "+01:00", parts from
    /// the end of the time left out at will); decimal seconds on the scale of `start`; "+3.5", seconds after `start`.
    /// throws  TimeError: none of these; a date where `start` has none; too far away
    static Time parse(std::string_view text, const Time& start);

    /// Decimal seconds, all digits and no more.
    std::string text() const { return since.text(); }
    /// "2026-03-01T12:00:00.25Z" of a UTC time; else as `text`.
    std::string date() const;

    /// Of times on two scales, those of no date come first.
    friend auto operator<=>(const Time& a, const Time& b)
    {
        const auto scales = a.utc <=> b.utc;
        return scales != 0 ? scales : a.since <=> b.since;
    }
    friend bool operator==(const Time&, const Time&) = default;
    friend Time operator+(const Time& time, const Duration& length) { return {time.since + length, time.utc}; }
    friend Time operator-(const Time& time, const Duration& length) { return {time.since - length, time.utc}; }
    /// throws  TimeError also when only one of them is UTC
    friend Duration operator-(const Time& a, const Time& b);
};

} // namespace tracery::captures
