#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tracery::basics {

/// A number with an optional SI prefix (a f p n u µ m k M G T) and an optional unit (s, Hz, V, A, g, S/s), such as
/// "10u", "2.5ms", "-3", "1e-3". Nothing when the text is anything else.
std::optional<double> parseQuantity(std::string_view text);

/// A quantity for people: up to so many digits, an SI prefix and the unit, such as "2.5 ms".
std::string formatQuantity(double value, std::string_view unit, int digits = 12);
/// A time with so many digits, or with more to show steps of a thousandth of the span it is seen in.
std::string formatTime(double time, double span, int digits);
/// The same with all digits that tell it from other doubles.
std::string formatExactly(double value, std::string_view unit);

} // namespace tracery::basics
