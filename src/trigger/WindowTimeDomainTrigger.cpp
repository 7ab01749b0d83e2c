#include "trigger/takeBlock.h"

#include <tracery/WindowTimeDomainTrigger.h>

namespace tracery {

void WindowTimeDomainTrigger::pushWindow(EventQueue& queue, double duration, double time)
{
    pushInTimeBounds(queue, duration, time);
}

void WindowTimeDomainTrigger::enterBand(TimedSample before, TimedSample now)
{
    if (seen_.above)
        seen_.entryTime = crossingTime(before, now, settings_.upperLevel);
    else if (seen_.below)
        seen_.entryTime = crossingTime(before, now, settings_.lowerLevel);
    else
        seen_.entryTime = now.value; // kept on purpose: without a crossing, the value stands in for the time
    seen_.inside = true;
}

void WindowTimeDomainTrigger::begin(bool& open, double& start, double level, TimedSample before, TimedSample now)
{
    start = crossingTime(before, now, level);
    open = true;
}

void WindowTimeDomainTrigger::end(bool& open, double start, double level, TimedSample before, TimedSample now,
                                  EventQueue& queue)
{
    const double time = crossingTime(before, now, level);
    pushWindow(queue, time - start, time);
    open = false;
}

// Levels by reference in the rules: as values they would take the registers that the busiest signals need.

void WindowTimeDomainTrigger::updateInsideEventQueue(SampleView pairs, EventQueue& queue)
{
    const double &lower = settings_.lowerLevel, &upper = settings_.upperLevel;
    scanRegions(pairs, lastSample_, std::array{lower, upper}, [&](TimedSample before, TimedSample now) {
        if (!seen_.inside && lower < now.value && now.value < upper)
            enterBand(before, now);
        seen_.above = now.value >= upper;
        seen_.below = now.value <= lower;
        if (seen_.inside && (seen_.above || seen_.below))
            end(seen_.inside, seen_.entryTime, seen_.above ? upper : lower, before, now, queue);
    });
}

void WindowTimeDomainTrigger::updateOutsideEventQueue(SampleView pairs, EventQueue& queue)
{
    const double &lower = settings_.lowerLevel, &upper = settings_.upperLevel;
    scanRegions(pairs, lastSample_, std::array{lower, upper}, [&](TimedSample before, TimedSample now) {
        if (!seen_.above && now.value > upper)
            begin(seen_.above, seen_.aboveStart, upper, before, now);
        if (!seen_.below && now.value < lower)
            begin(seen_.below, seen_.belowStart, lower, before, now);
        if (seen_.above && now.value <= upper)
            end(seen_.above, seen_.aboveStart, upper, before, now, queue);
        if (seen_.below && now.value >= lower)
            end(seen_.below, seen_.belowStart, lower, before, now, queue);
    });
}

void WindowTimeDomainTrigger::updateEitherEventQueue(SampleView pairs, EventQueue& queue)
{
    const double &lower = settings_.lowerLevel, &upper = settings_.upperLevel;
    scanRegions(pairs, lastSample_, std::array{lower, upper}, [&](TimedSample before, TimedSample now) {
        if (!seen_.inside && lower < now.value && now.value < upper)
            enterBand(before, now);
        if (!seen_.above && now.value >= upper)
            begin(seen_.above, seen_.aboveStart, upper, before, now);
        if (!seen_.below && now.value <= lower)
            begin(seen_.below, seen_.belowStart, lower, before, now);
        if (seen_.inside && (now.value >= upper || now.value <= lower))
            end(seen_.inside, seen_.entryTime, seen_.above ? upper : lower, before, now, queue);
        if (seen_.above && now.value < upper)
            end(seen_.above, seen_.aboveStart, upper, before, now, queue);
        if (seen_.below && now.value > lower)
            end(seen_.below, seen_.belowStart, lower, before, now, queue);
    });
}

void WindowTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    using Window = WindowTimeDomainTrigger;
    (this->*byPolarity(&Window::updateInsideEventQueue, &Window::updateOutsideEventQueue,
                       &Window::updateEitherEventQueue))(pairs, queue);
}

template class DetectorOf<WindowTimeDomainTrigger>;

} // namespace tracery
