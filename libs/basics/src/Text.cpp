#include <tracery/basics/Text.h>

#include <fast_float/fast_float.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tracery::basics {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string lowerCase(std::string text)
{
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string oneLine(std::string text)
{
    for (char& c : text)
        if ((c >= 0 && c < ' ') || c == '\x7f')
            c = '?';
    return text;
}

std::optional<double> parseNumber(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = fast_float::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

namespace {

template <class Number>
std::string shortestText(Number value)
{
    std::array<char, 32> text{}; // -2.2250738585072014e-308 is as long as it gets: 24 characters
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// Within the range of single precision, or the conversion is not defined.
bool isSingle(double value)
{
    return std::abs(value) <= std::numeric_limits<float>::max() && static_cast<float>(value) == value;
}

} // namespace

std::string numberText(double value) { return shortestText(value); }

std::array<std::string, 2> rangeText(double low, double high)
{
    if (isSingle(low) && isSingle(high))
        return {shortestText(static_cast<float>(low)), shortestText(static_cast<float>(high))};
    return {shortestText(low), shortestText(high)};
}

std::string computedText(double value)
{
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.15g", value);
    return {text.data(), static_cast<std::size_t>(length)};
}

} // namespace tracery::basics
