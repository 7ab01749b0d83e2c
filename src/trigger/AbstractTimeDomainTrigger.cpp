#include "support/SampleScan.h"

#include <tracery/AbstractTimeDomainTrigger.h>

#include <cmath>

namespace tracery {

namespace {

/// The crossing at the last sample of `pairs`; `previous` is the last sample of the block before.
double crossingAtEnd(SampleView pairs, TimedSample previous, double level)
{
    const std::size_t i = countPairs(pairs) - 1;
    return crossingTime(i > 0 ? sampleAt(pairs, i - 1) : previous, sampleAt(pairs, i), level);
}

} // namespace

AbstractTimeDomainTrigger::~AbstractTimeDomainTrigger() = default;

void AbstractTimeDomainTrigger::reset() { resetEvents(); }

void AbstractTimeDomainTrigger::resetEvents()
{
    lastEventTime_ = kNoEvent;
    lastSample_ = {kNoTime, kNoTime};
    numAcceptedEvents_ = 0;
    numHoldoffRefusals_ = 0;
    numOutOfTimeBounds_ = 0;
}

void AbstractTimeDomainTrigger::followLevel(const double* extrema)
{
    if (settings_.autoLevel)
        settings_.level = (extrema[0] + extrema[1]) * 0.5;
}

void AbstractTimeDomainTrigger::followTwoLevels(const double* extrema)
{
    if (!settings_.autoLevel)
        return;
    const double range = extrema[1] - extrema[0];
    settings_.upperLevel = extrema[0] + range * 0.9;
    settings_.lowerLevel = extrema[0] + range * 0.1;
}

void AbstractTimeDomainTrigger::push(EventQueue& queue, double time)
{
    if (!std::isfinite(time))
        return;
    if (time - settings_.holdoff >= lastEventTime_) {
        queue.push_back(time);
        lastEventTime_ = time;
        ++numAcceptedEvents_;
    } else {
        ++numHoldoffRefusals_;
    }
}

void AbstractTimeDomainTrigger::pushInTimeBounds(EventQueue& queue, double duration, double time)
{
    if (settings_.minTime <= duration && duration <= settings_.maxTime)
        push(queue, time);
    else if (!std::isnan(duration))
        ++numOutOfTimeBounds_;
}

SampleView AbstractTimeDomainTrigger::partOf(const double* samples, std::uint64_t n) const { return {samples, 2 * n}; }
SampleView AbstractTimeDomainTrigger::partOf(const std::complex<double>* samples, std::uint64_t n) const
{
    return processImagPart_ ? imagPartOf({samples, 2 * n}) : realPartOf({samples, 2 * n});
}

double AbstractTimeDomainTrigger::interpTime(const double* samples, std::uint64_t i, double level) const
{
    return crossingAtEnd(partOf(samples, i + 1), lastSample_, level);
}
double AbstractTimeDomainTrigger::interpTime(const std::complex<double>* samples, std::uint64_t i, double level) const
{
    return crossingAtEnd(partOf(samples, i + 1), lastSample_, level);
}

void AbstractTimeDomainTrigger::cacheLastSample(const double* samples, std::uint64_t n)
{
    if (n > 0)
        lastSample_ = sampleAt(partOf(samples, n), n - 1);
}
void AbstractTimeDomainTrigger::cacheLastSample(const std::complex<double>* samples, std::uint64_t n)
{
    if (n > 0)
        lastSample_ = sampleAt(partOf(samples, n), n - 1);
}

} // namespace tracery
