#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports when the signal has gone longer than the timeout without a crossing of the level. Crossings are
/// those of EdgeTimeDomainTrigger. The event's time is that of the sample that shows it, and the next event
/// needs another crossing first. The timer starts with the first sample after a reset. No auto level.
class TRACERY_EXPORT TimeoutTimeDomainTrigger : public DetectorOf<TimeoutTimeDomainTrigger> {
public:
    /// A detector with these settings.
    explicit TimeoutTimeDomainTrigger(const DetectorSettings& settings);
    TimeoutTimeDomainTrigger(TDTC::PolarityEnum polarity, double level, double hysteresis, double holdoff,
                             double timeout);

    /// Also goes back to the real part of complex blocks.
    void reset() override;

private:
    friend DetectorOf;
    static constexpr double kTimerNotStarted = -std::numeric_limits<double>::infinity();
    static constexpr double kWaitForCrossing = std::numeric_limits<double>::infinity();
    static constexpr int kAutoLevels = 0;
    void examine(SampleView pairs, EventQueue& queue);
    void updatePosEventQueue(SampleView pairs, EventQueue& queue);
    void updateNegEventQueue(SampleView pairs, EventQueue& queue);
    void updateAnyEventQueue(SampleView pairs, EventQueue& queue);
    template <class Crossing>
    void pushTimeouts(SampleView pairs, Crossing crosses, EventQueue& queue);
    /// A time up to which none is late; +inf when none can be, -inf when that takes a closer look.
    double latestInTime() const;

    struct Seen {
        bool armedPositive = false; // below level - hysteresis since the last rising crossing
        bool armedNegative = false; // above level + hysteresis since the last falling crossing
        double lastCrossingTime = kTimerNotStarted;
    } seen_;
};

extern template class DetectorOf<TimeoutTimeDomainTrigger>;

} // namespace tracery
