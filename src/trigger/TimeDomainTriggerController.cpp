#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeBuffer.h>
#include <tracery/TimeDomainTriggerController.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>
#include <tracery/host/Error.h>

#include <cmath>

namespace tracery {

using namespace TDTC;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kPendingDoubles = 2048;

std::unique_ptr<AbstractTimeDomainTrigger> makeDetector(TypeEnum type)
{
    constexpr auto positive = PolarityEnum::Positive;
    switch (type) {
    case TypeEnum::PulseWidth:
        return std::make_unique<PulseWidthTimeDomainTrigger>(positive, false, 0, 0, 0, 0, 0);
    case TypeEnum::Transition:
        return std::make_unique<TransitionTimeDomainTrigger>(positive, false, 0, 0, 0, 0, 0);
    case TypeEnum::Runt:
        return std::make_unique<RuntTimeDomainTrigger>(positive, false, 0, 0, 0, 0, 0);
    case TypeEnum::Window:
        return std::make_unique<WindowTimeDomainTrigger>(positive, false, 0, 0, 0, 0, 0);
    case TypeEnum::Timeout:
        return std::make_unique<TimeoutTimeDomainTrigger>(positive, 0, 0, 0, 0);
    case TypeEnum::Edge:
        break;
    }
    return std::make_unique<EdgeTimeDomainTrigger>(positive, false, 0, 0, 0);
}

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

template <class Value>
void TimeDomainTriggerController::set(Value& field, Value value, void (AbstractTimeDomainTrigger::*setter)(Value))
{
    field = value;
    (detector_.get()->*setter)(value);
}

void TimeDomainTriggerController::setPolarity(PolarityEnum polarity)
{
    set(polarity_, polarity, &AbstractTimeDomainTrigger::setPolarity);
}
void TimeDomainTriggerController::setAutoLevel(bool autoLevel)
{
    set(autoLevel_, autoLevel, &AbstractTimeDomainTrigger::setAutoLevel);
}
void TimeDomainTriggerController::setLevel(double level) { set(level_, level, &AbstractTimeDomainTrigger::setLevel); }
void TimeDomainTriggerController::setHysteresis(double hysteresis)
{
    set(hysteresis_, hysteresis, &AbstractTimeDomainTrigger::setHysteresis);
}
void TimeDomainTriggerController::setUpperLevel(double level)
{
    set(upperLevel_, level, &AbstractTimeDomainTrigger::setUpperLevel);
}
void TimeDomainTriggerController::setLowerLevel(double level)
{
    set(lowerLevel_, level, &AbstractTimeDomainTrigger::setLowerLevel);
}
void TimeDomainTriggerController::setMinTime(double seconds)
{
    set(minTime_, seconds, &AbstractTimeDomainTrigger::setMinTime);
}
void TimeDomainTriggerController::setMaxTime(double seconds)
{
    set(maxTime_, seconds, &AbstractTimeDomainTrigger::setMaxTime);
}
void TimeDomainTriggerController::setTimeout(double seconds)
{
    set(timeout_, seconds, &AbstractTimeDomainTrigger::setTimeout);
}
void TimeDomainTriggerController::setHoldoff(double seconds)
{
    set(holdoff_, seconds, &AbstractTimeDomainTrigger::setHoldoff);
}

void TimeDomainTriggerController::setType(TypeEnum type)
{
    detector_ = makeDetector(type);
    type_ = type;
    // Every setting, whether this kind uses it or not, so that the getters of levels never tell a default.
    setPolarity(polarity_);
    setAutoLevel(autoLevel_);
    setLevel(level_);
    setHysteresis(hysteresis_);
    setUpperLevel(upperLevel_);
    setLowerLevel(lowerLevel_);
    setMinTime(minTime_);
    setMaxTime(maxTime_);
    setTimeout(timeout_);
    setHoldoff(holdoff_);
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
    if (autoLevel_)
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
