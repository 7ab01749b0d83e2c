// Work of the library that is measured. No guard: Subjects.cpp is compiled twice, against the library and against a build
// of its sources with plain kernels, in which `tracery` is called `tracery_plain`. PlainSubjects.h declares that one.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tracery::bench {

/// A detector by its name, such as "edge" or "window either", at work on (time, value) pairs.
std::function<void()> detection(const std::string& name, std::span<const double> pairs);

/// Batch thinning of a line of (time, value) pairs, which is copied; the result is released within the call.
std::function<void()> thinning(std::span<const double> pairs, double columnsPerSecond);

/// Doubles put one by one into a full circular buffer, as its header compiles by itself.
std::function<void()> pushBacks(std::size_t count, std::size_t capacity);

// Full buffers of one port, whose steps have `width` values or one a channel: one step written by AddTime and AddValue or
// by addTimeAndValue; the whole port read; one channel read for the display, for the trigger, and in kept blocks.
std::function<void()> stepWrites(std::size_t width, std::size_t steps);
std::function<void()> arrayWrites(std::size_t width, std::size_t steps);
std::function<void()> wholeRead(std::size_t width, std::size_t steps);
std::function<void()> displayRead(std::size_t channels, std::size_t steps);
std::function<void()> triggerRead(std::size_t channels, std::size_t steps);
std::function<void()> blockRead(std::size_t channels, std::size_t steps);

/// A step of 256 values written to each of some ports.
std::function<void()> portWrites(std::size_t ports);
/// `window` samples read from the middle of a full buffer of single values.
std::function<void()> windowRead(std::size_t window, std::size_t steps);
/// Seconds that each write of 256 single values took until the buffer was full, which had all its room at first or grew.
std::vector<double> writeTimes(std::uint64_t steps, bool roomAhead, double (*now)());

/// `held` new samples cut into segments, and then flushed.
std::function<void()> segmentation(std::size_t held, std::size_t frame, std::size_t segment, double overlapPercent);

/// A running scope of four ports: frames written, an edge trigger, windows of a second read and thinned to 2000 columns
/// 20 times a second.
struct PipelineRun {
    std::function<void()> runOneSecond; ///< of signal
    std::uint64_t points;               ///< drawn in the seconds of preparation
    std::uint64_t sum;                  ///< of their bits
};
PipelineRun makePipeline();

} // namespace tracery::bench
