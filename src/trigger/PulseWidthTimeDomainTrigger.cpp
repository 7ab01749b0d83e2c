#include "support/SampleScan.h"
#include "trigger/allOrNothing.h"

#include <tracery/PulseWidthTimeDomainTrigger.h>

namespace tracery {

PulseWidthTimeDomainTrigger::PulseWidthTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel,
                                                         double lowerLevel, double minTime, double maxTime,
                                                         double holdoff)
    : AbstractTimeDomainTrigger(polarity, autoLevel, upperLevel, lowerLevel, minTime, maxTime, holdoff)
{}

void PulseWidthTimeDomainTrigger::reset()
{
    resetEvents();
    armedRise_ = armedFall_ = highSeen_ = lowSeen_ = false;
    riseTime_ = fallTime_ = kNoTime;
}

void PulseWidthTimeDomainTrigger::pushPosPulse(EventQueue& queue, double time)
{
    pushInTimeBounds(queue, fallTime_ - riseTime_, time);
}

void PulseWidthTimeDomainTrigger::pushNegPulse(EventQueue& queue, double time)
{
    pushInTimeBounds(queue, riseTime_ - fallTime_, time);
}

template <class Element>
void PulseWidthTimeDomainTrigger::update(std::span<const Element> pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.empty())
        return;
    followTwoLevels(extrema);
    const double middle = (upperLevel_ + lowerLevel_) / 2;
    const std::array levels{lowerLevel_, middle, upperLevel_};
    const auto rule = [&](TimedSample before, TimedSample now) {
        if (armedRise_ && now.value > middle) {
            armedRise_ = false;
            riseTime_ = crossingTime(before, now, middle);
        }
        if (armedFall_ && now.value < middle) {
            armedFall_ = false;
            fallTime_ = crossingTime(before, now, middle);
        }
        if (now.value < lowerLevel_) {
            if (watchesPositive() && highSeen_) {
                pushPosPulse(queue, crossingTime(before, now, lowerLevel_));
                highSeen_ = false;
            }
            armedRise_ = lowSeen_ = true;
        }
        if (now.value > upperLevel_) {
            if (watchesNegative() && lowSeen_) {
                pushNegPulse(queue, crossingTime(before, now, upperLevel_));
                lowSeen_ = false;
            }
            armedFall_ = highSeen_ = true;
        }
    };
    scanRegions(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, levels, rule);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void PulseWidthTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                                   const double* extrema, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

void PulseWidthTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                                   double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

} // namespace tracery
