#include "Wide.h"

#include <tracery/basics/Text.h>
#include <tracery/captures/Time.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>

namespace tracery::captures {

using namespace basics;

namespace {

constexpr int kFractionDigits = 15;

[[noreturn]] void refuse(std::string_view text, const char* why)
{
    throw TimeError("'" + oneLine(std::string(text)) + "' " + why);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Takes the digits at the front of a text.
std::string_view takeDigits(std::string_view& text)
{
    const auto end = std::ranges::find_if_not(text, isDigit);
    const auto count = static_cast<std::size_t>(end - text.begin());
    const std::string_view digits = text.substr(0, count);
    text.remove_prefix(count);
    return digits;
}

bool take(std::string_view& text, char c)
{
    const bool there = text.starts_with(c);
    text.remove_prefix(there ? 1 : 0);
    return there;
}

/// A decimal as its digits and the place of its point in them.
struct Decimal {
    bool negative = false;
    std::string digits;
    std::int64_t point = 0;
};

std::optional<Decimal> decimalOf(std::string_view text)
{
    Decimal decimal;
    decimal.negative = take(text, '-');
    if (!decimal.negative)
        take(text, '+');
    decimal.digits = takeDigits(text);
    decimal.point = static_cast<std::int64_t>(decimal.digits.size());
    if (take(text, '.'))
        decimal.digits += takeDigits(text);
    if (decimal.digits.empty())
        return std::nullopt;
    if (take(text, 'e') || take(text, 'E')) {
        int exponent = 0;
        const bool negative = take(text, '-');
        if (!negative)
            take(text, '+');
        const std::string_view written = takeDigits(text);
        if (written.empty() || written.size() > 4)
            return std::nullopt;
        std::from_chars(written.data(), written.data() + written.size(), exponent);
        decimal.point += negative ? -exponent : exponent;
    }
    if (!text.empty())
        return std::nullopt;
    const std::size_t leading = std::min(decimal.digits.find_first_not_of('0'), decimal.digits.size());
    decimal.digits.erase(0, leading);
    decimal.point -= static_cast<std::int64_t>(leading);
    while (decimal.digits.ends_with('0'))
        decimal.digits.pop_back();
    return decimal;
}

/// round  whether what is finer than a femtosecond is rounded, and not refused
Duration durationOf(const Decimal& decimal, std::string_view text, bool round)
{
    constexpr std::int64_t kMostDigits = 19 + kFractionDigits;
    if (decimal.digits.empty())
        return {};
    if (decimal.point > 19)
        refuse(text, "does not fit into 64 bits of seconds");
    const std::int64_t wanted = std::max<std::int64_t>(decimal.point + kFractionDigits, -1);
    const auto have = static_cast<std::int64_t>(decimal.digits.size());
    if (have > wanted && !round)
        refuse(text, "is finer than a femtosecond");
    Wide femtos = 0;
    for (std::int64_t i = 0; i < std::min(wanted, kMostDigits); ++i)
        femtos = 10 * femtos + (i < have ? decimal.digits[static_cast<std::size_t>(i)] - '0' : 0);
    if (have > wanted && wanted >= 0 && decimal.digits[static_cast<std::size_t>(wanted)] >= '5')
        ++femtos;
    return captures::durationOf(0, decimal.negative ? -femtos : femtos);
}

/// A number of so many digits at the front of a text, between two bounds.
int takeNumber(std::string_view& text, std::size_t digits, int least, int most, std::string_view all)
{
    const std::string_view written = text.substr(0, std::min(digits, text.size()));
    int value = -1;
    if (written.size() == digits && std::ranges::all_of(written, isDigit))
        std::from_chars(written.data(), written.data() + digits, value);
    if (value < least || value > most)
        refuse(all, "is no date and time such as 2026-03-01T12:00:00.25Z");
    text.remove_prefix(digits);
    return value;
}

Duration parseDate(std::string_view all)
{
    namespace chrono = std::chrono;
    std::string_view text = all;
    const auto number = [&](std::size_t digits, int least, int most) {
        return takeNumber(text, digits, least, most, all);
    };
    const auto expect = [&](char c) {
        if (!take(text, c))
            refuse(all, "is no date and time such as 2026-03-01T12:00:00.25Z");
    };
    const int year = number(4, 0, 9999);
    expect('-');
    const auto month = static_cast<unsigned>(number(2, 1, 12));
    expect('-');
    const auto day = static_cast<unsigned>(number(2, 1, 31));
    const chrono::year_month_day date{chrono::year(year), chrono::month(month), chrono::day(day)};
    if (!date.ok())
        refuse(all, "is no day of the calendar");
    std::int64_t seconds = chrono::sys_days(date).time_since_epoch().count() * std::int64_t{86400};
    Duration fraction;
    if (take(text, 'T') || take(text, ' ')) {
        seconds += 3600 * number(2, 0, 23);
        if (take(text, ':')) {
            seconds += 60 * number(2, 0, 59);
            if (take(text, ':'))
                seconds += number(2, 0, 59);
            if (text.starts_with('.')) {
                std::string_view rest = text.substr(1);
                const std::string digits = "0." + std::string(takeDigits(rest));
                fraction = durationOf(decimalOf(digits).value(), all, false);
                text = rest;
            }
        }
    }
    if (!take(text, 'Z') && !text.empty()) {
        const bool east = take(text, '+');
        if (!east)
            expect('-');
        const int hours = number(2, 0, 23);
        take(text, ':');
        const int offset = 3600 * hours + 60 * number(2, 0, 59);
        seconds -= east ? offset : -offset;
    }
    if (!text.empty())
        refuse(all, "is no date and time such as 2026-03-01T12:00:00.25Z");
    return {seconds, fraction.femtos};
}

} // namespace

Duration Duration::parse(std::string_view text)
{
    const std::optional<Decimal> decimal = decimalOf(text);
    if (!decimal)
        refuse(text, "is no number of seconds");
    return durationOf(*decimal, text, false);
}

Duration Duration::of(double seconds)
{
    if (!std::isfinite(seconds))
        throw TimeError("a time is not finite");
    const std::string text = numberText(seconds);
    return durationOf(decimalOf(text).value(), text, true);
}

std::string Duration::text() const
{
    const bool negative = seconds < 0;
    const Wide all = static_cast<Wide>(seconds) * kFemtosPerSecond + femtos;
    const Wide size = negative ? -all : all;
    const auto whole = static_cast<std::uint64_t>(size / kFemtosPerSecond);
    std::string fraction = std::to_string(static_cast<std::int64_t>(size % kFemtosPerSecond));
    fraction.insert(0, static_cast<std::size_t>(kFractionDigits) - fraction.size(), '0');
    while (fraction.ends_with('0'))
        fraction.pop_back();
    return (negative ? "-" : "") + std::to_string(whole) + (fraction.empty() ? "" : "." + fraction);
}

double Duration::toDouble() const
{
    return nearestDouble(seconds, static_cast<UnsignedWide>(femtos), static_cast<UnsignedWide>(kFemtosPerSecond));
}

Duration operator+(const Duration& a, const Duration& b)
{
    return durationOf(static_cast<Wide>(a.seconds) + b.seconds, static_cast<Wide>(a.femtos) + b.femtos);
}

Duration operator-(const Duration& a, const Duration& b)
{
    return durationOf(static_cast<Wide>(a.seconds) - b.seconds, static_cast<Wide>(a.femtos) - b.femtos);
}

Duration operator-(const Time& a, const Time& b)
{
    if (a.utc != b.utc)
        throw TimeError("a time with a date and one without have no difference");
    return a.since - b.since;
}

Time Time::parse(std::string_view text, const Time& start)
{
    text = trimmed(text);
    if (text.starts_with('+'))
        return start + Duration::parse(text.substr(1));
    if (text.size() < 5 || text[4] != '-' || !std::ranges::all_of(text.substr(0, 4), isDigit))
        return {Duration::parse(text), start.utc};
    const Time time{parseDate(text), true};
    if (!start.utc)
        refuse(text, "is a date, but the recording tells none");
    return time;
}

std::string Time::date() const
{
    namespace chrono = std::chrono;
    constexpr std::int64_t kDay = 86400, kLeast = -62167219200, kMost = 253402300799; // the years 0 to 9999
    if (!utc || since.seconds < kLeast || since.seconds > kMost)
        return text();
    const auto days = static_cast<std::int64_t>(floorOf(since.seconds, kDay));
    const std::int64_t second = since.seconds - days * kDay;
    const chrono::year_month_day date{chrono::sys_days(chrono::days(days))};
    std::array<char, 32> written{};
    std::snprintf(written.data(), written.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    const std::string fraction = Duration{0, since.femtos}.text();
    return written.data() + fraction.substr(1) + "Z";
}

} // namespace tracery::captures
