#pragma once

#include <tracery/measures/SpectrumEstimate.h>

#include <string>

namespace tracery::measures {

/// What levels of power are given in.
enum class LevelUnit {
    Decibel,   ///< relative to one unit² (or unit²/Hz)
    FullScale, ///< decibels relative to a sine of amplitude 1, or to a complex exponential of amplitude 1
    Linear     ///< unit² (or unit²/Hz)
};

double levelOf(double power, LevelUnit unit, bool complex);

/// Decibels relative to 1; -inf for 0.
double decibels(double power);

/// The square of a channel's unit: "V²", "(m/s)²", empty for none.
std::string squared(const std::string& unit);

/// For axes and headings: "dB re 1 V²/Hz", "dBFS", "V²".
std::string levelText(LevelUnit unit, SpectrumScale scale, const std::string& channelUnit);

} // namespace tracery::measures
