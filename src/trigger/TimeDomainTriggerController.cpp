#include "trigger/makeDetector.h"

#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/host/Error.h>

#include <cmath>

namespace tracery {

using namespace TDTC;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kPendingDoubles = 2048;

TimeBuffer::SamplePart partFor(ComplexityEnum complexity)
{
    switch (complexity) {
    case ComplexityEnum::Imaginary:
        return TimeBuffer::SamplePart::imaginary;
    case ComplexityEnum::Magnitude:
        return TimeBuffer::SamplePart::magnitude;
    case ComplexityEnum::Phase:
        return TimeBuffer::SamplePart::phase;
    case ComplexityEnum::Scalar:
    case ComplexityEnum::Real:
        break;
    }
    return TimeBuffer::SamplePart::real;
}

} // namespace

TimeDomainTriggerController::TimeDomainTriggerController()
{
    setType(type_);
    reset();
}

TimeDomainTriggerController::~TimeDomainTriggerController() = default;

// ---- Settings

void TimeDomainTriggerController::setDetectorSettings(const DetectorSettings& settings)
{
    settings_ = settings;
    detector_->setSettings(settings);
}

void TimeDomainTriggerController::setType(TypeEnum type)
{
    detector_ = makeDetector(type, settings_);
    type_ = type;
}

void TimeDomainTriggerController::setMode(ModeEnum mode)
{
    mode_ = mode;
    setEnableOnceMode(true);
}

void TimeDomainTriggerController::setEnableOnceMode(bool armed)
{
    enableOnce_ = armed;
    eventQueue_.clear();
}

void TimeDomainTriggerController::setSourcePort(std::uint32_t port)
{
    if (port == 0)
        throw Error(errors::InvalidPortID);
    if (sourcePort_ != port - 1)
        restartDetection();
    sourcePort_ = port - 1;
}

void TimeDomainTriggerController::setSourcePortChannel(std::uint32_t channel)
{
    if (channel == 0)
        throw Error(errors::InvalidChannelID);
    if (sourcePortChannel_ != channel - 1)
        restartDetection();
    sourcePortChannel_ = channel - 1;
}

void TimeDomainTriggerController::setComplexity(ComplexityEnum complexity)
{
    if (complexity_ != complexity)
        restartDetection();
    complexity_ = complexity;
}

/// Another signal from here on: neither half-seen crossings nor extremes of the old one hold, and its samples that
/// wait for detection would be taken for the new one's.
void TimeDomainTriggerController::restartDetection()
{
    detector_->reset();
    windowMinima_.clear();
    windowMaxima_.clear();
    pendingSamples_.clear();
}

// ---- Running

void TimeDomainTriggerController::reset()
{
    lastTime_ = lastReadTime_ = lastDisplayableEvent_ = lastTriggerTime_ = -kInfinity;
    lastWindowStart_ = lastWindowEnd_ = -kInfinity;
    enableOnce_ = true;
    lastChannel_.reset();
    restartDetection();
    eventQueue_.clear();
}

bool TimeDomainTriggerController::stepsBack(double currentTime) const
{
    return (lastTime_ - currentTime) / std::abs(lastTime_) > stepBackTolerance_;
}

void TimeDomainTriggerController::resetIfSteppedBack(double currentTime)
{
    if (stepsBack(currentTime))
        reset();
    lastTime_ = currentTime;
}

void TimeDomainTriggerController::getTriggerWindow(const TimeBuffer& buffer, bool isFrameBased, double framePeriod,
                                                   std::uint64_t port, std::uint64_t channel,
                                                   double firstDisplayableTime, double currentTime, double span,
                                                   bool partialWindow, double& start, double& end)
{
    processBuffer(buffer, isFrameBased, framePeriod, port, channel, currentTime, span);
    const FoundEvent event = findLastDisplayableEvent(partialWindow ? 0 : span, currentTime, span);
    processEvent(event, firstDisplayableTime, currentTime, span, partialWindow, start, end);
}

void TimeDomainTriggerController::getTriggerWindow(double firstDisplayableTime, double currentTime, double span,
                                                   bool partialWindow, double& start, double& end)
{
    resetIfSteppedBack(currentTime);
    if (mode_ != ModeEnum::Off)
        updateEventQueue(currentTime, span);
    const FoundEvent event = findLastDisplayableEvent(partialWindow ? 0 : span, currentTime, span);
    processEvent(event, firstDisplayableTime, currentTime, span, partialWindow, start, end);
}

void TimeDomainTriggerController::processSample(double time, double value, double currentTime, double span)
{
    resetIfSteppedBack(currentTime);
    if (mode_ == ModeEnum::Off)
        return;
    pendingSamples_.insert(pendingSamples_.end(), {time, value});
    if (pendingSamples_.size() < kPendingDoubles)
        return;
    try {
        updateEventQueue(currentTime, span);
    } catch (...) {
        pendingSamples_.resize(pendingSamples_.size() - 2); // it may be handed in again
        throw;
    }
}

void TimeDomainTriggerController::processSamples(const std::vector<double>& pairs, double currentTime, double span)
{
    resetIfSteppedBack(currentTime);
    if (mode_ == ModeEnum::Off || pairs.empty())
        return;
    updateEventQueue(currentTime, span);
    detect(pairs, currentTime, span, Repeated::no);
}

