#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

#include <bit>
#include <numeric>

namespace tracery {

namespace {

/// Fills the places of a step that the input does not cover.
const double kFill = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});

/// Below this share of the maximum block, values are written one by one into a block of NaN.
constexpr double kSparseShare = 0.1;

/// Walks the columns of a step of `extents` inside a block of `maxExtents`: calls visit(offset of the column's first
/// element in the block) in storage order. `subscripts` has a 0 for each extent, and again afterwards.
template <class Visit>
void forEachColumn(const TimeBuffer::Counts& extents, const TimeBuffer::Counts& maxExtents,
                   TimeBuffer::Counts& subscripts, Visit&& visit)
{
    while (true) {
        std::uint64_t offset = 0;
        std::uint64_t stride = 1;
        for (std::size_t d = 0; d < extents.size(); ++d) {
            offset += subscripts[d] * stride;
            stride *= maxExtents[d];
        }
        visit(offset);
        std::size_t d = 1;
        while (d < extents.size() && ++subscripts[d] == extents[d])
            subscripts[d++] = 0;
        if (d >= extents.size())
            return;
    }
}

/// Appends one smaller step column by column, with NaN up to where the next column starts.
void DenseBufferFill(Ring& ring, const double* values, const TimeBuffer::Counts& extents,
                     const TimeBuffer::Counts& maxExtents, TimeBuffer::Counts& subscripts,
                     std::uint64_t elementsPerStep)
{
    const std::uint64_t column = extents.empty() ? 1 : extents[0];
    std::uint64_t filled = 0;
    forEachColumn(extents, maxExtents, subscripts, [&](std::uint64_t offset) {
        ring.appendFill(offset - filled, kFill);
        ring.append(values, column);
        values += column;
        filled = offset + column;
    });
    ring.appendFill(elementsPerStep - filled, kFill);
}

/// Appends one smaller step as a block of NaN and then sets the few values in it.
void SparseBufferFill(Ring& ring, const double* values, const TimeBuffer::Counts& extents,
                      const TimeBuffer::Counts& maxExtents, TimeBuffer::Counts& subscripts,
                      std::uint64_t elementsPerStep)
{
    ring.appendFill(elementsPerStep, kFill);
    forEachColumn(extents, maxExtents, subscripts, [&](std::uint64_t offset) {
        for (std::uint64_t i = 0; i < extents[0]; ++i)
            ring.setFromEnd(elementsPerStep - (offset + i), *values++);
    });
}

/// Product of extents, which fit memory, so that nothing overflows.
std::uint64_t product(std::span<const std::uint64_t> extents)
{
    return std::accumulate(extents.begin(), extents.end(), std::uint64_t{1}, std::multiplies<>());
}

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

template <class Use>
void TimeBuffer::State::forWrittenTimeLines(std::uint64_t port, Use&& use)
{
    if (type == BufferType::SingleRate && !threadSafe)
        std::for_each(times.begin(), times.end(), use);
    else
        use(timesOf(port));
}

void TimeBuffer::State::reserveTimes(std::uint64_t count, std::uint64_t port)
{
    forWrittenTimeLines(port, [count](TimeLine& line) { line.ring.reserveFor(count); });
}

void TimeBuffer::State::addTime(const double* newTimes, std::uint64_t count, std::uint64_t port) noexcept
{
    forWrittenTimeLines(port, [newTimes, count](TimeLine& line) {
        line.ring.append(newTimes, count);
        line.steps += count;
    });
}

TimeBuffer::State::ValueLine& TimeBuffer::State::lineFor(std::uint64_t port, HostComplexity complexity)
{
    if (complexity == HostComplexity::real)
        return ports[port].real;
    if (!ports[port].imag)
        throw Error(errors::AddComplexDataError);
    return *ports[port].imag;
}

