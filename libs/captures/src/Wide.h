#pragma once

#include <tracery/captures/Time.h>

#include <cstdint>
#include <limits>
#include <string>

namespace tracery::captures {

__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;

inline std::int64_t narrow(Wide value, const char* what)
{
    if (value < std::numeric_limits<std::int64_t>::min() || value > std::numeric_limits<std::int64_t>::max())
        throw TimeError(std::string(what) + " does not fit into 64 bits");
    return static_cast<std::int64_t>(value);
}

/// Rounded down. divisor  positive
constexpr Wide floorOf(Wide value, Wide divisor) { return value / divisor - (value % divisor < 0 ? 1 : 0); }

/// The nearest double of whole + numerator / denominator, ties to even. numerator  0 to denominator - 1
/// denominator  below 2^113
double nearestDouble(Wide whole, UnsignedWide numerator, UnsignedWide denominator);

/// A number to more than a hundred digits.
struct DoubleSum {
    double high, low;
};
/// Of whole + numerator / denominator, rounded towards zero.
DoubleSum doubleSum(UnsignedWide whole, UnsignedWide numerator, UnsignedWide denominator);

/// A femtosecond count as a Duration.
Duration durationOf(Wide seconds, Wide femtos);

} // namespace tracery::captures
