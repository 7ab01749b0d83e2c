#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

/// Reports pulses that leave one level, fail to reach the other, and come back after a time within
/// [minTime, maxTime]. A positive runt rises from the lower level, a negative one falls from the upper. A
/// sample on a level has reached it. The event is the return through the level, and the duration runs from
/// the departure through it.
class TRACERY_EXPORT RuntTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    RuntTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel, double lowerLevel,
                          double minTime, double maxTime, double holdoff);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    void reset() override;

private:
    template <class Element>
    void update(std::span<const Element> pairs, const double* extrema, EventQueue& queue);

    bool aboveUpper_ = false;    // came last from the upper level
    bool between_ = false;       // inside the band
    bool belowLower_ = false;    // came last from the lower level
    double startTime_ = kNoTime; // when the signal entered the band
};

} // namespace tracery
