#include <tracery/basics/quantity.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <utility>

namespace tracery::basics {

namespace {

struct Prefix {
    std::string_view text;
    double factor;
};
constexpr std::array kPrefixes{Prefix{"a", 1e-18},     Prefix{"f", 1e-15}, Prefix{"p", 1e-12}, Prefix{"n", 1e-9},
                               Prefix{"\u00b5", 1e-6}, Prefix{"u", 1e-6},  Prefix{"m", 1e-3},  Prefix{"", 1.0},
                               Prefix{"k", 1e3},       Prefix{"M", 1e6},   Prefix{"G", 1e9},   Prefix{"T", 1e12}};
constexpr std::array<std::string_view, 7> kUnits{"", "s", "Hz", "V", "A", "g", "S/s"};

} // namespace

std::optional<double> parseQuantity(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return std::nullopt;
    std::string_view rest = text.substr(static_cast<std::size_t>(end - text.data()));
    if (rest.starts_with(' '))
        rest.remove_prefix(1);
    for (const Prefix& prefix : kPrefixes)
        for (const std::string_view unit : kUnits)
            if (rest.size() == prefix.text.size() + unit.size() && rest.starts_with(prefix.text) &&
                rest.ends_with(unit)) {
                // Dividing by the whole power keeps 10u at the double nearest to 10e-6.
                return prefix.factor < 1 ? number / std::round(1 / prefix.factor) : number * prefix.factor;
            }
    return std::nullopt;
}

namespace {

/// Number is precise enough for the digits asked for.
template <class Number>
std::string format(double value, std::string_view unit, int digits, const char* form)
{
    const Prefix* chosen = &kPrefixes[7];
    // Seconds from one on, and bare numbers, stand as they are.
    if (std::isfinite(value) && value != 0 && !unit.empty() && (unit != "s" || std::abs(value) < 1))
        for (const Prefix& prefix : kPrefixes)
            if (prefix.text != "u" && std::abs(value) >= prefix.factor * 0.99995)
                chosen = &prefix;
    char number[40];
    std::snprintf(number, sizeof number, form, digits,
                  static_cast<Number>(value) / static_cast<Number>(chosen->factor));
    std::string text = number;
    if (!chosen->text.empty() || !unit.empty())
        text += ' ';
    return text.append(chosen->text).append(unit);
}

} // namespace

std::string formatQuantity(double value, std::string_view unit, int digits)
{
    return format<double>(value, unit, digits, "%.*g");
}

std::string formatTime(double time, double span, int digits)
{
    constexpr double kDigitsInSpan = 4, kAllDigits = 16;
    const double needed = kDigitsInSpan + std::floor(std::log10(std::abs(time) / span));
    if (needed >= kAllDigits)
        return formatExactly(time, "s");
    return formatQuantity(time, "s", needed > digits ? static_cast<int>(needed) : digits);
}

std::string formatExactly(double value, std::string_view unit)
{
    char shortest[32];
    char* const end = std::to_chars(shortest, std::end(shortest), value, std::chars_format::scientific).ptr;
    const auto digits =
        std::count_if(shortest, std::find(shortest, end, 'e'), [](char c) { return c >= '0' && c <= '9'; });
    constexpr int kBeforePoint = 3; // that a number with a prefix has
    return format<long double>(value, unit, std::max(kBeforePoint, static_cast<int>(digits)), "%.*Lg");
}

} // namespace tracery::basics
