#pragma once

#include <tracery/captures/Capture.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <span>

namespace tracery::captures {

class LiveSource;

struct LiveSettings {
    std::vector<recordings::Channel> channels;
    bool complex = false;
    recordings::SampleLayout layout; ///< type, byte order and scale; f64 if nothing is said
    std::optional<TimeAxis> axis;    ///< none: each step comes with its time
    /// Steps kept at least, and with them at most a chunk of 65536 more; the oldest chunk goes first.
    std::int64_t mostSteps = std::numeric_limits<std::int64_t>::max();
};

/// A capture in memory that grows: one thread appends, others look at the same time, through `capture`. Each look sees a
/// moment's steps, and they stay while it lasts.
class LiveCapture {
public:
    /// throws  std::invalid_argument without channels
    explicit LiveCapture(LiveSettings settings);

    Capture capture() const;

    /// Appends steps as the bytes that the layout tells, whole steps.
    /// times   one a step, if there is no axis; they never decrease
    /// throws  std::invalid_argument, nothing appended: part of a step, times that do not fit the steps or step back
    /// thread  one at a time
    void append(std::span<const std::byte> steps, std::span<const Time> times = {});
    /// The same of values: channel by channel within a step, and in-phase before quadrature.
    /// throws  also when a value has no number of the layout's type that stands for it
    void appendValues(std::span<const double> values, std::span<const Time> times = {});

private:
    std::shared_ptr<LiveSource> source_;
};

} // namespace tracery::captures
