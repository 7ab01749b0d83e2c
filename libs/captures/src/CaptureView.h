#pragma once

#include "ChunkTable.h"
#include "StepFormat.h"

#include <tracery/captures/TimeAxis.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tracery::captures {

/// Steps of a chunk, from `first` on, whose times are steps of an even axis: the i-th is at axis.timeOf(offset i).
struct TimeRun {
    std::int64_t first;
    TimeAxis axis;
};
/// The most steps of a run, so that one is quickly read.
inline constexpr std::int64_t kRunSteps = 1024;

/// The steps that a capture had at some moment: they stay as they are while somebody looks. thread  any
class CaptureView {
public:
    CaptureView(const StepFormat& steps, const TimeAxis* even) : format(steps), table(format), axis(even) {}
    CaptureView(const CaptureView&) = delete;
    CaptureView& operator=(const CaptureView&) = delete;
    virtual ~CaptureView() = default;

    const StepFormat& format;
    const ChunkTable table;
    const TimeAxis* const axis; ///< none when each step has its own time
    std::int64_t begin = 0;     ///< the first step
    std::int64_t end = 0;       ///< behind the last

    /// The bytes of steps.
    virtual void read(std::int64_t first, std::size_t count, std::byte* into) const = 0;
    /// A chunk's overview.
    virtual const std::byte* overview(std::int64_t chunk) const = 0;
    /// A chunk's runs of times, and the offsets of steps. Of captures without an axis.
    virtual std::span<const TimeRun> runs(std::int64_t chunk) const = 0;
    virtual void readOffsets(std::int64_t first, std::size_t count, std::int64_t* into) const = 0;
    /// Says that steps will be read soon.
    virtual void expect(std::int64_t /*first*/, std::size_t /*count*/) const {}
    /// Whether it is of use to say so.
    virtual bool expects(std::int64_t /*first*/) const { return false; }
    /// throws  when what was read meanwhile cannot be trusted
    virtual void check() const {}
};

} // namespace tracery::captures
