// Set-up, writing and clearing: what the ports do, with the mutex held.

#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>
#include <tracery/host/Error.h>

#include <algorithm>
#include <limits>

namespace tracery {

namespace {

constexpr std::uint64_t kMaximumCapacity = 20000;

void requireDouble(const HostArray* array, const ErrorKind& otherwise)
{
    if (array == nullptr)
        throw Error(errors::EmptyInput);
    if (!isDouble(array))
        throw Error(otherwise);
}

void requireTimes(const HostArray* times)
{
    requireDouble(times, errors::AddTimeError);
    if (!isEmpty(times) && getRealData(times) == nullptr)
        throw Error(errors::AddTimeError);
}

} // namespace

// ---- Set-up

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
    if (nPorts == 0 || maxDimensions.size() % nPorts != 0 || nPorts > Ports::kMaximumElements)
        throw Error(errors::InvalidMaxDimensions);
    ResetBuffer(maxNumTimeSteps, maxDimensions, Counts(nPorts, maxDimensions.size() / nPorts), nPorts,
                BufferType::SingleRate, std::vector<HostComplexity>(nPorts, HostComplexity::real), false);
}

void TimeBuffer::ResetBuffer(const Counts& maxNumTimeSteps, const Counts& maxDimensions, const Counts& nDim,
                             std::uint64_t nPorts, BufferType type, const std::vector<HostComplexity>& complexity,
                             bool isThreadSafe)
{
    Ports fresh(maxNumTimeSteps, maxDimensions, nDim, nPorts, type, complexity, isThreadSafe);
    state_->onBuffer(
        [&](Ports& all) {
            fresh.beginAt(all.clearings + 1);
            std::swap(all, fresh);
            state_->threadSafe = isThreadSafe;
        },
        isThreadSafe ? State::LockWhen::always : State::LockWhen::ifThreadSafe);
}

void TimeBuffer::resetInitialized()
{
    state_->whenSetUp([](Ports& all) {
        all.initialized = false;
        all.ports.clear();
    });
}

void TimeBuffer::SetMaxNumTimeSteps(const Counts& steps)
{
    state_->whenSetUp([&steps](Ports& all) {
        if (steps.size() != 1 && steps.size() != all.numPorts)
            throw Error(errors::InvalidMaxNumTimeStepsSize);
        if (std::find(steps.begin(), steps.end(), 0U) != steps.end())
            throw Error(errors::InvalidMaxNumTimeStepsValue);
        if (steps.size() != 1 && all.sharedTime &&
            std::adjacent_find(steps.begin(), steps.end(), std::not_equal_to<>()) != steps.end())
            throw Error(errors::InvalidMaxNumTimeStepsChange);
        all.changeCapacities(steps.size() != 1 ? steps : Counts(all.numPorts, steps[0]), all.held);
    });
}

void TimeBuffer::SetToMaximumCapacity() { SetMaxNumTimeSteps(Counts{kMaximumCapacity}); }

void TimeBuffer::reserveCapacity()
{
    state_->whenSetUp([](Ports& all) { all.changeCapacities(all.maxNumTimeSteps, true); });
}

void TimeBuffer::SetMaxDimensions(const std::vector<int>& extents, std::uint64_t port)
{
    state_->onPort(port, [&](Ports& all, Port& one) {
        if (extents.size() != one.rings.layout().extents().size() ||
            std::any_of(extents.begin(), extents.end(), [](int extent) { return extent < 0; }))
            throw Error(errors::InvalidMaxDimensions);
        all.reshape({{port, Counts(extents.begin(), extents.end())}});
    });
}

void TimeBuffer::SetMaxDimensions(const HostArray* portsByExtents)
{
    state_->whenSetUp([portsByExtents](Ports& all) {
        if (portsByExtents == nullptr || isEmpty(portsByExtents))
            throw Error(errors::EmptyInput);
        Counts flat;
        TransposeMaxDimensions(portsByExtents, flat);
        if (getDimensions(portsByExtents)[0] != all.numPorts)
            throw Error(errors::InvalidMaxDimensions);

        const auto width = static_cast<std::ptrdiff_t>(flat.size() / all.numPorts);
        std::map<std::uint64_t, Counts> extentsOfPorts;
        auto row = flat.begin();
        for (std::uint64_t k = 0; k < all.numPorts; ++k, row += width) {
            const auto used = static_cast<std::ptrdiff_t>(all.ports[k].rings.layout().extents().size());
            if (used > width || std::any_of(row + used, row + width, [](std::uint64_t extent) { return extent != 1; }))
                throw Error(errors::InvalidMaxDimensions);
            extentsOfPorts[k] = Counts(row, row + used);
        }
        all.reshape(extentsOfPorts);
    });
}

