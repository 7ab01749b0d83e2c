#pragma once

#include <tracery/Timer.h>
#include <tracery/export.h>

#include <cstdint>
#include <memory>

namespace tracery {

/// Tells cheaply whether the timeout has passed since the timer was last started. A thread of its own does the waiting,
/// by a clock that only goes forward; asking reads a flag.
///
/// Thread: one thread uses the object; the timer's own only raises the flag.
class TRACERY_EXPORT OneShotTimer final : public Timer {
public:
    /// Its time is not up, and a period of 0 seconds begins; start it (after setTimeout) before its flag means anything.
    /// throws  NoThread when the system gives no thread
    OneShotTimer();
    /// Ends the thread, also within a period.
    ~OneShotTimer() override;
    OneShotTimer(const OneShotTimer&) = delete;
    OneShotTimer& operator=(const OneShotTimer&) = delete;

    /// Stops the timer and sets the timeout, in whole microseconds for the wait (one of more than 100 years waits 100
    /// years). Ignored unless seconds > 0, so NaN too.
    void setTimeout(double seconds) override;
    /// The seconds last set, 0 at first.
    double getTimeout() const override { return timeoutSeconds_; }
    /// Begins a period. Returns once the thread waits it out; what is left of a period that is running is dropped, and
    /// can no longer raise the flag.
    void start() override;
    /// Ends the running period, if any: the time is then up.
    void stop() override;
    /// Whether the time is up. The first time it is in a period, this counts.
    bool isTimeUp() override;
    /// The same, under the name that the host's property reads.
    bool isTimeUpCOS() { return isTimeUp(); }
    /// How many periods isTimeUp has seen to be over, whether they ran out or were stopped.
    double getCounter() const { return static_cast<double>(counter_); }

private:
    class Waiter;

    double timeoutSeconds_ = 0;
    std::uint64_t counter_ = 0;
    std::uint64_t counterAtStart_ = 0;
    std::unique_ptr<Waiter> waiter_;
};

} // namespace tracery
