#pragma once

#include "libraries.h"
#include "stream/Feed.h"

#include <tracery/TimeBuffer.h>
#include <tracery/recordings/BatchReader.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace scope {

/// The simulation side in real time: a thread writes a recording into a thread-safe TimeBuffer, each batch (about 10 ms)
/// when its time has come, and never waits for the display. The buffer grows while the display is behind; from some size
/// on it drops the oldest steps instead, and they count as lost. One display thread uses the functions.
class LiveFeed {
public:
    struct Pace {
        double from = 0;                                  ///< where to begin, seconds
        double factor = 1;                                ///< seconds of the recording per second
        double history = 0;                               ///< seconds of steps to keep, taken or not
        std::uint64_t mostBytes = std::uint64_t{1} << 29; ///< of the buffer
    };

    LiveFeed(std::unique_ptr<Recording> recording, const Pace& pace);
    /// Stops at once.
    ~LiveFeed();
    LiveFeed(const LiveFeed&) = delete;
    LiveFeed& operator=(const LiveFeed&) = delete;

    /// The steps that are new, without waiting; there may be none.
    FeedSteps take();
    /// Takes what is new without reading it. Returns the time of the last step; nothing when there is none.
    std::optional<double> pass();
    /// The buffer, of one port.
    const tracery::TimeBuffer& buffer() const { return buffer_; }

    /// Waits until there are new steps or the end, but no longer than that.
    void waitForSteps(std::chrono::milliseconds most);
    /// Whether nothing more will be written, be it for the end or for an error.
    bool finished();
    /// throws  what went wrong in reading
    void check();
    /// Ends the writing at once; what was written can still be taken.
    void stop();

    struct Totals {
        std::uint64_t written = 0; ///< steps
        std::uint64_t taken = 0;
        std::chrono::nanoseconds longestWrite{0};              ///< spent in the buffer for one batch
        std::uint64_t lost() const { return written - taken; } ///< once all is taken
    };
    Totals totals();

private:
    using Clock = std::chrono::steady_clock;
    struct Written {
        std::uint64_t steps; ///< up to and with a batch
        double lastTime;
    };

    void write();
    bool awaitTime(const Batch& batch);
    void writeBatch(const Batch& batch);
    void makeRoom(const Batch& batch);
    std::uint64_t noteReading();
    void count(std::uint64_t taken, std::uint64_t seen);

    Pace pace_;
    BatchReader reader_;
    tracery::TimeBuffer buffer_;

    // The writer's own.
    std::uint64_t capacity_;
    std::uint64_t mostSteps_;
    std::optional<Clock::time_point> start_; ///< when the first step came, at firstTime_
    double firstTime_ = 0;
    std::deque<Written> history_;

    double takenTime_; ///< the display's own

    std::mutex mutex_; ///< guards what follows
    std::condition_variable changed_;
    Totals totals_;
    std::uint64_t seen_ = 0; ///< steps written when the display last took what was new
    bool stop_ = false;
    bool finished_ = false;
    std::exception_ptr failure_;
    std::thread writer_;
};

} // namespace scope
