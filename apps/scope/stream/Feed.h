#pragma once

#include "libraries.h"

#include <tracery/TimeBuffer.h>
#include <tracery/host/HostArray.h>
#include <tracery/recordings/BatchReader.h>

#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace scope {

/// New steps of one port, as the buffer handed them out.
struct FeedSteps {
    std::size_t port = 0;
    tracery::HostArrayPtr times;  ///< 1-by-n, seconds
    tracery::HostArrayPtr values; ///< channels-by-n, complex for complex recordings
    std::size_t count() const { return times != nullptr ? tracery::getNumberOfElements(times.get()) : 0; }
    double lastTime() const { return tracery::getRealData(times.get())[count() - 1]; }
};

/// The steps of a port at times in [from, until]; none is null arrays.
/// widen  with the steps on both sides
FeedSteps readSteps(const tracery::TimeBuffer& buffer, std::size_t port, double from, double until, bool widen);

/// The simulation side: a thread reads recordings in blocks and writes each into its port of a thread-safe TimeBuffer,
/// keeping the ports in step by time. The display side takes the steps that are new. The writer waits when the display
/// falls behind, so every step is handed out exactly once and memory stays bounded, however long the recordings are.
class Feed {
public:
    /// Starts writing what lies in [from, to], with the last step before and the first one after, of each recording.
    Feed(std::vector<std::unique_ptr<Recording>> recordings, double from, double to);
    /// Stops the writer, also in mid-recording.
    ~Feed();
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    /// Waits for the next steps; nothing at the end. Rethrows what went wrong on the writer's side.
    std::optional<FeedSteps> next();
    /// The latest time that has been taken, over all ports; -inf before.
    double reached() const { return reached_; }

private:
    struct Port;

    void write();
    bool writeBatch(std::size_t port, const Batch& batch);
    std::size_t portWithNewSteps() const;

    std::vector<Port> ports_;
    tracery::TimeBuffer buffer_;
    double reached_;

    std::mutex mutex_; ///< guards the counts in ports_ and what follows
    std::condition_variable changed_;
    bool stop_ = false;
    bool finished_ = false;
    bool writerWaits_ = false; ///< for room, so the display must take what there is
    std::exception_ptr failure_;
    std::thread writer_;
};

} // namespace scope
