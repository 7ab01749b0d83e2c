#pragma once

#include "buffers/PortRings.h"
#include "support/pairKernels.h"

#include <tracery/TimeBuffer.h>

#include <cstdint>
#include <span>
#include <vector>

namespace tracery {

/// Where one channel's samples lie in a range of steps, and when they were taken.
struct ChannelLayout {
    std::uint64_t samplesPerStep;
    std::uint64_t stride; ///< from one step's block to the next
    std::uint64_t offset; ///< of the channel in a block
    double sampleSpacing; ///< seconds

    /// Samples of step i start at `i * stride + offset`. The last of `steps` steps must end inside `available` values.
    /// As a block holds one channel at least, there are no more samples than values.
    /// throws  InvalidChannelID
    static ChannelLayout of(std::uint64_t channelCount, std::uint64_t channel, bool isFrameBased, double framePeriod,
                            std::uint64_t samplesPerFrame, std::uint64_t steps, std::uint64_t available);
};

/// One channel's samples in a range of steps: laid out while the buffer is locked, with the parts of complex values one
/// after the other.
class ChannelRead {
public:
    ChannelRead(const StepsView& steps, StepRange range, ChannelLayout layout)
        : steps_(steps), range_(range), layout_(layout)
    {}
    std::uint64_t samples() const { return layout_.samplesPerStep * range_.count(); }

    /// Lays all samples out as (time, value) pairs, and widens the range by their values.
    void layOut(const Ring::View& values, double timeOffset, ValueRange& range, std::span<double> pairs) const;
    /// Lays out the samples at times in (after, upTo], as many as there is room for. Returns how many those are.
    std::uint64_t layOutWithin(const Ring::View& values, double after, double upTo, std::span<double> pairs) const;
    const StepsView& steps() const { return steps_; }

private:
    template <class Use>
    void forEachRun(const Ring::View& values, std::uint64_t room, Use&& use) const;
    template <class Use>
    void forEachSample(const Ring::View& values, Use&& use) const;

    const StepsView& steps_;
    StepRange range_;
    ChannelLayout layout_;
};

/// The display read: a channel with both parts, and the range of each.
class DisplayPairs {
public:
    /// limits  those to widen
    explicit DisplayPairs(std::span<const double, 4> limits);
    /// throws  std::bad_alloc
    void layOut(const ChannelRead& read, double timeOffset);
    /// Completes what was laid out: settles the parts and their limits.
    void finish(bool toMagnitudePhase);
    /// A new array, 2 by samples; null when nothing was laid out.
    HostArray* take();
    std::vector<double> limits() const;

private:
    std::span<double> of(const HostDoubles& part) const { return {part.get(), 2 * columns_}; }

    ValueRange before_[2]; ///< real, imaginary
    ValueRange ranges_[2];
    std::uint64_t columns_ = 0;
    bool complex_ = false;
    HostDoubles real_, imag_;
};

/// The trigger read: one part of a channel's values.
class PartPairs {
public:
    explicit PartPairs(TimeBuffer::SamplePart part) : part_(part) {}
    /// Lays out the samples at times in (after, upTo], as many as there is room for.
    /// throws  std::bad_alloc, when the part takes both of a complex value
    void layOut(const ChannelRead& read, double after, double upTo, std::span<double> pairs);
    /// Makes what was laid out the part that is wanted. Returns how many pairs there are.
    std::uint64_t finish();

private:
    TimeBuffer::SamplePart part_;
    bool complex_ = false;
    std::span<double> pairs_;
    std::vector<double> imag_; ///< pairs, where the part takes both
    std::uint64_t count_ = 0;
};

} // namespace tracery
