#include "buffers/TimeBufferState.h"
#include "support/timeSpacing.h"

#include <tracery/TimeBuffer.h>

#include <limits>
#include <new>

namespace tracery {

namespace {

/// Steps copied out of a port's rings; turned into arrays once the lock is released.
struct CopiedSteps {
    std::uint64_t count;
    std::uint64_t elementsPerStep;
    HostDoubles times;
    HostDoubles real;
    HostDoubles imag;

    HostArrayPtr takeTimes() { return HostArrayPtr(adoptDoubleMatrix(1, count, std::move(times), nullptr)); }
    HostArrayPtr takeValues()
    {
        return HostArrayPtr(adoptDoubleMatrix(elementsPerStep, count, std::move(real), std::move(imag)));
    }
};

template <class Range>
CopiedSteps copySteps(const Ring& times, std::uint64_t elementsPerStep, const Ring& real, const Ring* imag,
                      const Range& range)
{
    const std::uint64_t count = range.count();
    const auto copy = [&](const Ring& ring, std::uint64_t width) {
        HostDoubles out = allocateDoubles(count * width);
        if (width > 0)
            ring.view().copy(range.first * width, count * width, out.get());
        return out;
    };
    return {count, elementsPerStep, copy(times, 1), copy(real, elementsPerStep),
            imag != nullptr ? copy(*imag, elementsPerStep) : nullptr};
}

} // namespace

HostDoubles allocateDoubles(std::uint64_t count)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, sizeof(double), &bytes))
        throw std::bad_alloc();
    return HostDoubles(static_cast<double*>(allocateMemory(bytes)));
}

bool TimeBuffer::State::readable(std::uint64_t port) const
{
    requirePort(port);
    const Port& p = ports[port];
    const TimeLine& line = timesOf(port);
    if (p.real.steps != line.steps)
        throw Error(errors::AddValueError);
    if (line.ring.empty() || p.real.ring.empty())
        return false;
    if (!p.imag)
        return true;
    if (p.imag->steps != line.steps)
        throw Error(errors::GetComplexDataError);
    return !p.imag->ring.empty();
}

std::optional<std::uint64_t> TimeBuffer::State::startingIndex(const Ring& times, double time)
{
    const std::uint64_t index = times.view().lowerBound(time - timeSpacing(time));
    return index < times.size() ? std::optional(index) : std::nullopt;
}

std::optional<std::uint64_t> TimeBuffer::State::endingIndex(const Ring& times, double time)
{
    const std::uint64_t index = times.view().lowerBound(time + timeSpacing(time));
    return index > 0 ? std::optional(index - 1) : std::nullopt;
}

TimeBuffer::State::FoundSteps TimeBuffer::State::findSteps(std::uint64_t port, double tStart, double tEnd,
                                                           bool widen) const
{
    FoundSteps found;
    if (!readable(port))
        return found;
    const Ring& ring = timesOf(port).ring;
    found.first = startingIndex(ring, tStart);
    if (!found.first)
        return found;
    found.last = endingIndex(ring, tEnd);
    if (!found.last)
        return found;
    if (widen) {
        const Ring::View timeView = ring.view();
        if (*found.first > 0 && timeView[*found.first] > tStart)
            --*found.first;
        if (*found.last < ring.size() - 1 && tEnd > timeView[*found.last])
            ++*found.last;
    }
    return found;
}

bool TimeBuffer::GetIndexRange(std::uint64_t port, double tStart, double tEnd, bool widen, int& startIndex,
                               int& endIndex) const
{
    const auto asIndex = [](std::optional<std::uint64_t> index) {
        if (index && *index > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
            throw Error(errors::InvalidNumTimeSteps, "more steps are stored than an index can count");
        return index ? static_cast<int>(*index) : -1;
    };
    startIndex = endIndex = -1;
    const Lock lock(*state_);
    if (!state_->initialized)
        return false;
    const State::FoundSteps found = state_->findSteps(port, tStart, tEnd, widen);
    startIndex = asIndex(found.first);
    endIndex = asIndex(found.last);
    return found.range().has_value();
}

void TimeBuffer::GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value) const
{
    read(port, time, value, [port](const State& s) -> std::optional<State::StepRange> {
        if (!s.readable(port))
            return std::nullopt;
        return State::StepRange{0, s.timesOf(port).ring.size() - 1};
    });
}

void TimeBuffer::GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value, double tStart, double tEnd,
                                 bool widen) const
{
    read(port, time, value, [=](const State& s) { return s.findSteps(port, tStart, tEnd, widen).range(); });
}

template <class Find>
void TimeBuffer::read(std::uint64_t port, HostArray*& time, HostArray*& value, Find&& find) const
{
    time = nullptr;
    value = nullptr;
    std::optional<CopiedSteps> copied;
    {
        const Lock lock(*state_);
        if (!state_->initialized)
            return;
        const std::optional<State::StepRange> range = find(std::as_const(*state_));
        if (!range)
            return;
        const State::Port& p = state_->ports[port];
        copied = copySteps(state_->timesOf(port).ring, p.elementsPerStep, p.real.ring, p.imag ? &p.imag->ring : nullptr,
                           *range);
    }
    HostArrayPtr times = copied->takeTimes();
    value = copied->takeValues().release();
    time = times.release();
}

} // namespace tracery
