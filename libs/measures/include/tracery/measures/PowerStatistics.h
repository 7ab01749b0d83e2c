#pragma once

#include <tracery/SpectrumBuffer.h>
#include <tracery/host/HostArray.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tracery::measures {

/// How the power of a signal is spread: exact totals, and from a SpectrumBuffer the curve of how much of the signal is
/// how far above the average (CCDF). The power of a sample is its square, of a complex one the squared magnitude. What
/// is not finite, or too large to be squared, is left out.
class PowerStatistics {
public:
    struct Channel {
        std::uint64_t samples = 0;
        std::uint64_t leftOut = 0;
        bool tooLarge = false;   ///< a finite value was
        bool zero = true;        ///< all of `samples`
        std::uint64_t above = 0; ///< samples with more than the average power
        double peak = 0;         ///< unit²
        double sum = 0;
        double average() const { return sum / static_cast<double>(samples); }
    };
    struct Point {
        double level;   ///< dB above the average
        double percent; ///< of the samples, that are above the level
    };

    /// width     values of a step, one a channel
    /// channels  those that are taken
    PowerStatistics(std::size_t width, std::vector<std::size_t> channels, int bins, double resolutionDecibels);

    /// Adds steps: channel c of step i is at [i * width + c].
    /// imag  of complex signals, else empty
    void add(std::span<const double> real, std::span<const double> imag);
    /// Counts what is above the average; for all steps again, after all have been added.
    void countAbove(std::span<const double> real, std::span<const double> imag);

    /// By the place of a channel among those taken.
    const Channel& channel(std::size_t index) const { return channels_[index]; }
    /// Up to the first level that nothing is above; from the average on, as far down as the bins reach.
    std::vector<Point> curve(std::size_t index) const;

private:
    template <class Take>
    void forPowers(std::span<const double> real, std::span<const double> imag, Take&& take);

    std::size_t width_;
    std::vector<std::size_t> numbers_;
    int bins_;
    double resolution_;
    std::vector<Channel> channels_;
    tracery::SpectrumBuffer buffer_;
    tracery::HostArrayPtr curves_; ///< a cell of tables
};

} // namespace tracery::measures
