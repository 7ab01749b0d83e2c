#pragma once

#include "buffers/CcdfStatistics.h"
#include "buffers/SegmentedSamples.h"

#include <tracery/SpectrumBuffer.h>

#include <limits>
#include <vector>

namespace tracery {

/// Everything a SpectrumBuffer knows.
struct SpectrumBuffer::State {
    /// The buffers of all channels; imag is empty when they are real.
    struct Channels {
        std::vector<SegmentedSamples> real, imag;

        /// Calls `use` with each buffer.
        template <class Use>
        void each(Use&& use)
        {
            for (std::vector<SegmentedSamples>* part : {&real, &imag})
                for (SegmentedSamples& buffer : *part)
                    use(buffer);
        }
        std::uint64_t size() const { return real.empty() ? 0 : real.front().size(); }
        void clear() noexcept
        {
            each([](SegmentedSamples& buffer) { buffer.clear(); });
        }
        /// throws  invalid subscript when a buffer has fewer than `count` samples
        void requireSamples(std::uint64_t count) const;
    };

    /// The columns of an input, column-major; imag is null when there is none. Of no rows, nothing is read.
    struct Frame {
        std::uint64_t rows = 0;
        const double* real = nullptr;
        const double* imag = nullptr;
    };

    State(std::uint32_t segmentLength, double percent, HostComplexity initialComplexity, std::uint32_t channelCount,
          std::unique_ptr<Timer> updateTimer);

    static Channels emptyChannels(std::uint32_t count, HostComplexity complexity);
    /// Takes other empty buffers.
    void setChannels(std::uint32_t count, HostComplexity newComplexity);

    /// throws  as AddValue
    Frame frameOf(const HostArray* value) const;
    /// Makes room for a frame that comes when `dropped` samples are gone. throws  too long, std::bad_alloc
    void reserve(Channels& into, std::uint64_t dropped, std::uint64_t rows, SegmentCut under, SegmentLead lead);
    /// Appends a frame that there is room for.
    void append(Channels& into, const Frame& frame, SegmentCut under, SegmentLead lead) const noexcept;
    /// The samples in whole blocks.
    std::uint64_t samplesInBlocks() const;
    /// Discards them, of buffers that all have so many.
    void discardBlocks() noexcept;
    /// Notes where the input that is about to be appended begins.
    void noteInputStart() noexcept;
    /// rebuffer, under another cut.
    void recut(SegmentCut under);
    /// The `rows` samples of each channel that end where the last input does, without the overlaps between them, part
    /// after part. throws  invalid subscript
    std::vector<double> newestSamples(std::uint64_t rows) const;

    std::uint32_t numProcessedSamples = 0;
    bool dataSkipped = false;
    SegmentCut cut;
    std::uint32_t segmentsPerBlock = 1;
    double overlapPercent;
    std::uint32_t numChannels;
    double maxNumTimeSteps = 1;
    double numPorts = 1;
    double lastTime = -std::numeric_limits<double>::infinity();
    bool pendingClear = false; ///< segments were handed out; the next input discards them first
    // The last input: where it begins in the first channel's buffer, its rows, and the cut then.
    std::uint64_t lastInputIndex = 0;
    std::uint32_t lastInputFrameLength = 0;
    SegmentCut lastInputCut;
    Channels channels;
    HostComplexity complexity;
    std::vector<double> zeros; ///< as many as a frame without imaginary part needed
    std::unique_ptr<Timer> updateTimer;
    bool reduceUpdates = true;
    bool reduceUpdatesOverride = false;
    bool treatMby1SignalsAsOneChannel = true;

    CcdfStatistics ccdf;
    CcdfStatistics nextCcdf; ///< room for an update, which counts only when it has succeeded
    PowerBinTable powerBins;
};

} // namespace tracery
