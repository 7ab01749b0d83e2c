#include "buffers/TimeBufferState.h"

#include <tracery/TimeBuffer.h>

namespace tracery {

namespace {

using Steps = std::uint64_t;

} // namespace

void TimeBuffer::Clear()
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return;
    ++state_->clearings;
    for (State::TimeLine& line : state_->times)
        line.steps = 0;
    for (State::Port& port : state_->ports)
        port.forEachPart([](State::ValueLine& line) { line.steps = 0; });
    state_->forEachRing([](Ring& ring) { ring.clear(); });
}

void TimeBuffer::ClearBackTo(double time)
{
    const Lock lock(*state_);
    State& s = *state_;
    if (!s.initialized)
        return;
    ++s.clearings;
    Steps newer = 0;
    Steps stepsBefore = 0; // of the time line that decides
    for (std::uint64_t k = 0; k < s.numPorts; ++k) {
        if (k < s.times.size()) {
            State::TimeLine& line = s.times[k];
            const std::optional<std::uint64_t> end = State::endingIndex(line.ring, time);
            newer = line.ring.size() - (end ? *end + 1 : 0);
            stepsBefore = line.steps;
            line.ring.dropNewest(newer);
            line.steps -= newer;
        }
        State::Port& port = s.ports[k];
        port.forEachPart([&](State::ValueLine& line) {
            // The newest times whose values are still to come go first; only the rest takes values along.
            const Steps lag = stepsBefore - line.steps;
            const Steps dropped = newer - std::min(newer, lag);
            line.ring.dropNewest(dropped * port.elementsPerStep);
            line.steps -= dropped;
        });
        State::dropValuesWithoutTimes(port, s.timesOf(k));
    }
    s.forEachRing([](Ring& ring) { ring.giveBack(); });
}

void TimeBuffer::clearUptoLastTime()
{
    const Lock lock(*state_);
    State& s = *state_;
    if (!s.initialized)
        return;
    ++s.clearings;
    bool skip = false;
    Steps stepsBefore = 0;
    for (std::uint64_t k = 0; k < s.numPorts; ++k) {
        if (k < s.times.size()) {
            State::TimeLine& line = s.times[k];
            // A port with exactly two times keeps both on purpose: displays start from such a pair.
            skip = line.ring.empty() || line.ring.size() == 2;
            stepsBefore = line.steps;
            if (!skip) {
                line.ring.keepNewest(1);
                line.steps = 1;
            }
        }
        if (skip)
            continue;
        State::Port& port = s.ports[k];
        port.forEachPart([&](State::ValueLine& line) {
            const Steps kept = line.steps == stepsBefore ? 1 : 0; // 0: the newest time's value is still to come
            line.ring.keepNewest(kept * port.elementsPerStep);
            line.steps = kept;
        });
    }
    s.forEachRing([](Ring& ring) { ring.giveBack(); });
}

bool TimeBuffer::GetIsFull() const
{
    const Lock lock(*state_);
    return std::any_of(state_->times.begin(), state_->times.end(),
                       [](const State::TimeLine& line) { return line.ring.size() >= line.ring.capacity(); });
}

bool TimeBuffer::GetIsReady() const
{
    const Lock lock(*state_);
    if (!state_->initialized)
        return false;
    for (std::uint64_t k = 0; k < state_->numPorts; ++k) {
        const State::Port& port = state_->ports[k];
        const std::uint64_t steps = state_->timesOf(k).steps;
        if (port.real.steps != steps || (port.imag && port.imag->steps != steps))
            return false;
    }
    return true;
}

double TimeBuffer::GetLastTime() const
{
    const Lock lock(*state_);
    double last = -std::numeric_limits<double>::infinity();
    for (const State::TimeLine& line : state_->times)
        if (!line.ring.empty())
            last = std::max(last, line.ring.newest());
    return last;
}

} // namespace tracery
