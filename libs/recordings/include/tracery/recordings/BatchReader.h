#pragma once

#include <tracery/host/HostArray.h>
#include <tracery/recordings/Recording.h>

#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <optional>

namespace tracery::recordings {

/// Steps ready to be written to a TimeBuffer.
struct Batch {
    tracery::HostArrayPtr times;  ///< 1-by-n, seconds
    tracery::HostArrayPtr values; ///< channels-by-n, complex for complex recordings
    std::uint64_t count = 0;
    double lastTime = 0;
};

/// Start of a window of a TimeBuffer that holds everything after the last step of a batch.
double justAfter(double time);

/// Reads a stretch of a recording in batches that never part steps of one time: readers of a buffer ask for "later
/// than the last step", so steps of one time must come together. Everything else has the size asked for.
class BatchReader {
public:
    /// Steps in [from, to], with the last one before and the first one after.
    /// steps, seconds  the most a batch holds
    BatchReader(std::unique_ptr<Recording> recording, double from, double to, std::size_t steps,
                double seconds = std::numeric_limits<double>::infinity());

    const RecordingInfo& info() const { return recording_->info(); }
    /// The next batch, at least one step; nothing at the end. throws  InputError, when what came
    /// before the error is handed out
    std::optional<Batch> next();
    /// Time of the last step read from the recording, handed out or not; -inf before.
    double reached() const { return reached_; }
    /// Whether all is handed out, and there was no error.
    bool ended() const { return ended_ && !failure_; }
    /// As Recording::stop. thread  any
    void stop() { recording_->stop(); }

private:
    void readBlock();
    void readOn();
    void holdBackNewest(Block& rest);
    Batch joinHeldAndBlock();

    std::unique_ptr<Recording> recording_;
    std::size_t channels_;
    double from_;
    double to_;
    std::size_t steps_;
    double seconds_;
    Block block_;
    Block ahead_; ///< read already, but past the seconds of the block
    Block held_;  ///< the newest steps, until a step at a later time follows
    double reached_ = -std::numeric_limits<double>::infinity();
    bool sought_ = false;
    bool ended_ = false;
    std::exception_ptr failure_;
};

} // namespace tracery::recordings
