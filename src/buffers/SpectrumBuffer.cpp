#include "buffers/SpectrumBufferState.h"

#include <tracery/OneShotTimer.h>
#include <tracery/SpectrumBuffer.h>
#include <tracery/host/Error.h>

#include <cmath>

namespace tracery {

namespace {

constexpr double kUpdateSeconds = 0.05;

double firstElement(const HostArray* array)
{
    if (array == nullptr || isEmpty(array))
        throw Error(errors::EmptyInput);
    if (!isDouble(array))
        throw Error(errors::InvalidArgumentType);
    if (getRealData(array) == nullptr)
        throw Error(errors::EmptyInput);
    return *getRealData(array);
}

double firstTime(const HostArray* time)
{
    if (time != nullptr && !isDouble(time))
        throw Error(errors::AddTimeError);
    return firstElement(time);
}

double firstTime(const double* time)
{
    if (time == nullptr)
        throw Error(errors::EmptyInput);
    return *time;
}

} // namespace

SpectrumBuffer::State::State(std::uint32_t segmentLength, double percent, HostComplexity initialComplexity,
                             std::uint32_t channelCount, std::unique_ptr<Timer> timer)
    : cut(SegmentCut::of(segmentLength, percent)), overlapPercent(percent), numChannels(channelCount),
      channels(emptyChannels(channelCount, initialComplexity)), complexity(initialComplexity),
      updateTimer(timer ? std::move(timer) : std::make_unique<OneShotTimer>())
{
    updateTimer->setTimeout(kUpdateSeconds);
}

SpectrumBuffer::State::Channels SpectrumBuffer::State::emptyChannels(std::uint32_t count, HostComplexity complexity)
{
    Channels fresh;
    fresh.real.resize(count);
    if (complexity == HostComplexity::complex)
        fresh.imag.resize(count);
    return fresh;
}

void SpectrumBuffer::State::setChannels(std::uint32_t count, HostComplexity newComplexity)
{
    if (count == numChannels && newComplexity == complexity)
        return;
    channels = emptyChannels(count, newComplexity);
    numChannels = count;
    complexity = newComplexity;
}

SpectrumBuffer::SpectrumBuffer() : SpectrumBuffer(1024, 0, HostComplexity::real, 1) {}

SpectrumBuffer::SpectrumBuffer(std::uint32_t segmentLength, double overlapPercent, HostComplexity complexity,
                               std::uint32_t numChannels)
    : SpectrumBuffer(segmentLength, overlapPercent, complexity, numChannels, nullptr)
{}

SpectrumBuffer::SpectrumBuffer(std::uint32_t segmentLength, double overlapPercent, HostComplexity complexity,
                               std::uint32_t numChannels, std::unique_ptr<Timer> updateTimer)
    : state_(std::make_unique<State>(segmentLength, overlapPercent, complexity, numChannels, std::move(updateTimer)))
{}

SpectrumBuffer::~SpectrumBuffer() = default;

void SpectrumBuffer::setupBufferParams(const HostArray* nPorts, const HostArray*, const HostArray* maxNumTimeSteps,
                                       const HostArray*, bool isComplex)
{
    const double ports = firstElement(nPorts), steps = firstElement(maxNumTimeSteps);
    state_->setChannels(state_->numChannels, isComplex ? HostComplexity::complex : HostComplexity::real);
    state_->numPorts = ports;
    state_->maxNumTimeSteps = steps;
}

void SpectrumBuffer::setSegmentLength(std::uint32_t samples)
{
    if (samples != state_->cut.length)
        state_->recut(SegmentCut::of(samples, state_->overlapPercent));
}

std::uint32_t SpectrumBuffer::getSegmentLength() const { return static_cast<std::uint32_t>(state_->cut.length); }

void SpectrumBuffer::setOverlapPercent(double percent)
{
    if (percent == state_->overlapPercent || (std::isnan(percent) && std::isnan(state_->overlapPercent)))
        return;
    state_->recut(SegmentCut::of(getSegmentLength(), percent));
    state_->overlapPercent = percent;
}

double SpectrumBuffer::getOverlapPercent() const { return state_->overlapPercent; }
std::uint32_t SpectrumBuffer::getNumOverlapSamples() const { return static_cast<std::uint32_t>(state_->cut.overlap); }

void SpectrumBuffer::setNumChannels(std::uint32_t channels) { state_->setChannels(channels, state_->complexity); }
std::uint32_t SpectrumBuffer::getNumChannels() const { return state_->numChannels; }

void SpectrumBuffer::setComplexityFlag(HostComplexity complexity)
{
    state_->setChannels(state_->numChannels, complexity);
}

HostArray* SpectrumBuffer::getComplexityFlag() const
{
    return createString(state_->complexity == HostComplexity::complex ? "Complex" : "Real");
}

HostComplexity SpectrumBuffer::getComplexity() const { return state_->complexity; }
HostArray* SpectrumBuffer::GetType() const { return createString("SingleRate"); }

void SpectrumBuffer::setSegmentsPerBlock(std::uint32_t segments) { state_->segmentsPerBlock = segments; }
std::uint32_t SpectrumBuffer::getSegmentsPerBlock() const { return state_->segmentsPerBlock; }
void SpectrumBuffer::setReduceUpdates(bool reduce) { state_->reduceUpdates = reduce; }
bool SpectrumBuffer::getReduceUpdates() const { return state_->reduceUpdates; }
void SpectrumBuffer::setReduceUpdatesOverride(bool ignoreTimer) { state_->reduceUpdatesOverride = ignoreTimer; }
void SpectrumBuffer::setMaxNumTimeSteps(double steps) { state_->maxNumTimeSteps = steps; }
double SpectrumBuffer::getMaxNumTimeSteps() const { return state_->maxNumTimeSteps; }
void SpectrumBuffer::setNPorts(double ports) { state_->numPorts = ports; }
double SpectrumBuffer::getNPorts() const { return 1; }
void SpectrumBuffer::setTreatMby1SignalsAsOneChannel(bool asOneChannel)
{
    state_->treatMby1SignalsAsOneChannel = asOneChannel;
}
bool SpectrumBuffer::getTreatMby1SignalsAsOneChannel() const { return state_->treatMby1SignalsAsOneChannel; }
void SpectrumBuffer::setDataSkippedFlag(bool skipped) { state_->dataSkipped = skipped; }
bool SpectrumBuffer::getDataSkippedFlag() const { return state_->dataSkipped; }
void SpectrumBuffer::setNumProcessedSamples(std::uint32_t samples) { state_->numProcessedSamples = samples; }
std::uint32_t SpectrumBuffer::getNumProcessedSamples() const { return state_->numProcessedSamples; }
std::uint32_t SpectrumBuffer::getLastInputFrameLength() const { return state_->lastInputFrameLength; }

void SpectrumBuffer::AddTime(const double* time, int /*count*/, int /*port*/) { state_->lastTime = firstTime(time); }
void SpectrumBuffer::AddTime(const HostArray* time, int /*port*/) { state_->lastTime = firstTime(time); }
void SpectrumBuffer::clearBackTo(const double* time) { state_->lastTime = firstTime(time); }
void SpectrumBuffer::clearBackTo(const HostArray* time) { state_->lastTime = firstTime(time); }
double SpectrumBuffer::GetLastTime() const { return state_->lastTime; }

bool SpectrumBuffer::isTimeUp() { return !state_->reduceUpdates || state_->updateTimer->isTimeUp(); }
void SpectrumBuffer::restartTimer() { state_->updateTimer->start(); }

} // namespace tracery
