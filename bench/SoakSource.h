#pragma once

#include "Waits.h"

#include <tracery/TimeBuffer.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

namespace tracery::bench {

/// What runs, and how long.
struct SoakSettings {
    double seconds = 60;
    std::uint64_t ports = 8;
    double rate = 1e6; ///< samples per second and port
    std::uint64_t frame = 256;
    double refresh = 0.05; ///< seconds between redraws
    double span = 1;       ///< seconds in the window that follows the data
    double columns = 2000;
    double flatWithin = 2; ///< percent that the memory may grow by after the warm-up

    double framePeriod() const { return static_cast<double>(frame) / rate; }
};

/// The simulation side: a thread that writes a frame of each port into a buffer whenever the clock says it is due. What
/// cannot be written within half a second of its time is lost.
class SoakSource {
public:
    using Clock = std::chrono::steady_clock;

    SoakSource(TimeBuffer& buffer, const SoakSettings& settings);
    /// Ends the writing.
    ~SoakSource() { stop(); }
    SoakSource(const SoakSource&) = delete;
    SoakSource& operator=(const SoakSource&) = delete;

    void stop();
    /// When the sample at time 0 is due.
    Clock::time_point begin() const { return begin_; }
    std::uint64_t written() const { return written_; }
    std::uint64_t lost() const { return lost_; }
    /// How long each frame of each port took to be written, the wait for the lock with it; once it is stopped.
    const Waits& waits() const { return waits_; }

private:
    void run();

    TimeBuffer& buffer_;
    SoakSettings settings_;
    std::vector<std::vector<HostArrayPtr>> frames_; ///< of each port; they come in turn
    Clock::time_point begin_ = Clock::now();
    std::atomic<bool> stop_{false};
    std::atomic<std::uint64_t> written_{0};
    std::atomic<std::uint64_t> lost_{0};
    Waits waits_;
    std::thread thread_;
};

} // namespace tracery::bench
