#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports pulses that leave one level, fail to reach the other, and come back after a time within
/// [minTime, maxTime]. A positive runt rises from the lower level, a negative one falls from the upper. A
/// sample on a level has reached it. The event is the return through the level, and the duration runs from
/// the departure through it.
class TRACERY_EXPORT RuntTimeDomainTrigger : public DetectorOf<RuntTimeDomainTrigger> {
public:
    using DetectorOf::DetectorOf;

private:
    friend DetectorOf;
    static constexpr int kAutoLevels = 2;
    void examine(SampleView pairs, EventQueue& queue);

    struct Seen {
        bool aboveUpper = false;    // came last from the upper level
        bool between = false;       // inside the band
        bool belowLower = false;    // came last from the lower level
        double startTime = kNoTime; // when the signal entered the band
    } seen_;
};

extern template class DetectorOf<RuntTimeDomainTrigger>;

} // namespace tracery
