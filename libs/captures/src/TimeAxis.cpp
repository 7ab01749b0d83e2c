#include "Wide.h"

#include <tracery/captures/TimeAxis.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace tracery::captures {

namespace {

constexpr std::int64_t kFarthest = std::int64_t{1} << 62;
constexpr std::int64_t kLargest = kFemtosPerSecond; // so that no two steps share a femtosecond

/// A ratio in lowest terms.
Rate rateOf(Wide numerator, Wide denominator, std::string_view text)
{
    Wide a = std::max<Wide>(numerator, 1), b = denominator;
    while (b != 0)
        a = std::exchange(b, a % b);
    if (numerator > 0 && denominator > 0 && numerator / a <= kLargest && denominator / a <= kLargest)
        return Rate(static_cast<std::int64_t>(numerator / a), static_cast<std::int64_t>(denominator / a));
    throw TimeError("'" + std::string(text) + "' is no rate: expected a ratio of whole numbers from 1 to 10^15");
}

/// a * b, exactly.
DoubleSum product(double a, double b)
{
    constexpr double kHalves = 0x1p27 + 1;
    const double highA = kHalves * a - (kHalves * a - a), lowA = a - highA;
    const double highB = kHalves * b - (kHalves * b - b), lowB = b - highB;
    const double high = a * b;
    return {high, highA * highB - high + highA * lowB + lowA * highB + lowA * lowB};
}

/// a + b, exactly.
DoubleSum sum(double a, double b)
{
    const double high = a + b, partOfB = high - a;
    return {high, a - (high - partOfB) + (b - partOfB)};
}

} // namespace

Rate::Rate(std::int64_t numerator, std::int64_t denominator)
{
    const std::int64_t common = std::gcd(numerator, denominator);
    if (numerator < 1 || denominator < 1 || numerator / common > kLargest || denominator / common > kLargest)
        throw TimeError("a rate is a ratio of whole numbers from 1 to 10^15, found " + std::to_string(numerator) + "/" +
                        std::to_string(denominator));
    numerator_ = numerator / common;
    denominator_ = denominator / common;
}

Rate Rate::of(double stepsPerSecond)
{
    const Duration decimal = Duration::of(stepsPerSecond);
    return rateOf(static_cast<Wide>(decimal.seconds) * kFemtosPerSecond + decimal.femtos, kFemtosPerSecond,
                  decimal.text());
}

Rate Rate::parse(std::string_view text)
{
    const std::size_t stroke = text.find('/');
    const Duration above = Duration::parse(text.substr(0, stroke));
    const Duration below = stroke == text.npos ? Duration{1, 0} : Duration::parse(text.substr(stroke + 1));
    const auto parts = [](const Duration& value) { // 0, and so no rate, when it is too large
        return value.seconds > kLargest ? 0 : static_cast<Wide>(value.seconds) * kFemtosPerSecond + value.femtos;
    };
    return rateOf(parts(above), parts(below), text);
}

std::string Rate::text() const
{
    return std::to_string(numerator_) + (denominator_ == 1 ? "" : "/" + std::to_string(denominator_));
}

Time TimeAxis::timeOf(std::int64_t step) const
{
    const Wide parts = static_cast<Wide>(step) * rate.denominator();
    const Wide seconds = floorOf(parts, rate.numerator());
    const Wide rest = parts - seconds * rate.numerator();
    return {durationOf(seconds + start.since.seconds, rest * kFemtosPerSecond / rate.numerator() + start.since.femtos),
            start.utc};
}

namespace {

/// The place of a time among the steps: a whole number of them and whether there is more.
std::pair<Wide, bool> placeOf(const TimeAxis& axis, const Time& time)
{
    const Duration distance = time - axis.start;
    const Wide numerator = axis.rate.numerator(), denominator = axis.rate.denominator();
    const Wide bySeconds = distance.seconds * numerator, byFemtos = distance.femtos * numerator;
    const Wide whole = floorOf(bySeconds, denominator);
    const Wide all = kFemtosPerSecond * denominator;
    const Wide rest = (bySeconds - whole * denominator) * kFemtosPerSecond + byFemtos;
    return {whole + rest / all, rest % all != 0};
}

} // namespace

std::int64_t TimeAxis::firstFrom(const Time& time) const
{
    const auto [whole, more] = placeOf(*this, time);
    return narrow(whole + (more ? 1 : 0), "the number of a step");
}

std::int64_t TimeAxis::lastUpTo(const Time& time) const
{
    return narrow(placeOf(*this, time).first, "the number of a step");
}

RelativeTimes::RelativeTimes(const TimeAxis& axis, const Time& origin)
    : rate_(axis.rate), numerator_(static_cast<double>(axis.rate.numerator())),
      denominator_(static_cast<double>(axis.rate.denominator()))
{
    const Wide nearest = placeOf(axis, origin).first;
    base_ = nearest < kFarthest && nearest > -kFarthest ? static_cast<std::int64_t>(nearest) : 0;
    // (start - origin) + base / rate, most often less than a step.
    const Duration ahead = axis.start - origin;
    const Wide numerator = rate_.numerator(), steps = static_cast<Wide>(base_) * rate_.denominator();
    const Wide whole = floorOf(steps, numerator), second = numerator * kFemtosPerSecond;
    const Wide parts = (steps - whole * numerator) * kFemtosPerSecond + ahead.femtos * numerator;
    Wide seconds = ahead.seconds + whole + parts / second, rest = parts % second;
    seconds_ = narrow(seconds, "the distance from an origin");
    partsHigh_ = static_cast<std::uint64_t>(rest >> 64);
    partsLow_ = static_cast<std::uint64_t>(rest);
    const bool before = seconds < 0;
    if (before) {
        seconds = -seconds - (rest != 0 ? 1 : 0);
        rest = rest != 0 ? second - rest : 0;
    }
    const auto [high, low] = doubleSum(static_cast<UnsignedWide>(seconds), static_cast<UnsignedWide>(rest),
                                       static_cast<UnsignedWide>(second));
    fraction_ = before ? -high : high;
    fractionRest_ = before ? -low : low;
}

/// Twice a double's digits tell the nearest one, but where they end half-way between two.
double RelativeTimes::fromFraction(std::int64_t step) const
{
    const double parts = static_cast<double>(step - base_) * denominator_;
    if (!(parts < kExact && parts > -kExact))
        return exactly(step);
    const double quotient = parts / numerator_;
    const DoubleSum back = product(quotient, numerator_);
    const double quotientRest = (parts - back.high - back.low) / numerator_;
    DoubleSum all = sum(quotient, fraction_);
    all = sum(all.high, all.low + (quotientRest + fractionRest_));
    const double doubt = 0x1p-98 * (std::abs(quotient) + std::abs(fraction_));
    const double least = all.high + (all.low - doubt), most = all.high + (all.low + doubt);
    return least == most ? least : exactly(step);
}

double RelativeTimes::exactly(std::int64_t step) const
{
    const Wide numerator = rate_.numerator(), steps = (static_cast<Wide>(step) - base_) * rate_.denominator();
    const Wide whole = floorOf(steps, numerator), second = numerator * kFemtosPerSecond;
    const Wide parts =
        (steps - whole * numerator) * kFemtosPerSecond + (static_cast<Wide>(partsHigh_) << 64 | partsLow_);
    return nearestDouble(seconds_ + whole + parts / second, static_cast<UnsignedWide>(parts % second),
                         static_cast<UnsignedWide>(second));
}

} // namespace tracery::captures
