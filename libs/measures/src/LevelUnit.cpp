#include <tracery/measures/LevelUnit.h>

#include <algorithm>
#include <cmath>

namespace tracery::measures {

double decibels(double power) { return 10 * std::log10(power); }

double levelOf(double power, LevelUnit unit, bool complex)
{
    constexpr double kSine = 0.5; // mean square of a sine of amplitude 1
    switch (unit) {
    case LevelUnit::Decibel:
        return decibels(power);
    case LevelUnit::FullScale:
        return decibels(complex ? power : power / kSine);
    case LevelUnit::Linear:
        break;
    }
    return power;
}

std::string squared(const std::string& unit)
{
    if (unit.empty())
        return "";
    const bool oneWord =
        std::none_of(unit.begin(), unit.end(), [](char c) { return c == ' ' || c == '/' || c == '*' || c == '^'; });
    return (oneWord ? unit : "(" + unit + ")") + "²";
}

std::string levelText(LevelUnit unit, SpectrumScale scale, const std::string& channelUnit)
{
    const std::string perHertz = scale == SpectrumScale::Density ? "/Hz" : "";
    if (unit == LevelUnit::FullScale)
        return "dBFS" + perHertz;
    const std::string square = squared(channelUnit);
    if (unit == LevelUnit::Decibel)
        return "dB re 1" + (square.empty() ? "" : " " + square) + perHertz;
    return square.empty() && !perHertz.empty() ? "1" + perHertz : square + perHertz;
}

} // namespace tracery::measures
