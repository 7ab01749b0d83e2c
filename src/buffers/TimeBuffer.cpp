#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace tracery {

namespace {

constexpr std::uint64_t kMaximumCapacity = 20000;

/// Elements of one step of all ports: the NaN-pattern detector keeps three steps and counts them as int.
constexpr std::uint64_t kMaximumElements = std::numeric_limits<int>::max() / 3;

/// nullopt when the product passes 64 bits.
std::optional<std::uint64_t> product(const TimeBuffer::Counts& factors)
{
    std::uint64_t result = 1;
    bool overflow = false;
    for (const std::uint64_t factor : factors) {
        if (factor == 0)
            return 0;
        overflow |= __builtin_mul_overflow(result, factor, &result);
    }
    return overflow ? std::nullopt : std::optional(result);
}

std::uint64_t ringCapacity(std::uint64_t elementsPerStep, std::uint64_t steps)
{
    std::uint64_t capacity = 0;
    if (__builtin_mul_overflow(elementsPerStep, steps, &capacity) || capacity > Ring::largestCapacity() ||
        steps > Ring::largestCapacity())
        throw Error(errors::InvalidMaxNumTimeStepsValue);
    return capacity;
}

} // namespace

TimeBuffer::TimeBuffer() : state_(std::make_unique<State>()) {}
TimeBuffer::~TimeBuffer() = default;

TimeBuffer::TimeBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim,
                       std::uint64_t nPorts, BufferType type, const std::vector<HostComplexity>& complexity,
                       bool isThreadSafe)
    : TimeBuffer()
{
    ResetBuffer(maxNumTimeSteps, maxDimensions, nDim, nPorts, type, complexity, isThreadSafe);
}

TimeBuffer::TimeBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, std::uint64_t nPorts) : TimeBuffer()
{
    // Checked ahead of ResetBuffer, whose other arguments take memory for every port.
    if (maxNumTimeSteps.size() != 1 && maxNumTimeSteps.size() < nPorts)
        throw Error(errors::InvalidMaxNumTimeStepsSize);
    if (nPorts == 0 || maxDimensions.size() % nPorts != 0 || nPorts > kMaximumElements)
        throw Error(errors::InvalidMaxDimensions);
    ResetBuffer(maxNumTimeSteps, maxDimensions, Counts(nPorts, maxDimensions.size() / nPorts), nPorts,
                BufferType::SingleRate, std::vector<HostComplexity>(nPorts, HostComplexity::real), false);
}

void TimeBuffer::State::requirePort(std::uint64_t port) const
{
    if (port >= numPorts)
        throw Error(errors::InvalidPortID);
}

TimeBuffer::State::Port TimeBuffer::State::makePort(Counts extents, bool complex, std::uint64_t maxNumTimeSteps)
{
    const std::optional<std::uint64_t> elements = product(extents);
    if (!elements)
        throw Error(errors::InvalidMaxDimensions);
    const std::uint64_t capacity = ringCapacity(*elements, maxNumTimeSteps);
    return Port{std::move(extents),
                *elements,
                ValueLine{Ring(capacity)},
                complex ? std::optional(ValueLine{Ring(capacity)}) : std::nullopt,
                {}};
}

DataPattern TimeBuffer::State::makePattern(const std::vector<std::uint64_t>& elementsPerStep)
{
    std::uint64_t elements = 0;
    for (const std::uint64_t width : elementsPerStep)
        if (__builtin_add_overflow(elements, width, &elements))
            throw Error(errors::InvalidMaxDimensions);
    if (elements > kMaximumElements)
        throw Error(errors::InvalidMaxDimensions, "the ports' steps have too many elements together");
    return DataPattern(static_cast<int>(elements));
}