void TimeBuffer::TransposeMaxDimensions(const HostArray* matrix, Counts& out)
{
    if (matrix == nullptr || !isReal2dMatrix(matrix))
        throw Error(errors::InvalidMaxDimensions);
    const std::uint64_t rows = getDimensions(matrix)[0];
    const std::uint64_t columns = getDimensions(matrix)[1];
    const double* data = getRealData(matrix);
    Counts transposed(data != nullptr ? getNumberOfElements(matrix) : 0);
    for (std::uint64_t i = 0; i < transposed.size(); ++i) {
        const double value = data[i / columns + (i % columns) * rows];
        if (!(value > -1.0 && value < 0x1p64))
            throw Error(errors::InvalidMaxDimensions);
        transposed[i] = static_cast<std::uint64_t>(value);
    }
    out.swap(transposed);
}

// ---- Settings of ports

void TimeBuffer::SetSampleTimes(const std::vector<double>& times)
{
    state_->whenSetUp([&times](Ports& all) {
        if (times.size() < all.sampleTimes.size())
            throw Error(errors::InvalidSampleTimes);
        std::copy_n(times.begin(), all.sampleTimes.size(), all.sampleTimes.begin());
    });
}

void TimeBuffer::SetSampleTimes(std::uint64_t port, const std::vector<double>& times)
{
    state_->onPort(port, [&](Ports& all, Port&) {
        if (times.size() < 2)
            throw Error(errors::InvalidSampleTimes);
        std::copy_n(times.begin(), 2, &all.sampleTimes[2 * port]);
    });
}

void TimeBuffer::setIsLinearInterpolation(const std::vector<std::uint8_t>& flags)
{
    state_->whenSetUp([&flags](Ports& all) {
        if (flags.size() != all.numPorts)
            throw Error(errors::InvalidArgumentType, "one flag a port is needed");
        for (std::size_t k = 0; k < flags.size(); ++k)
            all.ports[k].linear = flags[k] != 0;
    });
}

void TimeBuffer::setDataHasNaNPattern(bool found)
{
    state_->onBuffer([found](Ports& all) { all.hasNaNPattern = found; });
}

void TimeBuffer::resetNaNPattern() { setDataHasNaNPattern(false); }

// ---- Writing and clearing

void TimeBuffer::AddTime(const double* times, std::uint64_t count, std::uint64_t port)
{
    state_->onPort(port, [=](Ports& all, Port& one) {
        if (times == nullptr && count > 0)
            throw Error(errors::EmptyInput);
        all.addTime(one, times, count);
    });
}

void TimeBuffer::AddTime(const HostArray* times, std::uint64_t port)
{
    state_->onPort(port, [=](Ports& all, Port& one) {
        requireTimes(times);
        all.addTime(one, getRealData(times), getNumberOfElements(times));
    });
}

void TimeBuffer::AddValue(const double* values, const Counts& dims, std::uint64_t port, HostComplexity complexity)
{
    state_->onPort(port, [&](Ports& all, Port& one) { all.addValue(one, values, dims, complexity); });
}

void TimeBuffer::AddValue(const std::complex<double>* values, const Counts& dims, std::uint64_t port,
                          HostComplexity complexity)
{
    state_->onPort(port, [&](Ports& all, Port& one) { all.addValue(one, values, dims, complexity); });
}

void TimeBuffer::AddValue(const HostArray* values, std::uint64_t port, bool refresh)
{
    state_->onPort(port, [=](Ports& all, Port& one) {
        requireDouble(values, errors::AddValueDataTypeError);
        all.addArray(one, nullptr, values, refresh);
    });
}

void TimeBuffer::addTimeAndValue(const HostArray* times, const HostArray* values, std::uint64_t port, bool refresh)
{
    const auto add = [=](Ports& all, Port& one) {
        requireTimes(times);
        requireDouble(values, errors::AddValueDataTypeError);
        all.addArray(one, times, values, refresh);
    };
    state_->onPort(port, add, State::LockWhen::always);
}

void TimeBuffer::Clear()
{
    state_->whenSetUp([](Ports& all) { all.clear(); });
}

void TimeBuffer::ClearBackTo(double time)
{
    state_->whenSetUp([time](Ports& all) { all.clearBackTo(time); });
}

void TimeBuffer::clearUptoLastTime()
{
    state_->whenSetUp([](Ports& all) { all.clearUptoLastTime(); });
}

} // namespace tracery
