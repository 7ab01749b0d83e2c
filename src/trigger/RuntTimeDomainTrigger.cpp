#include "support/SampleScan.h"
#include "trigger/allOrNothing.h"

#include <tracery/RuntTimeDomainTrigger.h>

namespace tracery {

RuntTimeDomainTrigger::RuntTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel,
                                             double lowerLevel, double minTime, double maxTime, double holdoff)
    : AbstractTimeDomainTrigger(polarity, autoLevel, upperLevel, lowerLevel, minTime, maxTime, holdoff)
{}

void RuntTimeDomainTrigger::reset()
{
    resetEvents();
    aboveUpper_ = between_ = belowLower_ = false;
    startTime_ = kNoTime;
}

template <class Element>
void RuntTimeDomainTrigger::update(std::span<const Element> pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.empty())
        return;
    followTwoLevels(extrema);
    const auto rule = [&](TimedSample before, TimedSample now) {
        if (!between_ && lowerLevel_ < now.value && now.value < upperLevel_) {
            if (belowLower_)
                startTime_ = crossingTime(before, now, lowerLevel_);
            else if (aboveUpper_)
                startTime_ = crossingTime(before, now, upperLevel_);
            between_ = true;
        }
        if (now.value >= upperLevel_) {
            if (watchesNegative() && between_ && aboveUpper_ && !belowLower_) {
                const double end = crossingTime(before, now, upperLevel_);
                pushInTimeBounds(queue, end - startTime_, end);
            }
            aboveUpper_ = true;
            between_ = belowLower_ = false;
        }
        if (now.value <= lowerLevel_) {
            if (watchesPositive() && between_ && belowLower_ && !aboveUpper_) {
                const double end = crossingTime(before, now, lowerLevel_);
                pushInTimeBounds(queue, end - startTime_, end);
            }
            aboveUpper_ = between_ = false;
            belowLower_ = true;
        }
    };
    const std::array levels{lowerLevel_, upperLevel_};
    scanRegions(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, levels, rule);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void RuntTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                             const double* extrema, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

void RuntTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                             double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

} // namespace tracery