TimeBuffer::State::Write TimeBuffer::State::checkWrite(const Port& port, const ValueLine& line, std::uint64_t timeSteps,
                                                       std::span<const std::uint64_t> dims) const
{
    Write write;
    if (std::find(dims.begin(), dims.end(), 0U) == dims.end()) {
        const std::size_t numExtents = port.extents.size();
        // Short dims of a port that ends in 1 go on with as many 1.
        const std::size_t numDims = dims.size() < numExtents && port.extents.back() == 1 ? numExtents : dims.size();
        const auto dim = [dims](std::size_t d) { return d < dims.size() ? dims[d] : 1; };
        if (numDims > 0 && dim(0) == port.elementsPerStep && numDims < 3) {
            write.steps = dim(1);
            write.elements = dim(0) * write.steps;
        } else {
            if (numDims != numExtents && numDims != numExtents + 1)
                throw Error(errors::AddValueInputFormatError);
            write.steps = dim(numExtents);
            write.extents.resize(numExtents);
            for (std::size_t d = 0; d < numExtents; ++d)
                if ((write.extents[d] = dim(d)) > port.extents[d])
                    throw Error(errors::AddValueInputFormatError);
            const std::uint64_t elementsPerStep = product(write.extents);
            write.elements = elementsPerStep * write.steps;
            write.whole = elementsPerStep == port.elementsPerStep;
            write.subscripts.assign(numExtents, 0);
        }
    }
    if (line.steps + write.steps != timeSteps)
        throw Error(errors::AddValueError);
    return write;
}

void TimeBuffer::State::reserveValues(const Port& port, ValueLine& line, const Write& write)
{
    if (write.whole)
        line.ring.reserveFor(write.elements);
    else
        line.ring.reserveFor(std::min(write.steps, line.ring.capacity() / port.elementsPerStep) * port.elementsPerStep);
}

void TimeBuffer::State::write(std::uint64_t port, ValueLine& line, Write& write, const double* values) noexcept
{
    if (write.steps == 0)
        return;
    Port& p = ports[port];
    line.steps += write.steps;
    if (!hasNaNPattern)
        hasNaNPattern = pattern.addValueAndCheckPattern(values[0]);

    if (write.whole) {
        line.ring.append(values, write.elements);
    } else {
        const std::uint64_t inputStep = product(write.extents);
        const double share = static_cast<double>(inputStep) / static_cast<double>(p.elementsPerStep);
        const auto fill = share < kSparseShare ? SparseBufferFill : DenseBufferFill;
        // Steps that the ring could not keep beside the newer ones are not laid out at all.
        const std::uint64_t kept = std::min(write.steps, line.ring.capacity() / p.elementsPerStep);
        for (std::uint64_t i = write.steps - kept; i < write.steps; ++i)
            fill(line.ring, values + i * inputStep, write.extents, p.extents, write.subscripts, p.elementsPerStep);
    }
    dropValuesWithoutTimes(p, timesOf(port));
}

void TimeBuffer::State::reserveAndWrite(std::uint64_t port, ValueLine& line, Write& write, const double* values)
{
    reserveValues(ports[port], line, write);
    this->write(port, line, write, values);
}

void TimeBuffer::State::dropValuesWithoutTimes(Port& port, const TimeLine& timeLine) noexcept
{
    port.forEachPart([&](ValueLine& line) {
        const std::uint64_t lag = timeLine.steps - line.steps; // the newest times whose values are still to come
        const std::uint64_t kept = timeLine.ring.size() - std::min(lag, timeLine.ring.size());
        line.ring.keepNewest(kept * port.elementsPerStep);
    });
}

