// Reads of all channels of a port.

#include "buffers/TimeBufferState.h"
#include "buffers/allocateDoubles.h"

#include <tracery/TimeBuffer.h>
#include <tracery/host/Error.h>

#include <limits>

namespace tracery {

namespace {

/// Steps copied out of a port's rings; turned into arrays once the lock is released.
class CopiedSteps {
public:
    CopiedSteps(const StepsView& steps, const StepRange& range)
        : count_(range.count()), width_(steps.width), times_(copyOf(steps.times, range, 1)),
          real_(copyOf(steps.real, range, width_)), imag_(steps.imag ? copyOf(*steps.imag, range, width_) : nullptr)
    {}
    void give(HostArray*& time, HostArray*& value)
    {
        HostArrayPtr times(adoptDoubleMatrix(1, count_, std::move(times_), nullptr));
        value = adoptDoubleMatrix(width_, count_, std::move(real_), std::move(imag_));
        time = times.release();
    }

private:
    static HostDoubles copyOf(const Ring::View& ring, const StepRange& range, std::uint64_t width)
    {
        HostDoubles out = allocateDoubles(range.count() * width);
        if (width > 0)
            ring.copy(range.first * width, range.count() * width, out.get());
        return out;
    }

    std::uint64_t count_;
    std::uint64_t width_;
    HostDoubles times_;
    HostDoubles real_;
    HostDoubles imag_;
};

/// find(rings)  gives the steps to read
template <class State, class Find>
void readSteps(State& state, std::uint64_t port, HostArray*& time, HostArray*& value, Find&& find)
{
    time = nullptr;
    value = nullptr;
    auto copied = state.onPort(port, [&find](const Ports&, const Port& one) -> std::optional<CopiedSteps> {
        const std::optional<StepRange> range = find(one.rings);
        return range ? std::optional<CopiedSteps>(std::in_place, one.rings.view(), *range) : std::nullopt;
    });
    if (copied)
        copied->give(time, value);
}

void copyRing(const Ring::View& ring, std::uint64_t first, std::uint64_t count, std::vector<double>& out)
{
    out.resize(count);
    if (count > 0)
        ring.copy(first, count, out.data());
}

} // namespace

bool TimeBuffer::GetIndexRange(std::uint64_t port, double tStart, double tEnd, bool widen, int& startIndex,
                               int& endIndex) const
{
    const auto asIndex = [](std::optional<std::uint64_t> index) {
        if (index && *index > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
            throw Error(errors::InvalidNumTimeSteps, "more steps are stored than an index can count");
        return index ? static_cast<int>(*index) : -1;
    };
    startIndex = endIndex = -1;
    const auto found =
        state_->onPort(port, [=](const Ports&, const Port& one) { return one.rings.find(tStart, tEnd, widen); });
    startIndex = asIndex(found.first);
    endIndex = asIndex(found.last);
    return found.range().has_value();
}

void TimeBuffer::GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value) const
{
    readSteps(*state_, port, time, value, [](const PortRings& rings) { return rings.all(); });
}

void TimeBuffer::GetTimeAndValue(std::uint64_t port, HostArray*& time, HostArray*& value, double tStart, double tEnd,
                                 bool widen) const
{
    readSteps(*state_, port, time, value,
              [=](const PortRings& rings) { return rings.find(tStart, tEnd, widen).range(); });
}

std::uint64_t TimeBuffer::readAfter(std::uint64_t port, ReadPosition& position, ReadSteps& steps) const
{
    struct EmptyUnlessKept {
        ReadSteps& steps;
        bool kept = false;
        ~EmptyUnlessKept()
        {
            for (std::vector<double>* part : {&steps.times, &steps.real, &steps.imag})
                if (!kept)
                    part->clear();
        }
    } guard{steps};
    return state_->onPort(port, [&](const Ports&, const Port& one) -> std::uint64_t {
        if (!one.rings.readable())
            return 0;
        const StepsView view = one.rings.view();
        const std::uint64_t written = one.rings.times().steps, stored = one.rings.times().ring.size();
        const std::uint64_t oldest = written - stored, clearings = one.rings.times().clearings;
        const bool goesOn = position.clearings == clearings && position.steps <= written;
        const std::uint64_t from = goesOn ? std::max(position.steps, oldest) : oldest;
        const auto copyPart = [&](const Ring::View& ring, std::uint64_t width, std::vector<double>& out) {
            copyRing(ring, (from - oldest) * width, (written - from) * width, out);
        };
        copyPart(view.times, 1, steps.times);
        copyPart(view.real, view.width, steps.real);
        if (view.imag)
            copyPart(*view.imag, view.width, steps.imag);
        else
            steps.imag.clear();
        guard.kept = true;
        const std::uint64_t lost = goesOn ? from - position.steps : 0;
        position = {written, clearings};
        return lost;
    });
}

} // namespace tracery
