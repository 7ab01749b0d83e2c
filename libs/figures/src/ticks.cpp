#include "ticks.h"

#include "comfortableLimits.h"

#include <tracery/basics/units.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <span>

namespace tracery::figures {

using namespace basics;

namespace {

/// A distance between ticks: mantissa × 10^exponent.
struct Step {
    std::int64_t mantissa;
    int exponent;
    int divisions;
};

double valueOf(std::int64_t digits, int exponent)
{
    // Dividing by an exact power gives the nearest double to a decimal fraction; multiplying by 0.1 would
    // not.
    const auto number = static_cast<double>(digits);
    return exponent < 0 ? number / std::pow(10.0, -exponent) : number * std::pow(10.0, exponent);
}
double valueOf(const Step& step) { return valueOf(step.mantissa, step.exponent); }

std::int64_t powerOfTen(int exponent) { return std::llround(std::pow(10.0, exponent)); }

Step decimalStep(double smallest)
{
    for (int exponent = static_cast<int>(std::floor(std::log10(smallest)));; ++exponent)
        for (const Step step : {Step{1, exponent, 5}, Step{2, exponent, 4}, Step{5, exponent, 5}})
            if (valueOf(step) >= smallest * (1 - 1e-9))
                return step;
}

/// A unit of time above the second.
struct LongUnit {
    std::string_view name;
    double seconds;
    std::span<const Step> steps; ///< empty: half a unit, then decimal
    std::int64_t perNext;        ///< how many make one of the next larger unit
    std::string_view next;
};

constexpr std::array kMinuteSteps = {Step{5, -1, 3}, Step{1, 0, 4},  Step{2, 0, 4},  Step{5, 0, 5},
                                     Step{10, 0, 5}, Step{15, 0, 3}, Step{30, 0, 3}, Step{60, 0, 4}};
constexpr std::array kHourSteps = {Step{5, -1, 3}, Step{1, 0, 4},  Step{2, 0, 4}, Step{3, 0, 3},
                                   Step{6, 0, 3},  Step{12, 0, 4}, Step{24, 0, 4}};
constexpr Step kHalfDay = {5, -1, 4};
constexpr std::array kLongUnits = {
    LongUnit{"d", 86400, {}, 0, ""},
    LongUnit{"h", 3600, kHourSteps, 24, "d"},
    LongUnit{"min", 60, kMinuteSteps, 60, "h"},
};
constexpr double kUnitsSpanned = 3;           // a long unit is used for more than so many of it
constexpr std::int64_t kMostLongUnits = 1000; // beyond, minutes are counted from a full hour and hours from a full day

const LongUnit* longUnit(double seconds)
{
    const auto unit = std::find_if(kLongUnits.begin(), kLongUnits.end(),
                                   [&](const LongUnit& each) { return seconds > kUnitsSpanned * each.seconds; });
    return unit == kLongUnits.end() ? nullptr : &*unit;
}

// A circle divides into these rather than into tens, from a step of 10° on.
constexpr std::array kAngleSteps = {Step{15, 0, 3}, Step{30, 0, 3}, Step{45, 0, 3}, Step{90, 0, 3}, Step{180, 0, 4}};
constexpr double kLeastAngleStep = 10;

Step plainStep(const Unit& unit, double smallest)
{
    if ((unit.base == "°" || unit.base == "deg") && smallest > kLeastAngleStep)
        for (const Step& step : kAngleSteps)
            if (valueOf(step) >= smallest)
                return step;
    return decimalStep(smallest);
}

Step longStep(const LongUnit& unit, double smallest)
{
    if (unit.steps.empty())
        return smallest <= valueOf(kHalfDay) ? kHalfDay : decimalStep(smallest);
    const auto step =
        std::find_if(unit.steps.begin(), unit.steps.end(), [&](const Step& each) { return valueOf(each) >= smallest; });
    return step == unit.steps.end() ? unit.steps.back() : *step;
}

/// How the ticks, counted in units of 10^exponent, are written.
struct Writing {
    int exponent = 0;        ///< labels are divided by 10 to this
    std::int64_t offset = 0; ///< in the ticks' counting
    std::string unitText;
    std::string offsetText;
};

std::string signedText(std::int64_t digits, int exponent, const std::string& unit)
{
    while (exponent < 0 && digits % 10 == 0) {
        digits /= 10;
        ++exponent;
    }
    return (digits < 0 ? "" : "+") + decimalText(digits, exponent) + (unit.empty() ? "" : " " + unit);
}

/// The end of [first, last] that is nearest to zero.
std::int64_t nearest(std::int64_t first, std::int64_t last)
{
    return first > 0 ? first : std::min<std::int64_t>(last, 0);
}

Writing decimalWriting(std::int64_t first, std::int64_t last, int exponent, const Unit& unit)
{
    constexpr int kMostDigits = 5;
    const int last10 = exponent + unit.exponent; // power of ten of the last digit, in base units
    const int leading = last10 + leadingDigit(std::max(std::abs(first), std::abs(last)));
    Writing writing;
    writing.exponent = displayExponent(unit.scaling, leading);
    const int digits = std::max(0, leading - writing.exponent) + 1 + std::max(0, writing.exponent - last10);
    if (digits > kMostDigits) {
        const int spanned = last10 + leadingDigit(last - first);
        const int fine = displayExponent(unit.scaling, spanned);
        const int coarse = multipleOfThree(spanned) + 3; // offsets are multiples of 10 to this
        const std::int64_t grain = powerOfTen(coarse - last10);
        const std::int64_t grains = nearest(first, last) / grain;
        if (grains != 0) {
            const int offsetExponent = displayExponent(unit.scaling, coarse + leadingDigit(grains));
            writing.exponent = fine;
            writing.offset = grains * grain;
            writing.offsetText = signedText(grains, coarse - offsetExponent, unitText(unit, offsetExponent));
        }
    }
    writing.unitText = unitText(unit, writing.exponent);
    writing.exponent -= unit.exponent;
    return writing;
}

Writing longWriting(std::int64_t first, std::int64_t last, int exponent, const LongUnit& unit)
{
    if (unit.perNext == 0)
        return decimalWriting(first, last, exponent, parseUnit(unit.name));
    Writing writing;
    writing.unitText = unit.name;
    const std::int64_t one = powerOfTen(-exponent);
    const std::int64_t whole = nearest(first, last) / (one * unit.perNext);
    if (std::abs(whole) * unit.perNext >= kMostLongUnits) {
        writing.offset = whole * one * unit.perNext;
        writing.offsetText = signedText(whole, 0, std::string(unit.next));
    }
    return writing;
}

Axis ruledAxis(const Limits& limits, int wished, const Unit& unit)
{
    const double span = limits.high - limits.low;
    const LongUnit* const longer = unit.scaling == Scaling::Seconds ? longUnit(span) : nullptr;
    const double scale = longer != nullptr ? longer->seconds : 1;
    // No step is near what doubles tell apart, though the narrowest axis has two.
    const double spacing =
        1.5 * std::max(std::abs(limits.low), std::abs(limits.high)) * std::numeric_limits<double>::epsilon();
    const double smallest = std::max(span / wished, spacing) / scale;
    const Step step = longer != nullptr ? longStep(*longer, smallest) : plainStep(unit, smallest);

    // A limit that misses a round number by its last bits still gets its tick.
    constexpr double kSlack = 1e-9;
    const double stepValue = valueOf(step);
    const auto at = [&](std::int64_t number) { return valueOf(number * step.mantissa, step.exponent) * scale; };
    const double slack = kSlack * stepValue * scale;
    // Quotients as large as doubles count to are off by up to one.
    auto first = std::llround(std::floor(limits.low / scale / stepValue - kSlack));
    auto last = std::llround(std::ceil(limits.high / scale / stepValue + kSlack));
    while (at(first) < limits.low - slack)
        ++first;
    while (at(last) > limits.high + slack)
        --last;
    const bool divisible = stepValue * scale / step.divisions >= spacing;
    Axis axis{
        .ticks = {}, .divisions = divisible ? step.divisions : 1, .step = stepValue * scale, .unit = {}, .offset = {}};
    if (first > last)
        return axis;
    const std::int64_t low = first * step.mantissa;
    const std::int64_t high = last * step.mantissa;
    const Writing writing = longer != nullptr ? longWriting(low, high, step.exponent, *longer)
                                              : decimalWriting(low, high, step.exponent, unit);
    for (std::int64_t count = low; count <= high; count += step.mantissa)
        axis.ticks.push_back({std::clamp(valueOf(count, step.exponent) * scale, limits.low, limits.high),
                              decimalText(count - writing.offset, step.exponent - writing.exponent)});
    axis.unit = writing.unitText;
    axis.offset = writing.offsetText;
    return axis;
}

} // namespace

Axis makeDecadeAxis(const Limits& limits, int wished, std::string_view unit)
{
    constexpr double kSlack = 1e-9;
    constexpr int kMostZeros = 4; // 0.0001 to 10000
    const int first = static_cast<int>(std::ceil(std::log10(limits.low) - kSlack));
    const int last = static_cast<int>(std::floor(std::log10(limits.high) + kSlack));
    const int step = std::max(1, (last - first + wished - 1) / wished);
    Axis axis{.ticks = {},
              .divisions = step == 1 ? 9 : step,
              .step = static_cast<double>(step),
              .unit = std::string(unit),
              .offset = {},
              .decades = true};
    for (int exponent = last; exponent >= first; exponent -= step) // from the top, where a scale begins: 100 %
        axis.ticks.push_back(
            {std::clamp(valueOf(1, exponent), limits.low, limits.high),
             std::abs(exponent) <= kMostZeros ? decimalText(1, exponent) : "10" + superscript(exponent)});
    std::reverse(axis.ticks.begin(), axis.ticks.end());
    return axis;
}

Axis makeAxis(Limits limits, int wished, std::string_view unitName)
{
    limits = usableLimits(limits.low, limits.high);
    const Unit unit = parseUnit(unitName);
    for (int steps = std::clamp(wished, 1, kMostSteps);; ++steps) {
        Axis axis = ruledAxis(limits, steps, unit);
        if (axis.ticks.size() >= 2 || steps == kMostSteps)
            return axis;
    }
}

} // namespace tracery::figures
