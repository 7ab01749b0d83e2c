#include "trigger/LevelCrossing.h"
#include "trigger/allOrNothing.h"

#include <tracery/TimeoutTimeDomainTrigger.h>

#include <cmath>

namespace tracery {

TimeoutTimeDomainTrigger::TimeoutTimeDomainTrigger(TDTC::PolarityEnum polarity, double level, double hysteresis,
                                                   double holdoff, double timeout)
    : AbstractTimeDomainTrigger(polarity, false, level, hysteresis, holdoff)
{
    timeout_ = timeout;
}

void TimeoutTimeDomainTrigger::reset()
{
    resetEvents();
    armedPositive_ = armedNegative_ = false;
    processImagPart_ = false;
    lastCrossingTime_ = kTimerNotStarted;
}

double TimeoutTimeDomainTrigger::latestInTime() const
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const auto late = [this](double time) { return time - timeout_ > lastCrossingTime_; };
    if (!late(kInf))
        return kInf;
    double latest = lastCrossingTime_ + timeout_;
    if (late(latest)) // rounded up
        latest = std::nextafter(latest, -kInf);
    return late(latest) || std::isnan(latest) ? -kInf : latest;
}

template <class Element, class Crossing>
void TimeoutTimeDomainTrigger::pushTimeouts(std::span<const Element> pairs, Crossing crosses, EventQueue& queue)
{
    const auto rule = [&](TimedSample before, TimedSample now) {
        if (crosses(now.value))
            lastCrossingTime_ = crossingTime(before, now, level_);
        if (now.time - timeout_ > lastCrossingTime_) {
            push(queue, now.time);
            lastCrossingTime_ = kWaitForCrossing; // even when holdoff refused the event
        }
    };
    const auto quiet = [&](TimedSample) {
        QuietSamples samples = crosses.quiet();
        samples.latest = latestInTime();
        return samples;
    };
    scanPassingQuiet(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, rule, quiet);
}

template <class Element>
void TimeoutTimeDomainTrigger::updatePosEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushTimeouts(pairs, RisingCrossing{armedPositive_, level_, level_ - hysteresis_}, queue);
}

template <class Element>
void TimeoutTimeDomainTrigger::updateNegEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushTimeouts(pairs, FallingCrossing{armedNegative_, level_, level_ + hysteresis_}, queue);
}

template <class Element>
void TimeoutTimeDomainTrigger::updateAnyEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    pushTimeouts(pairs,
                 EitherCrossing{armedPositive_, armedNegative_, level_, level_ - hysteresis_, level_ + hysteresis_},
                 queue);
}

template <class Element>
void TimeoutTimeDomainTrigger::update(std::span<const Element> pairs, EventQueue& queue)
{
    if (pairs.empty())
        return;
    if (lastCrossingTime_ == kTimerNotStarted)
        lastCrossingTime_ = sampleAt(processImagPart_, pairs, 0).time;
    if (polarity_ == TDTC::PolarityEnum::Positive)
        updatePosEventQueue(pairs, queue);
    else if (polarity_ == TDTC::PolarityEnum::Negative)
        updateNegEventQueue(pairs, queue);
    else
        updateAnyEventQueue(pairs, queue);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void TimeoutTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                                const double* /*extrema*/, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), queue); });
}

void TimeoutTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* /*extrema*/,
                                                double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), queue); });
}

} // namespace tracery
