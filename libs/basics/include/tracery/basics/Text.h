#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tracery::basics {

/// The text without blanks, tabs and carriage returns at its ends.
std::string_view trimmed(std::string_view text);

/// The text with the letters A to Z made small.
std::string lowerCase(std::string text);

/// The text with '?' for control characters, so that it stays one line: what is quoted may hold anything.
std::string oneLine(std::string text);

/// A whole text as a number: "1.5", "+2e-3", "inf", "-Infinity"; "nan" in any case. None for anything else.
std::optional<double> parseNumber(std::string_view text);

/// The shortest text that reads back as the same number.
std::string numberText(double value);

/// Likewise of the ends of a range, in the digits of single precision if both are such numbers: most samples are.
std::array<std::string, 2> rangeText(double low, double high);

/// The same of a number that was computed, in 15 digits: what rounding left in the last bits does not show.
std::string computedText(double value);

} // namespace tracery::basics
