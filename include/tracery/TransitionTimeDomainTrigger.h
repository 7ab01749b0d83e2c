#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

/// Reports transitions between the two levels that take a time within [minTime, maxTime], at the moment they
/// reach the far level. The duration runs from leaving the near level. A sample on a level has reached it.
class TRACERY_EXPORT TransitionTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    TransitionTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel, double lowerLevel,
                                double minTime, double maxTime, double holdoff);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    void reset() override;

private:
    template <class Element>
    void update(std::span<const Element> pairs, const double* extrema, EventQueue& queue);

    bool aboveUpper_ = false;  // the previous sample was at or above the upper level
    bool belowLower_ = false;  // the previous sample was at or below the lower level
    bool fallStarted_ = false; // left the upper level downwards
    bool riseStarted_ = false; // left the lower level upwards
    double fallStart_ = kNoTime;
    double riseStart_ = kNoTime;
};

} // namespace tracery
