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

/// Writes steps to a port of a buffer, by arrays that it keeps.
class StepsWriter {
public:
    /// steps  at least one
    void write(tracery::TimeBuffer& buffer, std::size_t port, const Steps& steps);

private:
    tracery::HostArrayPtr times_;
    tracery::HostArrayPtr values_;
};

/// Reads what is new of a port of a buffer, step by step, into memory that it keeps.
class StepsReader {
public:
    /// Valid until the next reading; there may be none.
    Steps read(const tracery::TimeBuffer& buffer, std::size_t port);

private:
    tracery::TimeBuffer::ReadPosition position_;
    tracery::TimeBuffer::ReadSteps steps_;
};

/// New steps of one port.
struct FeedSteps : Steps {
    std::size_t port;
};

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

    /// Waits for the next steps, which are valid until the next call; nothing at the end. Rethrows what went wrong on the
    /// writer's side.
    std::optional<FeedSteps> next();
    /// The latest time that has been taken, over all ports; -inf before.
    double reached() const { return reached_; }

private:
    struct Port;

    void write();
    bool writeBatch(std::size_t port, const Steps& batch);
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
