#pragma once

#include "LineDisplay.h"
#include "SoakSource.h"

#include <tracery/DrawScheduler.h>
#include <tracery/SpectrumBuffer.h>
#include <tracery/TimeDomainTriggerController.h>

#include <cstdint>

namespace tracery::bench {

/// The display side, all of it: a display whose window follows the data in sweeps, one that shows the windows of a
/// trigger on port 0, and the power statistics of port 0's segments. All of them are drawn when the process's scheduler
/// says so. Main thread only.
class SoakScope {
public:
    /// host, buffer  outlive it
    SoakScope(embedded::EmbeddedHost& host, const TimeBuffer& buffer, const SoakSettings& settings);
    ~SoakScope();
    SoakScope(const SoakScope&) = delete;
    SoakScope& operator=(const SoakScope&) = delete;

    /// Lets the scheduler redraw when it is time.
    void poll(SoakSource::Clock::time_point begin);

    const Waits& redraws() const { return redraws_; } ///< how long each took
    const Waits& ages() const { return ages_; }       ///< how old the newest sample was when it had been committed
    std::uint64_t shown() const { return shown_; }    ///< samples drawn in the sweeps
    std::uint64_t missed() const { return missed_; }  ///< samples that had left the buffer before
    std::uint64_t windows() const { return windows_; }
    double powerSamples() const { return powerSamples_; }

private:
    void drawAll();
    void drawSweep(double from, double to);
    void drawTriggered(double now);
    void updateStatistics(double from, double to);
    HostArrayPtr read(std::uint64_t port, double from, double to) const;

    const TimeBuffer& buffer_;
    SoakSettings settings_;
    LineDisplay sweep_;
    LineDisplay triggered_;
    TimeDomainTriggerController trigger_;
    SpectrumBuffer spectrum_;
    std::size_t task_;
    double drawnTo_ = 0; ///< up to the middle between two frames
    double newest_ = 0;
    std::uint64_t shown_ = 0;
    std::uint64_t missed_ = 0;
    std::uint64_t windows_ = 0;
    double powerSamples_ = 0;
    Waits redraws_;
    Waits ages_;
};

} // namespace tracery::bench
