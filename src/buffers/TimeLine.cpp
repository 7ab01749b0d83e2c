#include "buffers/TimeLine.h"

#include "support/timeSpacing.h"

namespace tracery {

std::optional<std::uint64_t> TimeLine::startingIndex(double time) const
{
    const std::uint64_t index = ring.view().lowerBound(time - timeSpacing(time));
    return index < ring.size() ? std::optional(index) : std::nullopt;
}

std::optional<std::uint64_t> TimeLine::endingIndex(double time) const
{
    const std::uint64_t index = ring.view().lowerBound(time + timeSpacing(time));
    return index > 0 ? std::optional(index - 1) : std::nullopt;
}

FoundSteps TimeLine::find(double tStart, double tEnd, bool widen) const
{
    FoundSteps found;
    found.first = startingIndex(tStart);
    if (!found.first)
        return found;
    found.last = endingIndex(tEnd);
    if (!found.last || !widen)
        return found;
    const Ring::View times = ring.view();
    if (*found.first > 0 && times[*found.first] > tStart)
        --*found.first;
    if (*found.last < ring.size() - 1 && tEnd > times[*found.last])
        ++*found.last;
    return found;
}

TimeLine::Drop TimeLine::dropAfter(double time) noexcept
{
    const std::optional<std::uint64_t> end = endingIndex(time);
    const Drop drop{ring.size() - (end ? *end + 1 : 0), steps};
    ring.dropNewest(drop.newest);
    steps -= drop.newest;
    return drop;
}

} // namespace tracery
