#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tracery::basics {

/// How the numbers along an axis are brought to a readable size.
enum class Scaling {
    Prefixes, ///< an SI prefix before the unit
    Seconds,  ///< likewise, but never above one second
    Powers,   ///< "×10⁶" where plain digits would be too many: no unit, or one that takes no prefix (dB, %, °)
};

/// A unit without its prefix: what is given in "mV" is `base` "V" times 10 to the `exponent` -3.
struct Unit {
    std::string base;
    int exponent = 0;
    Scaling scaling = Scaling::Prefixes;
};
Unit parseUnit(std::string_view text);

/// The largest multiple of three up to `exponent`.
int multipleOfThree(int exponent);

/// The power of ten, a multiple of three, that numbers of which the largest has its first digit at 10 to the
/// `leading` are divided by.
int displayExponent(Scaling scaling, int leading);

/// What stands for the unit times 10 to the `exponent`: "mV", "×10⁶", "×10³ dB", and beyond all prefixes
/// "×10³⁰ V".
std::string unitText(const Unit& unit, int exponent);

/// The exact digits of `digits` times 10 to the `exponent`, with `-exponent` decimals. The sign is a true
/// minus; zero has none.
std::string decimalText(std::int64_t digits, int exponent);

/// A whole number in raised digits: "⁻³".
std::string superscript(int number);

/// The power of ten of the first digit of a number; 0 for 0.
int leadingDigit(std::int64_t digits);

} // namespace tracery::basics
