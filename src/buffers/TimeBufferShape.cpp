#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

#include <limits>

namespace tracery {

void TimeBuffer::State::reshape(const std::map<std::uint64_t, Counts>& extentsOfPorts)
{
    // Everything new is made aside, so that a refusal leaves the old rings.
    std::vector<std::optional<Port>> newPorts(numPorts);
    std::vector<std::optional<TimeLine>> newTimes(times.size());
    std::vector<std::uint64_t> widths;
    for (std::uint64_t k = 0; k < numPorts; ++k) {
        const Port& old = ports[k];
        const auto found = extentsOfPorts.find(k);
        if (found != extentsOfPorts.end() || sharedTime) {
            newPorts[k] = makePort(found != extentsOfPorts.end() ? found->second : old.extents, old.complex(),
                                   maxNumTimeSteps[k]);
            newPorts[k]->linear = old.linear;
            if (newPorts[k]->extents == old.extents) {
                // Only its steps restart: arrays still come in the shape that the last one had.
                newPorts[k]->arrayExtents = old.arrayExtents;
                newPorts[k]->takeArrayExtents = old.takeArrayExtents;
            }
            const std::uint64_t line = sharedTime ? 0 : k;
            newTimes[line] = TimeLine{Ring(times[line].ring.capacity())};
            if (held) {
                newPorts[k]->forEachPart([](ValueLine& values) { values.ring.hold(); });
                newTimes[line]->ring.hold();
            }
        }
        widths.push_back(newPorts[k] ? newPorts[k]->elementsPerStep : old.elementsPerStep);
    }
    DataPattern newPattern = makePattern(widths);

    for (std::uint64_t k = 0; k < numPorts; ++k)
        if (newPorts[k])
            std::swap(ports[k], *newPorts[k]);
    for (std::size_t k = 0; k < times.size(); ++k)
        if (newTimes[k])
            std::swap(times[k], *newTimes[k]);
    pattern = std::move(newPattern);
    hasNaNPattern = false;
    ++clearings;
}

void TimeBuffer::SetMaxDimensions(const std::vector<int>& extents, std::uint64_t port)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    state_->requirePort(port);
    if (extents.size() != state_->ports[port].extents.size() ||
        std::any_of(extents.begin(), extents.end(), [](int extent) { return extent < 0; }))
        throw Error(errors::InvalidMaxDimensions);
    state_->reshape({{port, Counts(extents.begin(), extents.end())}});
}

void TimeBuffer::SetMaxDimensions(const HostArray* portsByExtents)
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    if (portsByExtents == nullptr || isEmpty(portsByExtents))
        throw Error(errors::EmptyInput);
    Counts flat;
    TransposeMaxDimensions(portsByExtents, flat);
    if (getDimensions(portsByExtents)[0] != state_->numPorts)
        throw Error(errors::InvalidMaxDimensions);

    const auto width = static_cast<std::ptrdiff_t>(flat.size() / state_->numPorts);
    std::map<std::uint64_t, Counts> extentsOfPorts;
    auto row = flat.begin();
    for (std::uint64_t k = 0; k < state_->numPorts; ++k, row += width) {
        const auto used = static_cast<std::ptrdiff_t>(state_->ports[k].extents.size());
        if (used > width || std::any_of(row + used, row + width, [](std::uint64_t extent) { return extent != 1; }))
            throw Error(errors::InvalidMaxDimensions);
        extentsOfPorts[k] = Counts(row, row + used);
    }
    state_->reshape(extentsOfPorts);
}

std::vector<int> TimeBuffer::GetMaxDimensions(std::uint64_t port) const
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return {};
    state_->requirePort(port);
    std::vector<int> ints;
    for (const std::uint64_t extent : state_->ports[port].extents)
        ints.push_back(static_cast<int>(std::min<std::uint64_t>(extent, std::numeric_limits<int>::max())));
    return ints;
}

HostArray* TimeBuffer::GetMaxDimensions() const
{
    const Lock lock(*state_);
    std::size_t width = 0;
    for (const State::Port& port : state_->ports)
        width = std::max(width, port.extents.size());
    const std::uint64_t rows = state_->ports.size();
    HostArrayPtr matrix(createDoubleMatrix(rows, width, HostComplexity::real));
    for (std::uint64_t k = 0; k < rows; ++k) {
        const Counts& extents = state_->ports[k].extents;
        for (std::size_t i = 0; i < width; ++i)
            getRealData(matrix.get())[k + i * rows] = i < extents.size() ? static_cast<double>(extents[i]) : 1.0;
    }
    return matrix.release();
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

} // namespace tracery
