// What a buffer says of itself.

#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

#include <algorithm>
#include <limits>

namespace tracery {

bool TimeBuffer::isInitialized() const
{
    return state_->onBuffer([](const Ports& all) { return all.initialized; });
}

TimeBuffer::Counts TimeBuffer::GetMaxNumTimeSteps() const
{
    return state_->onBuffer([](const Ports& all) { return all.maxNumTimeSteps; });
}

std::uint64_t TimeBuffer::GetNPorts() const
{
    return state_->onBuffer([](const Ports& all) { return all.numPorts; });
}

TimeBuffer::Counts TimeBuffer::GetNDim() const
{
    return state_->onBuffer([](const Ports& all) {
        Counts counts;
        for (const Port& port : all.ports)
            counts.push_back(port.rings.layout().extents().size());
        return counts;
    });
}

BufferType TimeBuffer::GetBufferType() const
{
    return state_->onBuffer([](const Ports& all) { return all.type; });
}

std::string TimeBuffer::GetType() const
{
    return GetBufferType() == BufferType::SingleRate ? "SingleRate" : "MultipleRate";
}

bool TimeBuffer::getIsThreadSafe() const { return state_->threadSafe; }

std::vector<int> TimeBuffer::GetMaxDimensions(std::uint64_t port) const
{
    return state_->onPort(port, [](const Ports&, const Port& one) {
        std::vector<int> ints;
        for (const std::uint64_t extent : one.rings.layout().extents())
            ints.push_back(static_cast<int>(std::min<std::uint64_t>(extent, std::numeric_limits<int>::max())));
        return ints;
    });
}

HostArray* TimeBuffer::GetMaxDimensions() const
{
    return state_->onBuffer([](const Ports& all) {
        std::size_t width = 0;
        for (const Port& port : all.ports)
            width = std::max(width, port.rings.layout().extents().size());
        const std::uint64_t rows = all.ports.size();
        HostArrayPtr matrix(createDoubleMatrix(rows, width, HostComplexity::real));
        for (std::uint64_t k = 0; k < rows; ++k) {
            const Counts& extents = all.ports[k].rings.layout().extents();
            for (std::size_t i = 0; i < width; ++i)
                getRealData(matrix.get())[k + i * rows] = i < extents.size() ? static_cast<double>(extents[i]) : 1.0;
        }
        return matrix.release();
    });
}

HostArray* TimeBuffer::GetComplexityFlags() const
{
    return state_->onBuffer([](const Ports& all) {
        const std::uint64_t extents[] = {all.ports.size(), 1};
        HostArrayPtr flags(createLogicalArray(2, extents));
        for (std::uint64_t k = 0; k < all.ports.size(); ++k)
            getLogicals(flags.get())[k] = all.ports[k].rings.complex() ? 1 : 0;
        return flags.release();
    });
}

std::vector<double> TimeBuffer::GetSampleTimes() const
{
    return state_->onBuffer([](const Ports& all) { return all.sampleTimes; });
}

std::vector<double> TimeBuffer::GetSampleTimes(std::uint64_t port) const
{
    return state_->onBuffer([port](const Ports& all) {
        if (!all.initialized && port >= all.numPorts)
            return std::vector<double>();
        all.requirePort(port);
        return std::vector{all.sampleTimes[2 * port], all.sampleTimes[2 * port + 1]};
    });
}

std::vector<bool> TimeBuffer::getIsLinearInterpolation() const
{
    return state_->onBuffer([](const Ports& all) {
        std::vector<bool> flags;
        for (const Port& port : all.ports)
            flags.push_back(port.linear);
        return flags;
    });
}

bool TimeBuffer::dataHasNaNPattern() const
{
    return state_->onBuffer([](const Ports& all) { return all.hasNaNPattern; });
}

bool TimeBuffer::GetIsFull() const
{
    return state_->onBuffer([](Ports& all) {
        bool full = false;
        all.forEachTimeLine([&full](const TimeLine& line, auto) { full |= line.ring.size() >= line.ring.capacity(); });
        return full;
    });
}

bool TimeBuffer::GetIsReady() const
{
    return state_->whenSetUp([](const Ports& all) {
        return std::all_of(all.ports.begin(), all.ports.end(), [](const Port& port) { return port.rings.isLevel(); });
    });
}

double TimeBuffer::GetLastTime() const
{
    return state_->onBuffer([](Ports& all) {
        double last = -std::numeric_limits<double>::infinity();
        all.forEachTimeLine([&last](const TimeLine& line, auto) {
            if (!line.ring.empty())
                last = std::max(last, line.ring.newest());
        });
        return last;
    });
}

} // namespace tracery
