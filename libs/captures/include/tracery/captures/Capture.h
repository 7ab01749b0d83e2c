#pragma once

#include <tracery/captures/TimeAxis.h>
#include <tracery/recordings/Recording.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tracery::captures {

class CaptureSource;

/// Which line of a channel.
enum class Part : std::uint8_t {
    Real,     ///< of a complex capture the in-phase part, else the channel
    Imaginary ///< of a complex capture
};

/// A stretch of a line.
struct Stretch {
    std::size_t channel = 0;
    Part part = Part::Real;
    std::int64_t first = 0; ///< step
    std::size_t count = 0;
    std::int64_t stride = 1; ///< steps from one sample to the next, 1 or more
};

/// What is to be drawn of a line.
struct Window {
    std::size_t channel = 0;
    Part part = Part::Real;
    std::int64_t first = 0; ///< step
    std::int64_t count = 0;
    Time origin;                 ///< of the points' times; near the window
    double columnsPerSecond = 1; ///< as DataThinner takes it: a column opens half a column after the last one opened
    bool finishLast = false;     ///< whether the extremes of the last column come too, as if another one opened
};

/// A recording at random access: its samples in their own type where they lie, its time exact, and an overview from which
/// the points of any window come in a time that follows the columns and not the samples. A copy looks at the same.
/// Steps are counted from 0; a live capture that is bounded has lost the first ones.
/// throws  recordings::InputError, for whatever is wrong with a file: also that it became shorter, or was written to, since
///         it was opened; std::out_of_range for a channel, part or step that there is not; TimeError for times too far away
/// thread  any, several at once
class Capture {
public:
    explicit Capture(std::shared_ptr<const CaptureSource> source) : source_(std::move(source)) {}

    const recordings::RecordingInfo& info() const;
    /// The even axis; none when every step has a time of its own.
    const std::optional<TimeAxis>& axis() const;

    /// The steps that there are now: begin() to end() - 1.
    std::int64_t begin() const;
    std::int64_t end() const;

    Time timeOf(std::int64_t step) const;
    /// The first step at `time` or later, or end().
    std::int64_t firstFrom(const Time& time) const;

    /// Values, stretch.count of them.
    /// Complexity  linear in the steps from the first to the last
    void read(const Stretch& stretch, double* into) const;
    /// Times of steps, in seconds from `origin`, each the nearest double.
    void readTimes(std::int64_t first, std::size_t count, const Time& origin, double* into) const;

    /// The points of a window, (time, value) pairs: to the bit those that DataThinner::getArrayThinData gives, when not
    /// continued, for the window's samples and their times from the origin.
    /// points      the vector's memory is used again
    /// Complexity  of the columns; of the samples only where columns have but some hundred
    void points(const Window& window, std::vector<double>& points) const;

private:
    std::shared_ptr<const CaptureSource> source_;
};

} // namespace tracery::captures
