#include "support/SampleScan.h"

#include <tracery/AbstractTimeDomainTrigger.h>

#include <cmath>

namespace tracery {

namespace {

/// Sample i of a block whose length is not known here.
template <class Element>
TimedSample sampleOf(const Element* samples, bool imagPart, std::uint64_t i)
{
    return sampleAt(imagPart, std::span(samples + 2 * i, 2), 0);
}

/// The crossing at sample i; `previous` is the last sample of the block before.
template <class Element>
double crossingAt(const Element* samples, bool imagPart, std::uint64_t i, const TimedSample& previous, double level)
{
    const TimedSample before = i > 0 ? sampleOf(samples, imagPart, i - 1) : previous;
    return crossingTime(before, sampleOf(samples, imagPart, i), level);
}

} // namespace

AbstractTimeDomainTrigger::AbstractTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double level,
                                                     double hysteresis, double holdoff)
    : polarity_(polarity), autoLevel_(autoLevel), level_(level), hysteresis_(hysteresis), holdoff_(holdoff)
{}

AbstractTimeDomainTrigger::AbstractTimeDomainTrigger(TDTC::PolarityEnum polarity, bool autoLevel, double upperLevel,
                                                     double lowerLevel, double minTime, double maxTime, double holdoff)
    : polarity_(polarity), autoLevel_(autoLevel), upperLevel_(upperLevel), lowerLevel_(lowerLevel), minTime_(minTime),
      maxTime_(maxTime), holdoff_(holdoff)
{}

AbstractTimeDomainTrigger::~AbstractTimeDomainTrigger() = default;

void AbstractTimeDomainTrigger::reset() { resetEvents(); }

void AbstractTimeDomainTrigger::resetEvents()
{
    lastEventTime_ = kNoEvent;
    lastSampleTime_ = kNoTime;
    lastSampleValue_ = kNoTime;
    numAcceptedEvents_ = 0;
    numHoldoffRefusals_ = 0;
    numOutOfTimeBounds_ = 0;
}

void AbstractTimeDomainTrigger::followLevel(const double* extrema)
{
    if (autoLevel_)
        level_ = (extrema[0] + extrema[1]) * 0.5;
}

void AbstractTimeDomainTrigger::followTwoLevels(const double* extrema)
{
    if (!autoLevel_)
        return;
    const double range = extrema[1] - extrema[0];
    upperLevel_ = extrema[0] + range * 0.9;
    lowerLevel_ = extrema[0] + range * 0.1;
}

void AbstractTimeDomainTrigger::push(EventQueue& queue, double time)
{
    if (!std::isfinite(time))
        return;
    if (time - holdoff_ >= lastEventTime_) {
        queue.push_back(time);
        lastEventTime_ = time;
        ++numAcceptedEvents_;
    } else {
        ++numHoldoffRefusals_;
    }
}

void AbstractTimeDomainTrigger::pushInTimeBounds(EventQueue& queue, double duration, double time)
{
    if (minTime_ <= duration && duration <= maxTime_)
        push(queue, time);
    else if (!std::isnan(duration))
        ++numOutOfTimeBounds_;
}

double AbstractTimeDomainTrigger::interpTime(const double* samples, std::uint64_t i, double level) const
{
    return crossingAt(samples, processImagPart_, i, {lastSampleTime_, lastSampleValue_}, level);
}
double AbstractTimeDomainTrigger::interpTime(const std::complex<double>* samples, std::uint64_t i, double level) const
{
    return crossingAt(samples, processImagPart_, i, {lastSampleTime_, lastSampleValue_}, level);
}

void AbstractTimeDomainTrigger::cacheLastSample(const double* samples, std::uint64_t n)
{
    if (n > 0)
        cache(sampleOf(samples, processImagPart_, n - 1));
}
void AbstractTimeDomainTrigger::cacheLastSample(const std::complex<double>* samples, std::uint64_t n)
{
    if (n > 0)
        cache(sampleOf(samples, processImagPart_, n - 1));
}
void AbstractTimeDomainTrigger::cache(const TimedSample& sample)
{
    lastSampleTime_ = sample.time;
    lastSampleValue_ = sample.value;
}

} // namespace tracery
