#pragma once

#include "support/PowerBins.h"

#include <tracery/host/HostArray.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tracery {

/// Statistics of signal power, channel by channel: peak, average, and a histogram of numBins bins that ends at the
/// peak's. Bin j counts the powers of index (the peak's index) - numBins + 1 + j. An object that threw from an update is
/// to be thrown away.
class CcdfStatistics {
public:
    /// Takes a frame in. `power` holds the channels one behind the other, `rows` powers each; NaN and +inf are passed
    /// over. `table` is a cache, of this object or another.
    /// throws  InvalidArgumentType (a resolution that is not a positive number), invalid subscript (the number of bins
    ///         changed since the histogram was begun), too long (more bins than can be addressed)
    void updateCCDF(const double* power, std::uint64_t rows, std::uint64_t channels, int numBins, double resolution,
                    PowerBinTable& table);
    /// Drops the histogram. Peak, sums and counts stay on purpose, and go on if as many channels come next.
    void resetCCDF();

    std::span<const double> peakPowers() const { return {peakPower_.data(), ccdfChannels_}; }
    std::vector<double> averagePowers() const;
    std::span<const std::uint64_t> sampleCounts() const { return {sampleCount_.data(), ccdfChannels_}; }
    /// Levels (dB above the average) and how much of the samples (%) lies above them, for the bins from the average's
    /// on: a row a bin.
    HostArrayPtr getCCDFDistribution(std::uint64_t channel, int numBins) const;
    /// Bins by channels; 0 by 0 without channels.
    HostArrayPtr getCCDFHistogram() const;
    /// 1 by channels.
    HostArrayPtr getCCDFTotalUnbinned() const;

private:
    using Column = std::span<const double>;
    using Count = std::uint64_t; ///< reported as a double, which is exact for all that can be counted in a lifetime

    void refreshCCDFBuffers(std::uint64_t channels, int numBins);
    static double extractPeakPower(Column column);
    void shiftCCDFHistogram(std::uint64_t channel, double newPeak, std::span<Count> histogram);
    void updateCCDFHistogramCount(Column column, std::uint64_t channel, std::span<Count> histogram,
                                  PowerBinTable& table);
    std::int64_t getCCDFIndex(double power) const { return powerIndex(power, binsPerNeper_); }
    double getCCDFPwr(std::int64_t index) const { return powerOfIndex(index, binsPerNeper_); }

    std::vector<Count> histogram_; ///< bin after bin, channel after channel
    // One value a channel, and maybe more after a reset.
    std::vector<double> peakPower_;    ///< that set the top bin; a greater one in the same bin leaves it alone
    std::vector<double> powerSum_;     ///< of all finite powers
    std::vector<Count> sampleCount_;   ///< of finite powers
    std::vector<Count> totalUnbinned_; ///< below the lowest bin, not positive, or shifted out
    std::uint64_t ccdfChannels_ = 0;
    double binsPerNeper_ = 0;
};

} // namespace tracery
