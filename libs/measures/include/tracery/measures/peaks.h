#pragma once

#include <tracery/measures/WindowFunction.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tracery::measures {

struct SpectrumPeak {
    double frequency; ///< Hz, between the bins
    double power;
};

/// What is a peak of which spectrum.
struct PeakSearch {
    WindowFunction window = WindowFunction::Hann;
    std::uint32_t segment = 1024;
    bool complex = false;  ///< two-sided, of in-phase and quadrature parts
    double prominence = 4; ///< least power over the surroundings on either side, a ratio
    double range = 1e-10;  ///< least power, of the strongest bin's: further down is rounding of numbers and samples
    std::size_t most = 5;
};

/// The strongest local maxima, the strongest first: bins stronger than the one before and at least as strong as the one
/// after. What rises less than 6 dB from the dip before something stronger is part of that, or noise, and no peak. Nor is
/// a side lobe, or what does not stand out of its surroundings: the lower quarter of the 32 bins on one side of a bin,
/// where that is lowest on the way to something stronger. Bins beyond the ends are those of the
/// negative frequencies, or of a complex spectrum its other end. A constant is no peak.
///
/// Frequencies and powers are those of the sine that gives the bins around a peak (SineShape).
/// frequencies, power  of the bins; evenly spaced
std::vector<SpectrumPeak> findPeaks(std::span<const double> frequencies, std::span<const double> power,
                                    const PeakSearch& search);

/// How far noise stands out of its surroundings in one spectrum of a hundred, a ratio of powers.
/// averages  of segments that have nothing to do with each other
double noiseProminence(double averages, std::size_t bins);

} // namespace tracery::measures
