#pragma once

#include <tracery/SpectrumBuffer.h>
#include <tracery/measures/WindowFunction.h>

#include <complex>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace tracery::measures {

struct SpectrumSettings {
    std::size_t width = 1;                ///< values of a step, one a channel
    std::vector<std::size_t> channels{0}; ///< those that are estimated
    bool complex = false;                 ///< in-phase and quadrature parts
    double rate = 1;                      ///< steps per second
    double centerFrequency = 0;           ///< Hz, of complex signals
    std::uint32_t segment = 1024;         ///< samples, two or more
    double overlapPercent = 50;           ///< of consecutive segments
    WindowFunction window = WindowFunction::Hann;
    std::uint64_t mostAverages = std::numeric_limits<std::uint64_t>::max();
};

enum class SpectrumScale {
    Power,  ///< unit²: a sine shows its mean square, whatever the segment length
    Density ///< unit²/Hz: noise shows its density
};

/// Estimates power spectra by averaging the periodograms of overlapping windowed segments, cut by a SpectrumBuffer.
/// The first segment begins with the first sample. A segment of a channel with a value that is missing, infinite or too
/// large to be squared is left out.
///
/// Real signals give one-sided spectra, 0 Hz to half the rate, each bin with the power of its negative frequency as
/// well; complex ones give two-sided spectra around the centre frequency. The same steps give the same bits, however
/// they are cut into blocks.
class SpectrumEstimate {
public:
    explicit SpectrumEstimate(SpectrumSettings settings);
    ~SpectrumEstimate();
    SpectrumEstimate(const SpectrumEstimate&) = delete;
    SpectrumEstimate& operator=(const SpectrumEstimate&) = delete;

    /// Adds steps: channel c of step i is at [i * width + c].
    /// imag  of complex signals
    void add(std::span<const double> real, std::span<const double> imag);
    /// Whether every channel has as many averages as are wanted.
    bool full() const;

    // By the place of a channel among those estimated.
    std::uint64_t averages(std::size_t channel) const { return channels_[channel].averages; }
    /// Of segments that do not overlap, how many would leave as much of noise.
    double independentAverages(std::size_t channel) const;
    std::uint64_t leftOut(std::size_t channel) const { return channels_[channel].leftOut; }
    /// Whether a finite value was too large to be squared.
    bool tooLarge(std::size_t channel) const { return channels_[channel].tooLarge; }
    /// Whether all segments that were averaged are zero.
    bool zero(std::size_t channel) const { return channels_[channel].zero; }
    /// Mean power of each bin; NaN without averages.
    std::vector<double> power(std::size_t channel, SpectrumScale scale) const;

    /// Of the bins, Hz, ascending.
    std::vector<double> frequencies() const;
    double binWidth() const { return settings_.rate / settings_.segment; }
    /// Hz; the ratio of the two scales, and the resolution bandwidth of an analyser that would show the same noise.
    double noiseBandwidth() const;

private:
    struct Transform;
    struct ChannelSums {
        std::vector<double> power; ///< by bin of the transform
        std::uint64_t averages = 0;
        std::uint64_t leftOut = 0;
        bool tooLarge = false;
        bool zero = true;
    };

    void addFrame(std::span<const double> real, std::span<const double> imag);
    void takeSegments(const tracery::HostArray* segments);
    void addSegment(ChannelSums& sums, const double* real, const double* imag);
    std::size_t bins() const { return settings_.complex ? settings_.segment : settings_.segment / 2 + 1; }

    SpectrumSettings settings_;
    std::vector<double> window_;
    double windowSum_ = 0;       ///< of the window's samples
    double windowSquares_ = 0;   ///< of their squares
    std::uint64_t notWhole_ = 0; ///< segments still to come that begin before the first sample
    std::size_t frameSteps_ = 0; ///< the most that are handed to the buffer at once, so that it stays small
    std::vector<ChannelSums> channels_;
    tracery::SpectrumBuffer buffer_;
    std::unique_ptr<Transform> transform_;
};

} // namespace tracery::measures
