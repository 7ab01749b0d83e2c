#include "trigger/LevelCrossing.h"
#include "trigger/takeBlock.h"

#include <tracery/TimeoutTimeDomainTrigger.h>

#include <cmath>

namespace tracery {

TimeoutTimeDomainTrigger::TimeoutTimeDomainTrigger(const DetectorSettings& settings) : DetectorOf(settings) {}

TimeoutTimeDomainTrigger::TimeoutTimeDomainTrigger(TDTC::PolarityEnum polarity, double level, double hysteresis,
                                                   double holdoff, double timeout)
    : DetectorOf(
          {.polarity = polarity, .level = level, .hysteresis = hysteresis, .timeout = timeout, .holdoff = holdoff})
{}

void TimeoutTimeDomainTrigger::reset()
{
    DetectorOf::reset();
    processImagPart_ = false;
}

double TimeoutTimeDomainTrigger::latestInTime() const
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const auto late = [this](double time) { return time - settings_.timeout > seen_.lastCrossingTime; };
    if (!late(kInf))
        return kInf;
    double latest = seen_.lastCrossingTime + settings_.timeout;
    if (late(latest)) // rounded up
        latest = std::nextafter(latest, -kInf);
    return late(latest) || std::isnan(latest) ? -kInf : latest;
}

template <class Crossing>
void TimeoutTimeDomainTrigger::pushTimeouts(SampleView pairs, Crossing crosses, EventQueue& queue)
{
    const double level = settings_.level, timeout = settings_.timeout;
    const auto rule = [&](TimedSample before, TimedSample now) {
        if (crosses(now.value))
            seen_.lastCrossingTime = crossingTime(before, now, level);
        if (now.time - timeout > seen_.lastCrossingTime) {
            push(queue, now.time);
            seen_.lastCrossingTime = kWaitForCrossing; // even when holdoff refused the event
        }
    };
    const auto quiet = [&](TimedSample) {
        QuietSamples samples = crosses.quiet();
        samples.latest = latestInTime();
        return samples;
    };
    scanPassingQuiet(pairs, lastSample_, rule, quiet);
}

void TimeoutTimeDomainTrigger::updatePosEventQueue(SampleView pairs, EventQueue& queue)
{
    pushTimeouts(pairs, risingCrossing(seen_, settings_), queue);
}

void TimeoutTimeDomainTrigger::updateNegEventQueue(SampleView pairs, EventQueue& queue)
{
    pushTimeouts(pairs, fallingCrossing(seen_, settings_), queue);
}

void TimeoutTimeDomainTrigger::updateAnyEventQueue(SampleView pairs, EventQueue& queue)
{
    pushTimeouts(pairs, eitherCrossing(seen_, settings_), queue);
}

void TimeoutTimeDomainTrigger::examine(SampleView pairs, EventQueue& queue)
{
    if (seen_.lastCrossingTime == kTimerNotStarted)
        seen_.lastCrossingTime = sampleAt(pairs, 0).time;
    using Timeout = TimeoutTimeDomainTrigger;
    (this->*byPolarity(&Timeout::updatePosEventQueue, &Timeout::updateNegEventQueue, &Timeout::updateAnyEventQueue))(
        pairs, queue);
}

template class DetectorOf<TimeoutTimeDomainTrigger>;

} // namespace tracery