void TimeBuffer::State::addArray(const HostArray* newTimes, const HostArray* values, std::uint64_t port, bool refresh)
{
    requireDouble(values, errors::AddValueDataTypeError);
    Port& p = ports[port];
    const std::uint64_t elements = getNumberOfElements(values);
    const bool takeExtents = elements > 0 && (refresh || p.takeArrayExtents);
    std::span<const std::uint64_t> extents = p.arrayExtents;
    if (takeExtents || elements == 0)
        extents = {getDimensions(values), getNumberOfDimensions(values)};
    if (elements > 0 && product(extents) > elements)
        throw Error(errors::AddValueInputFormatError);

    const std::uint64_t newSteps = newTimes != nullptr ? getNumberOfElements(newTimes) : 0;
    const std::uint64_t timeSteps = timesOf(port).steps + newSteps;
    Write realWrite = checkWrite(p, p.real, timeSteps, extents);
    Write imagWrite = p.imag ? checkWrite(p, *p.imag, timeSteps, extents) : Write{};
    std::vector<double> zeros;
    if (getRealData(values) == nullptr || (p.imag && getImagData(values) == nullptr))
        zeros.resize(elements);
    Counts newExtents;
    const bool otherExtents =
        takeExtents && !std::equal(extents.begin(), extents.end(), p.arrayExtents.begin(), p.arrayExtents.end());
    if (otherExtents)
        newExtents.assign(extents.begin(), extents.end());
    if (newTimes != nullptr)
        reserveTimes(newSteps, port);
    reserveValues(p, p.real, realWrite);
    if (p.imag)
        reserveValues(p, *p.imag, imagWrite);

    // From here on nothing can fail.
    if (newTimes != nullptr)
        addTime(getRealData(newTimes), newSteps, port);
    if (otherExtents)
        p.arrayExtents.swap(newExtents);
    p.takeArrayExtents &= !takeExtents;
    const auto orZeros = [&](const double* part) { return part != nullptr ? part : zeros.data(); };
    write(port, p.real, realWrite, orZeros(getRealData(values)));
    if (p.imag)
        write(port, *p.imag, imagWrite, orZeros(getImagData(values)));
}

void TimeBuffer::AddTime(const double* times, std::uint64_t count, std::uint64_t port)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    if (times == nullptr && count > 0)
        throw Error(errors::EmptyInput);
    state_->reserveTimes(count, port);
    state_->addTime(times, count, port);
}

void TimeBuffer::AddTime(const HostArray* times, std::uint64_t port)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    requireTimes(times);
    state_->reserveTimes(getNumberOfElements(times), port);
    state_->addTime(getRealData(times), getNumberOfElements(times), port);
}

void TimeBuffer::AddValue(const double* values, const Counts& dims, std::uint64_t port, HostComplexity complexity)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    State::ValueLine& line = state_->lineFor(port, complexity);
    State::Write write = state_->checkWrite(state_->ports[port], line, state_->timesOf(port).steps, dims);
    if (values == nullptr && write.elements > 0)
        throw Error(errors::EmptyInput);
    state_->reserveAndWrite(port, line, write, values);
}

void TimeBuffer::AddValue(const std::complex<double>* values, const Counts& dims, std::uint64_t port,
                          HostComplexity complexity)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    State::ValueLine& line = state_->lineFor(port, complexity);
    State::Write write = state_->checkWrite(state_->ports[port], line, state_->timesOf(port).steps, dims);
    if (values == nullptr && write.elements > 0)
        throw Error(errors::EmptyInput);
    std::vector<double> part(write.elements);
    std::transform(values, values + write.elements, part.begin(), [&](std::complex<double> value) {
        return complexity == HostComplexity::real ? value.real() : value.imag();
    });
    state_->reserveAndWrite(port, line, write, part.data());
}

void TimeBuffer::AddValue(const HostArray* values, std::uint64_t port, bool refresh)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    state_->addArray(nullptr, values, port, refresh);
}

void TimeBuffer::addTimeAndValue(const HostArray* times, const HostArray* values, std::uint64_t port, bool refresh)
{
    const Lock lock(*state_, Lock::When::always);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    requireTimes(times);
    state_->addArray(times, values, port, refresh);
}

} // namespace tracery
