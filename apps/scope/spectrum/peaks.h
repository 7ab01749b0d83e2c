#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace scope {

struct SpectrumPeak {
    double frequency; ///< Hz, between the bins
    double power;     ///< of the strongest bin
};

/// Which of the end bins have no negative frequency whose power the others, in a one-sided spectrum, have as well.
struct OneSided {
    bool firstAlone = false;
    bool lastAlone = false;
};

/// The strongest local maxima, the strongest first: bins stronger than the one before and at least as strong as the one
/// after. What rises less than 6 dB from the dip before something stronger is part of that, or noise, and no peak. The
/// frequency is the top of the parabola through the logarithms of three bins.
/// frequencies, power  of the bins; evenly spaced
std::vector<SpectrumPeak> findPeaks(std::span<const double> frequencies, std::span<const double> power,
                                    const OneSided& oneSided, std::size_t most);

} // namespace scope