void TimeBuffer::ResetBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim,
                             std::uint64_t nPorts, BufferType type, const std::vector<HostComplexity>& complexity,
                             bool isThreadSafe)
{
    if (maxNumTimeSteps.size() != 1 && maxNumTimeSteps.size() < nPorts)
        throw Error(errors::InvalidMaxNumTimeStepsSize);
    if (nDim.size() < nPorts)
        throw Error(errors::InvalidMaxDimensions);
    if (complexity.size() < nPorts)
        throw Error(errors::InvalidComplexityDimension);
    std::uint64_t numExtents = 0;
    for (const std::uint64_t count : nDim)
        if (__builtin_add_overflow(numExtents, count, &numExtents))
            throw Error(errors::InvalidMaxDimensions);
    if (maxDimensions.size() != numExtents)
        throw Error(errors::InvalidMaxDimensions);

    // Everything new is made aside, so that a refusal leaves the old buffer.
    Counts capacities(nPorts);
    for (std::uint64_t k = 0; k < nPorts; ++k)
        capacities[k] = maxNumTimeSteps[maxNumTimeSteps.size() == 1 ? 0 : k];
    const bool sameCapacities =
        std::adjacent_find(capacities.begin(), capacities.end(), std::not_equal_to<>()) == capacities.end();
    const bool shared = type == BufferType::SingleRate && !isThreadSafe && sameCapacities;

    std::vector<State::Port> ports;
    ports.reserve(nPorts);
    auto extents = maxDimensions.begin();
    for (std::uint64_t k = 0; k < nPorts; ++k) {
        const auto end = extents + static_cast<std::ptrdiff_t>(nDim[k]);
        ports.push_back(State::makePort(Counts(extents, end), complexity[k] == HostComplexity::complex, capacities[k]));
        extents = end;
    }
    std::vector<State::TimeLine> times;
    const std::uint64_t numTimeLines = shared ? std::min<std::uint64_t>(nPorts, 1) : nPorts;
    times.reserve(numTimeLines);
    for (std::uint64_t k = 0; k < numTimeLines; ++k)
        times.push_back(State::TimeLine{Ring(capacities[k])});
    std::vector<std::uint64_t> widths;
    for (const State::Port& port : ports)
        widths.push_back(port.elementsPerStep);
    DataPattern pattern = State::makePattern(widths);
    std::vector<double> sampleTimes(2 * nPorts, 0.0);

    const Lock lock(*state_, isThreadSafe ? Lock::When::always : Lock::When::ifThreadSafe);
    state_->threadSafe = isThreadSafe;
    state_->type = type;
    state_->sharedTime = shared;
    state_->numPorts = nPorts;
    state_->maxNumTimeSteps.swap(capacities);
    state_->sampleTimes.swap(sampleTimes);
    state_->ports.swap(ports);
    state_->times.swap(times);
    state_->pattern = std::move(pattern);
    state_->hasNaNPattern = false;
    state_->held = false;
    state_->clearings += state_->initialized ? 1 : 0;
    state_->initialized = true;
}

void TimeBuffer::resetInitialized()
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    ++state_->clearings;
    state_->initialized = false;
    state_->ports.clear();
    state_->times.clear();
}

void TimeBuffer::SetMaxNumTimeSteps(const Counts& steps)
{
    const Lock lock(*state_);
    State& s = *state_;
    if (!s.initialized)
        return;
    if (steps.size() != 1 && steps.size() != s.numPorts)
        throw Error(errors::InvalidMaxNumTimeStepsSize);
    if (std::find(steps.begin(), steps.end(), 0U) != steps.end())
        throw Error(errors::InvalidMaxNumTimeStepsValue);
    if (steps.size() != 1 && s.sharedTime &&
        std::adjacent_find(steps.begin(), steps.end(), std::not_equal_to<>()) != steps.end())
        throw Error(errors::InvalidMaxNumTimeStepsChange);
    s.changeCapacities(steps.size() != 1 ? steps : Counts(s.numPorts, steps[0]), s.held);
}

void TimeBuffer::reserveCapacity()
{
    const Lock lock(*state_);
    if (state_->initialized)
        state_->changeCapacities(state_->maxNumTimeSteps, true);
}

