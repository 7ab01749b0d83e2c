#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

/// Reports when the signal has gone longer than the timeout without a crossing of the level. Crossings are
/// those of EdgeTimeDomainTrigger. The event's time is that of the sample that shows it, and the next event
/// needs another crossing first. The timer starts with the first sample after a reset. No auto level.
class TRACERY_EXPORT TimeoutTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    TimeoutTimeDomainTrigger(TDTC::PolarityEnum polarity, double level, double hysteresis, double holdoff,
                             double timeout);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    /// Also goes back to the real part of complex blocks.
    void reset() override;

private:
    static constexpr double kTimerNotStarted = -std::numeric_limits<double>::infinity();
    static constexpr double kWaitForCrossing = std::numeric_limits<double>::infinity();

    template <class Element>
    void update(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updatePosEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateNegEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element>
    void updateAnyEventQueue(std::span<const Element> pairs, EventQueue& queue);
    template <class Element, class Crossing>
    void pushTimeouts(std::span<const Element> pairs, Crossing crosses, EventQueue& queue);
    /// A time up to which none is late; +inf when none can be, -inf when that takes a closer look.
    double latestInTime() const;

    bool armedPositive_ = false; // below level - hysteresis since the last rising crossing
    bool armedNegative_ = false; // above level + hysteresis since the last falling crossing
    double lastCrossingTime_ = kTimerNotStarted;
};

} // namespace tracery
