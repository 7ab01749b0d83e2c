#include "trigger/takeBlock.h"

#include <tracery/RuntTimeDomainTrigger.h>

namespace tracery {

void RuntTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    const double lower = settings_.lowerLevel, upper = settings_.upperLevel;
    scanRegions(pairs, lastSample_, std::array{lower, upper}, [&](TimedSample before, TimedSample now) {
        if (!seen_.between && lower < now.value && now.value < upper) {
            if (seen_.belowLower)
                seen_.startTime = crossingTime(before, now, lower);
            else if (seen_.aboveUpper)
                seen_.startTime = crossingTime(before, now, upper);
            seen_.between = true;
        }
        if (now.value >= upper) {
            if (watchesNegative() && seen_.between && seen_.aboveUpper && !seen_.belowLower) {
                const double end = crossingTime(before, now, upper);
                pushInTimeBounds(queue, end - seen_.startTime, end);
            }
            seen_.aboveUpper = true;
            seen_.between = seen_.belowLower = false;
        }
        if (now.value <= lower) {
            if (watchesPositive() && seen_.between && seen_.belowLower && !seen_.aboveUpper) {
                const double end = crossingTime(before, now, lower);
                pushInTimeBounds(queue, end - seen_.startTime, end);
            }
            seen_.aboveUpper = seen_.between = false;
            seen_.belowLower = true;
        }
    });
}

template class DetectorOf<RuntTimeDomainTrigger>;

} // namespace tracery
