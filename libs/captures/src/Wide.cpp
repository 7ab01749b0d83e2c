#include "Wide.h"

#include <bit>
#include <cmath>

namespace tracery::captures {

namespace {

int widthOf(UnsignedWide value)
{
    const auto high = static_cast<std::uint64_t>(value >> 64);
    return high != 0 ? 64 + static_cast<int>(std::bit_width(high))
                     : static_cast<int>(std::bit_width(static_cast<std::uint64_t>(value)));
}

} // namespace

namespace {

/// The leading digits of whole + numerator / denominator: digits * 2^exponent, and whether there are more behind.
struct Digits {
    UnsignedWide digits;
    int exponent = 0;
    bool more = false;
};

/// least  digits, below 113, if there are so many
Digits digitsOf(UnsignedWide whole, UnsignedWide numerator, UnsignedWide denominator, int least)
{
    constexpr int kAtOnce = 14;
    Digits result{whole};
    for (; widthOf(result.digits) < least && numerator != 0; result.exponent -= kAtOnce) {
        numerator <<= kAtOnce;
        result.digits = result.digits << kAtOnce | numerator / denominator;
        numerator %= denominator;
    }
    result.more = numerator != 0;
    return result;
}

/// Keeps so many leading digits, or puts zeros behind them.
void resize(Digits& value, int width)
{
    const int spare = value.digits != 0 ? widthOf(value.digits) - width : 0;
    value.exponent += spare;
    if (spare < 0) {
        value.digits <<= -spare;
        return;
    }
    value.more = value.more || (value.digits & ((UnsignedWide{1} << spare) - 1)) != 0;
    value.digits >>= spare;
}

} // namespace

double nearestDouble(Wide whole, UnsignedWide numerator, UnsignedWide denominator)
{
    const bool negative = whole < 0;
    if (negative) {
        whole = -whole;
        if (numerator != 0) {
            --whole;
            numerator = denominator - numerator;
        }
    }
    constexpr int kDigits = 54; // one more than a double has
    Digits value = digitsOf(static_cast<UnsignedWide>(whole), numerator, denominator, kDigits);
    resize(value, kDigits);
    // And a last digit for all that is behind, so that the conversion rounds once.
    const auto kept = static_cast<std::uint64_t>(value.digits) << 1 | (value.more ? 1U : 0U);
    const double nearest = std::ldexp(static_cast<double>(kept), value.exponent - 1);
    return negative ? -nearest : nearest;
}

DoubleSum doubleSum(UnsignedWide whole, UnsignedWide numerator, UnsignedWide denominator)
{
    constexpr int kDigits = 53;
    Digits value = digitsOf(whole, numerator, denominator, 2 * kDigits);
    resize(value, 2 * kDigits);
    const auto low = static_cast<std::uint64_t>(value.digits) & ((std::uint64_t{1} << kDigits) - 1);
    const auto high = static_cast<std::uint64_t>(value.digits >> kDigits);
    return {std::ldexp(static_cast<double>(high), value.exponent + kDigits),
            std::ldexp(static_cast<double>(low), value.exponent)};
}

Duration durationOf(Wide seconds, Wide femtos)
{
    const Wide carried = floorOf(femtos, kFemtosPerSecond);
    return {narrow(seconds + carried, "a time in seconds"),
            static_cast<std::int64_t>(femtos - carried * kFemtosPerSecond)};
}

} // namespace tracery::captures
