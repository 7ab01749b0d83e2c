#include "trigger/takeBlock.h"

#include <tracery/TransitionTimeDomainTrigger.h>

namespace tracery {

void TransitionTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    const double lower = settings_.lowerLevel, upper = settings_.upperLevel;
    scanRegions(pairs, lastSample_, std::array{lower, upper}, [&](TimedSample before, TimedSample now) {
        if (seen_.belowLower && now.value > lower) {
            seen_.riseStarted = true;
            seen_.riseStart = crossingTime(before, now, lower);
        }
        if (seen_.aboveUpper && now.value < upper) {
            seen_.fallStarted = true;
            seen_.fallStart = crossingTime(before, now, upper);
        }
        seen_.aboveUpper = now.value >= upper;
        if (seen_.aboveUpper) {
            if (watchesPositive() && seen_.riseStarted) {
                const double end = crossingTime(before, now, upper);
                pushInTimeBounds(queue, end - seen_.riseStart, end);
            }
            seen_.riseStarted = seen_.fallStarted = false;
        }
        seen_.belowLower = now.value <= lower;
        if (seen_.belowLower) {
            if (watchesNegative() && seen_.fallStarted) {
                const double end = crossingTime(before, now, lower);
                pushInTimeBounds(queue, end - seen_.fallStart, end);
            }
            seen_.riseStarted = seen_.fallStarted = false;
        }
    });
}

template class DetectorOf<TransitionTimeDomainTrigger>;

} // namespace tracery
