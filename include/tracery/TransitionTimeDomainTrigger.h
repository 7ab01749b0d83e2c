#pragma once

#include <tracery/DetectorOf.h>

namespace tracery {

/// Reports transitions between the two levels that take a time within [minTime, maxTime], at the moment they
/// reach the far level. The duration runs from leaving the near level. A sample on a level has reached it.
class TRACERY_EXPORT TransitionTimeDomainTrigger : public DetectorOf<TransitionTimeDomainTrigger> {
public:
    using DetectorOf::DetectorOf;

private:
    friend DetectorOf;
    static constexpr int kAutoLevels = 2;
    void examine(SampleView pairs, EventQueue& queue);

    struct Seen {
        bool aboveUpper = false;  // the previous sample was at or above the upper level
        bool belowLower = false;  // the previous sample was at or below the lower level
        bool fallStarted = false; // left the upper level downwards
        bool riseStarted = false; // left the lower level upwards
        double fallStart = kNoTime;
        double riseStart = kNoTime;
    } seen_;
};

extern template class DetectorOf<TransitionTimeDomainTrigger>;

} // namespace tracery
