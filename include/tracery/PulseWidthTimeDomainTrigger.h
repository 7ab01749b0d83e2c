#pragma once

#include <tracery/AbstractTimeDomainTrigger.h>

#include <span>

namespace tracery {

/// Reports pulses whose width lies within [minTime, maxTime]. A positive pulse goes from below the lower
/// level to above the upper one and back (all strict); its event is the fall through the lower level. A
/// negative pulse is the mirror, and its event the rise through the upper level. Widths are measured at the
/// middle between the levels.
class TRACERY_EXPORT PulseWidthTimeDomainTrigger : public AbstractTimeDomainTrigger {
public:
    /// A detector with these settings (see the setters of its base).
    PulseWidthTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel, double lowerLevel,
                                double minTime, double maxTime, double holdoff);

    void updateEventQueue(const std::complex<double>* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;
    void updateEventQueue(const double* samples, std::uint64_t n, const double* extrema, double time,
                          EventQueue& queue) override;

    void reset() override;

    /// Pushes the event at `time` when the width between the last two crossings of the middle is in bounds.
    void pushPosPulse(EventQueue& queue, double time);
    void pushNegPulse(EventQueue& queue, double time);

private:
    template <class Element>
    void update(std::span<const Element> pairs, const double* extrema, EventQueue& queue);

    bool armedRise_ = false;    // waits for a rising crossing of the middle
    bool armedFall_ = false;    // waits for a falling crossing of the middle
    bool highSeen_ = false;     // above the upper level since the last positive pulse
    bool lowSeen_ = false;      // below the lower level since the last negative pulse
    double riseTime_ = kNoTime; // of the last crossings of the middle
    double fallTime_ = kNoTime;
};

} // namespace tracery
