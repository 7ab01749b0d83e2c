#include "support/SampleScan.h"
#include "trigger/allOrNothing.h"

#include <tracery/WindowTimeDomainTrigger.h>

namespace tracery {

WindowTimeDomainTrigger::WindowTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel,
                                                 double lowerLevel, double minTime, double maxTime, double holdoff)
    : AbstractTimeDomainTrigger(polarity, autoLevel, upperLevel, lowerLevel, minTime, maxTime, holdoff)
{}

void WindowTimeDomainTrigger::reset()
{
    resetEvents();
    above_ = below_ = inside_ = false;
    aboveStart_ = entryTime_ = belowStart_ = kNoTime;
}

void WindowTimeDomainTrigger::pushWindow(EventQueue& queue, double duration, double time)
{
    pushInTimeBounds(queue, duration, time);
}

void WindowTimeDomainTrigger::enterBand(TimedSample before, TimedSample now)
{
    if (above_)
        entryTime_ = crossingTime(before, now, upperLevel_);
    else if (below_)
        entryTime_ = crossingTime(before, now, lowerLevel_);
    else
        entryTime_ = now.value; // kept on purpose: without a crossing, the value stands in for the time
    inside_ = true;
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

template <class Element, class Rule>
void WindowTimeDomainTrigger::scanBand(std::span<const Element> pairs, Rule&& rule)
{
    const std::array levels{lowerLevel_, upperLevel_};
    scanRegions(pairs, processImagPart_, {lastSampleTime_, lastSampleValue_}, levels, rule);
}

template <class Element>
void WindowTimeDomainTrigger::updateInsideEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    scanBand(pairs, [&](TimedSample before, TimedSample now) {
        if (!inside_ && lowerLevel_ < now.value && now.value < upperLevel_)
            enterBand(before, now);
        above_ = now.value >= upperLevel_;
        below_ = now.value <= lowerLevel_;
        if (inside_ && (above_ || below_))
            end(inside_, entryTime_, above_ ? upperLevel_ : lowerLevel_, before, now, queue);
    });
}

template <class Element>
void WindowTimeDomainTrigger::updateOutsideEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    scanBand(pairs, [&](TimedSample before, TimedSample now) {
        if (!above_ && now.value > upperLevel_)
            begin(above_, aboveStart_, upperLevel_, before, now);
        if (!below_ && now.value < lowerLevel_)
            begin(below_, belowStart_, lowerLevel_, before, now);
        if (above_ && now.value <= upperLevel_)
            end(above_, aboveStart_, upperLevel_, before, now, queue);
        if (below_ && now.value >= lowerLevel_)
            end(below_, belowStart_, lowerLevel_, before, now, queue);
    });
}

template <class Element>
void WindowTimeDomainTrigger::updateEitherEventQueue(std::span<const Element> pairs, EventQueue& queue)
{
    scanBand(pairs, [&](TimedSample before, TimedSample now) {
        if (!inside_ && lowerLevel_ < now.value && now.value < upperLevel_)
            enterBand(before, now);
        if (!above_ && now.value >= upperLevel_)
            begin(above_, aboveStart_, upperLevel_, before, now);
        if (!below_ && now.value <= lowerLevel_)
            begin(below_, belowStart_, lowerLevel_, before, now);
        if (inside_ && (now.value >= upperLevel_ || now.value <= lowerLevel_))
            end(inside_, entryTime_, above_ ? upperLevel_ : lowerLevel_, before, now, queue);
        if (above_ && now.value < upperLevel_)
            end(above_, aboveStart_, upperLevel_, before, now, queue);
        if (below_ && now.value > lowerLevel_)
            end(below_, belowStart_, lowerLevel_, before, now, queue);
    });
}

template <class Element>
void WindowTimeDomainTrigger::update(std::span<const Element> pairs, const double* extrema, EventQueue& queue)
{
    if (pairs.empty())
        return;
    followTwoLevels(extrema);
    if (polarity_ == TDTC::PolarityEnum::Positive)
        updateInsideEventQueue(pairs, queue);
    else if (polarity_ == TDTC::PolarityEnum::Negative)
        updateOutsideEventQueue(pairs, queue);
    else
        updateEitherEventQueue(pairs, queue);
    cacheLastSample(pairs.data(), pairs.size() / 2);
}

void WindowTimeDomainTrigger::updateEventQueue(const std::complex<double>* samples, std::uint64_t n,
                                               const double* extrema, double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

void WindowTimeDomainTrigger::updateEventQueue(const double* samples, std::uint64_t n, const double* extrema,
                                               double /*time*/, EventQueue& queue)
{
    allOrNothing(*this, queue, [&] { update(std::span(samples, 2 * n), extrema, queue); });
}

} // namespace tracery
