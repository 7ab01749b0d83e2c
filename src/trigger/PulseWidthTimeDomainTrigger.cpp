#include "trigger/takeBlock.h"

#include <tracery/PulseWidthTimeDomainTrigger.h>

namespace tracery {

void PulseWidthTimeDomainTrigger::pushPosPulse(EventQueue& queue, double time)
{
    pushInTimeBounds(queue, seen_.fallTime - seen_.riseTime, time);
}

void PulseWidthTimeDomainTrigger::pushNegPulse(EventQueue& queue, double time)
{
    pushInTimeBounds(queue, seen_.riseTime - seen_.fallTime, time);
}

void PulseWidthTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    const double lower = settings_.lowerLevel, upper = settings_.upperLevel;
    const double middle = (upper + lower) / 2;
    scanRegions(pairs, lastSample_, std::array{lower, middle, upper}, [&](TimedSample before, TimedSample now) {
        if (seen_.armedRise && now.value > middle) {
            seen_.armedRise = false;
            seen_.riseTime = crossingTime(before, now, middle);
        }
        if (seen_.armedFall && now.value < middle) {
            seen_.armedFall = false;
            seen_.fallTime = crossingTime(before, now, middle);
        }
        if (now.value < lower) {
            if (watchesPositive() && seen_.high) {
                pushPosPulse(queue, crossingTime(before, now, lower));
                seen_.high = false;
            }
            seen_.armedRise = seen_.low = true;
        }
        if (now.value > upper) {
            if (watchesNegative() && seen_.low) {
                pushNegPulse(queue, crossingTime(before, now, upper));
                seen_.low = false;
            }
            seen_.armedFall = seen_.high = true;
        }
    });
}

template class DetectorOf<PulseWidthTimeDomainTrigger>;

} // namespace tracery