void TimeBuffer::State::changeCapacities(const Counts& stepsOfPorts, bool hold)
{
    // All rings are made ready before the first one changes, as a ring that stays behind would pair values with the
    // wrong times.
    Counts steps(stepsOfPorts);
    std::vector<Ring::Change> changes;
    for (std::uint64_t k = 0; k < times.size(); ++k)
        changes.emplace_back(times[k].ring, steps[k], hold);
    for (std::uint64_t k = 0; k < numPorts; ++k) {
        const std::uint64_t capacity = ringCapacity(ports[k].elementsPerStep, steps[k]);
        ports[k].forEachPart([&](ValueLine& line) { changes.emplace_back(line.ring, capacity, hold); });
    }

    for (Ring::Change& change : changes)
        change.apply();
    for (std::uint64_t k = 0; k < numPorts; ++k)
        dropValuesWithoutTimes(ports[k], timesOf(k));
    maxNumTimeSteps.swap(steps);
    held = hold;
}

void TimeBuffer::SetToMaximumCapacity() { SetMaxNumTimeSteps(Counts{kMaximumCapacity}); }

HostArray* TimeBuffer::GetComplexityFlags() const
{
    const Lock lock(*state_);
    const std::uint64_t extents[] = {state_->ports.size(), 1};
    HostArrayPtr flags(createLogicalArray(2, extents));
    for (std::uint64_t k = 0; k < state_->ports.size(); ++k)
        getLogicals(flags.get())[k] = state_->ports[k].complex() ? 1 : 0;
    return flags.release();
}

void TimeBuffer::SetSampleTimes(const std::vector<double>& times)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    if (times.size() < state_->sampleTimes.size())
        throw Error(errors::InvalidSampleTimes);
    std::copy_n(times.begin(), state_->sampleTimes.size(), state_->sampleTimes.begin());
}

void TimeBuffer::SetSampleTimes(std::uint64_t port, const std::vector<double>& times)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    if (times.size() < 2)
        throw Error(errors::InvalidSampleTimes);
    std::copy_n(times.begin(), 2, state_->sampleTimes.begin() + static_cast<std::ptrdiff_t>(2 * port));
}

std::vector<double> TimeBuffer::GetSampleTimes() const
{
    const Lock lock(*state_);
    return state_->sampleTimes;
}

std::vector<double> TimeBuffer::GetSampleTimes(std::uint64_t port) const
{
    const Lock lock(*state_);
    if (!state_->initialized && port >= state_->numPorts)
        return {};
    state_->requirePort(port);
    return {state_->sampleTimes[2 * port], state_->sampleTimes[2 * port + 1]};
}

void TimeBuffer::setIsLinearInterpolation(const std::vector<std::uint8_t>& flags)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    if (flags.size() != state_->numPorts)
        throw Error(errors::InvalidArgumentType, "one flag a port is needed");
    for (std::size_t k = 0; k < flags.size(); ++k)
        state_->ports[k].linear = flags[k] != 0;
}

std::vector<bool> TimeBuffer::getIsLinearInterpolation() const
{
    const Lock lock(*state_);
    std::vector<bool> flags;
    for (const State::Port& port : state_->ports)
        flags.push_back(port.linear);
    return flags;
}

TimeBuffer::Counts TimeBuffer::GetNDim() const
{
    const Lock lock(*state_);
    Counts counts;
    for (const State::Port& port : state_->ports)
        counts.push_back(port.extents.size());
    return counts;
}

// Plain state queries.

bool TimeBuffer::isInitialized() const
{
    const Lock lock(*state_);
    return state_->initialized;
}

TimeBuffer::Counts TimeBuffer::GetMaxNumTimeSteps() const
{
    const Lock lock(*state_);
    return state_->maxNumTimeSteps;
}

std::uint64_t TimeBuffer::GetNPorts() const
{
    const Lock lock(*state_);
    return state_->numPorts;
}

BufferType TimeBuffer::GetBufferType() const
{
    const Lock lock(*state_);
    return state_->type;
}

std::string TimeBuffer::GetType() const
{
    return GetBufferType() == BufferType::SingleRate ? "SingleRate" : "MultipleRate";
}

bool TimeBuffer::getIsThreadSafe() const { return state_->threadSafe; }

bool TimeBuffer::dataHasNaNPattern() const
{
    const Lock lock(*state_);
    return state_->hasNaNPattern;
}

void TimeBuffer::setDataHasNaNPattern(bool found)
{
    const Lock lock(*state_);
    state_->hasNaNPattern = found;
}

void TimeBuffer::resetNaNPattern() { setDataHasNaNPattern(false); }

} // namespace tracery
