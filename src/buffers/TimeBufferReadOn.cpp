#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

namespace tracery {

namespace {

void copyRing(const Ring& ring, std::uint64_t first, std::uint64_t count, std::vector<double>& out)
{
    out.resize(count);
    if (count > 0)
        ring.view().copy(first, count, out.data());
}

} // namespace

std::uint64_t TimeBuffer::readAfter(std::uint64_t port, ReadPosition& position, ReadSteps& steps) const
{
    const auto none = [&steps] {
        for (std::vector<double>* part : {&steps.times, &steps.real, &steps.imag})
            part->clear();
    };
    const Lock lock(*state_);
    if (!state_->initialized || !state_->readable(port)) {
        none();
        return 0;
    }
    const State::TimeLine& line = state_->timesOf(port);
    const State::Port& p = state_->ports[port];
    const std::uint64_t stored = line.ring.size();
    const std::uint64_t oldest = line.steps - stored;
    const bool goesOn = position.clearings == state_->clearings && position.steps <= line.steps;
    const std::uint64_t from = goesOn ? std::max(position.steps, oldest) : oldest;
    const std::uint64_t first = from - oldest;
    const std::uint64_t width = p.elementsPerStep;
    try {
        copyRing(line.ring, first, stored - first, steps.times);
        copyRing(p.real.ring, first * width, (stored - first) * width, steps.real);
        if (p.imag)
            copyRing(p.imag->ring, first * width, (stored - first) * width, steps.imag);
        else
            steps.imag.clear();
    } catch (...) {
        none();
        throw;
    }
    const std::uint64_t lost = goesOn ? from - position.steps : 0;
    position = {line.steps, state_->clearings};
    return lost;
}

} // namespace tracery
