#include "support/SampleScan.h"
#include "trigger/allOrNothing.h"

#include <tracery/TransitionTimeDomainTrigger.h>

namespace tracery {

TransitionTimeDomainTrigger::TransitionTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel,
                                                         double lowerLevel, double minTime, double maxTime,
                                                         double holdoff)
    : AbstractTimeDomainTrigger(polarity, autoLevel, upperLevel, lowerLevel, minTime, maxTime, holdoff)
{}

void TransitionTimeDomainTrigger::reset()
{
    resetEvents();
    aboveUpper_ = belowLower_ = fallStarted_ = riseStarted_ = false;
    fallStart_ = riseStart_ = kNoTime;
}

template <class Element>
void TransitionTimeDomainTrigger::update(std::span<const Element> pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.empty())
        return;
    followTwoLevels(extrema);
    const auto rule = [&](TimedSample before, TimedSample now) {
        if (belowLower_ && now.value > lowerLevel_) {
            riseStarted_ = true;
            riseStart_ = crossingTime(before, now, lowerLevel_);
        }
        if (aboveUpper_ && now.value < upperLevel_) {
            fallStarted_ = true;
            fallStart_ = crossingTime(before, now, upperLevel_);
        }
        aboveUpper_ = now.value >= upperLevel_;
        if (aboveUpper_) {
            if (watchesPositive() && riseStarted_) {
                const double end = crossingTime(before, now, upperLevel_);
                pushInTimeBounds(queue, end - riseStart_, end);
            }
            riseStarted_ = fallStarted_ = false;
        }
        belowLower_ = now.value <= lowerLevel_;
        if (belowLower_) {
            if (watchesNegative() && fallStarted_) {
                const double end = crossingTime(before, now, lowerLevel_);
                pushInTimeBounds(queue, end - fallStart_, end);
            }
            riseStarted_ = fallStarted_ = false;
        }
    };
    const std::array levels{lowerLevel_, upperLevel_};
    scanRegions(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, levels, rule);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void TransitionTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                                   const double* extrema, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

void TransitionTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                                   double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

} // namespace tracery
