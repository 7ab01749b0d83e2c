#pragma once

#include <tracery/recordings/Recording.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <span>

namespace tracery::recordings {

/// Consecutive steps, as a Block has them, kept elsewhere.
struct Steps {
    std::span<const double> times;
    std::span<const double> real;
    std::span<const double> imag;
    std::size_t count() const { return times.size(); }
    double lastTime() const { return times.back(); }
};

/// Reads a stretch of a recording in batches, each of at least one step.
class BatchReader {
public:
    /// Steps in [from, to], with the last one before and the first one after.
    /// steps, seconds  the most a batch holds
    BatchReader(std::unique_ptr<Recording> recording, double from, double to, std::size_t steps,
                double seconds = std::numeric_limits<double>::infinity());

    const RecordingInfo& info() const { return recording_->info(); }
    /// The next batch, valid until the next call; no steps at the end. throws  InputError
    Steps next();
    /// Time of the last step handed out; -inf before.
    double reached() const { return reached_; }
    /// Whether all is handed out.
    bool ended() const { return ended_; }
    /// As Recording::stop. thread  any
    void stop() { recording_->stop(); }

private:
    Steps stepsOfBlock(std::size_t first, std::size_t end) const;

    std::unique_ptr<Recording> recording_;
    double from_;
    double to_;
    std::size_t steps_;
    double seconds_;
    Block block_;
    std::size_t handedOut_ = 0; ///< steps of the block
    double reached_ = -std::numeric_limits<double>::infinity();
    bool sought_ = false;
    bool ended_ = false;
};

} // namespace tracery::recordings