void TimeDomainTriggerController::processBuffer(const TimeBuffer& buffer, bool isFrameBased, double framePeriod,
                                                std::uint64_t port, std::uint64_t channel, double currentTime,
                                                double span)
{
    block_.clear();
    if (mode_ != ModeEnum::Off) { // a read that is refused has reset nothing
        const double after = stepsBack(currentTime) ? -kInfinity : lastReadTime_;
        buffer.GetSamplesAfter(after, port, channel, isFrameBased, framePeriod, partFor(complexity_), block_);
    }
    resetIfSteppedBack(currentTime);
    if (block_.empty())
        return;
    const std::pair source(port, channel);
    if (lastChannel_ && *lastChannel_ != source)
        restartDetection();
    lastChannel_ = source;
    detect(block_, currentTime, span);
}

void TimeDomainTriggerController::updateEventQueue(double currentTime, double span)
{
    if (pendingSamples_.empty())
        return;
    detect(pendingSamples_, currentTime, span);
    pendingSamples_.clear();
}

/// Shows the detector a block that is not empty.
void TimeDomainTriggerController::detect(const std::vector<double>& pairs, double currentTime, double span,
                                         Repeated repeated)
{
    double extrema[] = {kInfinity, -kInfinity};
    if (settings_.autoLevel)
        updateWindowExtrema(pairs, extrema, span, currentTime, repeated);
    detector_->updateEventQueue(pairs.data(), pairs.size() / 2, extrema, span, eventQueue_);
    lastReadTime_ = pairs[pairs.size() - 2];
}

/// Extremes of the channel over the last `span` seconds, kept as two monotone queues: an entry leaves when it is too
/// old, or when a newer one makes it irrelevant, so each sample is handled once.
void TimeDomainTriggerController::updateWindowExtrema(const std::vector<double>& pairs, double extrema[2], double span,
                                                      double currentTime, Repeated repeated)
{
    const double windowStart = currentTime - span;
    for (auto* queue : {&windowMinima_, &windowMaxima_}) {
        while (!queue->empty() && windowStart > queue->front().time)
            queue->pop_front();
        // Samples that are delivered again replace the old ones.
        while (repeated == Repeated::mayBe && !queue->empty() && queue->back().time >= pairs[0])
            queue->pop_back();
    }
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        const TimeValue sample{pairs[i], pairs[i + 1]};
        // A sample at a NaN time would never expire.
        if (sample.time < windowStart || std::isnan(sample.time) || !std::isfinite(sample.value))
            continue;
        while (!windowMinima_.empty() && windowMinima_.back().value > sample.value)
            windowMinima_.pop_back();
        while (!windowMaxima_.empty() && sample.value > windowMaxima_.back().value)
            windowMaxima_.pop_back();
        windowMinima_.push_back(sample);
        windowMaxima_.push_back(sample);
    }
    if (!windowMinima_.empty())
        extrema[0] = windowMinima_.front().value;
    if (!windowMaxima_.empty())
        extrema[1] = windowMaxima_.front().value;
}

/// The time from which the window of an event can be shown; offset is the span, or 0 for windows not yet full.
double TimeDomainTriggerController::displayTime(double event, double offset, double span) const
{
    return event + offset - span * position_ + delay_;
}

TimeDomainTriggerController::FoundEvent
TimeDomainTriggerController::findLastDisplayableEvent(double offset, double currentTime, double span)
{
    FoundEvent event;
    consumedEvents_.clear();
    consumedEvents_.reserve(eventQueue_.size()); // before the first event is taken out
    while (!eventQueue_.empty() && currentTime >= displayTime(eventQueue_.front(), offset, span)) {
        event.time = lastDisplayableEvent_ = eventQueue_.front();
        eventQueue_.pop_front();
        const bool clear = event.time >= lastTriggerTime_ + offset;
        event.found = onceAllows() && clear;
        // The last ready event decides, even one that gives no window.
        if (!consumedEvents_.empty() && consumedEvents_.back().fate == EventFate::Shown)
            consumedEvents_.back().fate = EventFate::Superseded;
        consumedEvents_.push_back({event.time, event.found     ? EventFate::Shown
                                               : !onceAllows() ? EventFate::Disarmed
                                                               : EventFate::Overlap});
        if (event.found && mode_ == ModeEnum::Once)
            break; // its window disarms
    }
    return event;
}

void TimeDomainTriggerController::processEvent(FoundEvent event, double firstDisplayableTime, double currentTime,
                                               double span, bool partialWindow, double& start, double& end)
{
    start = end = -kInfinity;
    if (mode_ == ModeEnum::Off)
        return;
    if (partialWindow && !event.found && lastDisplayableEvent_ > lastTriggerTime_ && onceAllows())
        event = {lastDisplayableEvent_, true};
    if (mode_ == ModeEnum::Auto && !event.found) {
        const double offset = partialWindow ? 0 : span;
        const double synthetic = currentTime - delay_ - (1 - position_) * span;
        const bool due = lastTriggerTime_ == -kInfinity ? currentTime > offset + firstDisplayableTime
                                                        : synthetic > lastTriggerTime_ + (2 - position_) * span;
        if (due)
            event = {synthetic, true};
    }
    if (!event.found)
        return;
    if (mode_ == ModeEnum::Once)
        enableOnce_ = false;
    start = event.time + delay_ - span * position_;
    end = start + span;
    lastTriggerTime_ = event.time;
    lastWindowStart_ = start;
    lastWindowEnd_ = end;
}

void TimeDomainTriggerController::getLastTriggerWindow(double& start, double& end) const
{
    start = lastWindowStart_;
    end = lastWindowEnd_;
}

} // namespace tracery
