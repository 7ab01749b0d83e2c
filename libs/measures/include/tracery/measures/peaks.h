#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tracery::measures {

struct SpectrumPeak {
    double frequency; ///< Hz, between the bins
    double power;
};

/// What level a peak has.
enum class PeakLevel {
    Bin,         ///< the strongest bin's
    Interpolated ///< the top's between the bins
};

/// Which of the end bins have no negative frequency whose power the others, in a one-sided spectrum, have as well.
struct OneSided {
    bool firstAlone = false;
    bool lastAlone = false;
};

/// The strongest local maxima, the strongest first: bins stronger than the one before and at least as strong as the one
/// after. What rises less than 6 dB from the dip before something stronger is part of that, or noise, and no peak. What
/// is 300 dB below the strongest bin is the rounding of that: 1e-15 of its amplitude.
///
/// A peak is at the top of the parabola through the logarithms of three bins. With it, a sine between the bins shows up
/// to 0.03 dB too much with a Blackman-Harris window, 0.4 dB with a Hann or Hamming one (where the strongest bin shows
/// up to 0.8, 1.4 and 1.8 dB too little), and up to 2.8 dB too little with a rectangular one (the bin: 3.9 dB). The
/// strongest bin of a flat-top window is within 0.01 dB by itself, and the parabola's top is not.
/// frequencies, power  of the bins; evenly spaced
std::vector<SpectrumPeak> findPeaks(std::span<const double> frequencies, std::span<const double> power,
                                    const OneSided& oneSided, PeakLevel level, std::size_t most);

} // namespace tracery::measures
