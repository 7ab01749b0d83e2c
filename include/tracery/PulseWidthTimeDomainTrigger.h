#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports pulses whose width lies within [minTime, maxTime]. A positive pulse goes from below the lower
/// level to above the upper one and back (all strict); its event is the fall through the lower level. A
/// negative pulse is the mirror, and its event the rise through the upper level. Widths are measured at the
/// middle between the levels.
class TRACERY_EXPORT PulseWidthTimeDomainTrigger : public DetectorOf<PulseWidthTimeDomainTrigger> {
public:
    using DetectorOf::DetectorOf;

    /// Pushes the event at `time` when the width between the last two crossings of the middle is in bounds.
    void pushPosPulse(EventQueue& queue, double time);
    void pushNegPulse(EventQueue& queue, double time);

private:
    friend DetectorOf;
    static constexpr int kAutoLevels = 2;
    void examine(SampleView pairs, EventQueue& queue);

    struct Seen {
        bool armedRise = false;    // waits for a rising crossing of the middle
        bool armedFall = false;    // waits for a falling crossing of the middle
        bool high = false;         // above the upper level since the last positive pulse
        bool low = false;          // below the lower level since the last negative pulse
        double riseTime = kNoTime; // of the last crossings of the middle
        double fallTime = kNoTime;
    } seen_;
};

extern template class DetectorOf<PulseWidthTimeDomainTrigger>;

} // namespace tracery
