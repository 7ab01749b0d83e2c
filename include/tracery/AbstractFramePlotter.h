#pragma once

#include <tracery/AbstractLinePlotter.h>

#include <cstddef>
#include <span>
#include <vector>

namespace tracery {

/// A plotter that knows the shape of its input: whether it comes in frames, how large they may be, and how many
/// channels of which length each port has.
class TRACERY_EXPORT AbstractFramePlotter : public AbstractLinePlotter {
public:
    ~AbstractFramePlotter() override;

    /// Keeps the values of a real double array, none of an empty one; its further extents count as columns.
    /// throws  InvalidMaxDimensions for null and an array of another class; nothing changes then
    void setMaxDimensions(const HostArray* dims);
    /// Rows x columns values, column-major, valid until they are set again. At first two zeros in a row.
    std::span<const double> getMaxDimensions() const { return maxDimensions_; }
    std::size_t getMaxDimsRows() const { return maxDimsRows_; }
    std::size_t getMaxDimsCols() const { return maxDimsCols_; }

    /// Whether the input comes in frames.
    void setFrameProcessing(bool frameProcessing) { frameProcessing_ = frameProcessing; }
    bool getFrameProcessing() const { return frameProcessing_; }

    /// Of each port.
    const std::vector<double>& getNumberOfChannels() const { return numberOfChannels_; }
    std::vector<double>& getNumberOfChannelsWriteable() { return numberOfChannels_; }
    /// Of each port, in samples: the length of a frame.
    const std::vector<double>& getLengthOfChannels() const { return lengthOfChannels_; }
    std::vector<double>& getLengthOfChannelsWriteable() { return lengthOfChannels_; }

private:
    std::vector<double> maxDimensions_ = {0, 0};
    std::size_t maxDimsRows_ = 1;
    std::size_t maxDimsCols_ = 2;
    bool frameProcessing_ = false;
    std::vector<double> numberOfChannels_;
    std::vector<double> lengthOfChannels_;
};

} // namespace tracery
