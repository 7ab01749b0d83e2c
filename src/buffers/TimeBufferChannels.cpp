// Reads of one channel of a port.

#include "buffers/ChannelRead.h"
#include "buffers/TimeBufferState.h"
#include "support/timeSpacing.h"

#include <tracery/TimeBuffer.h>
#include <tracery/host/Error.h>

#include <cmath>
#include <limits>

namespace tracery {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

/// What a trigger read goes from: before all times for -inf, which has no spacing.
double beginningFrom(double after)
{
    return std::isinf(after) && after < 0 ? std::numeric_limits<double>::lowest() : after;
}

/// A channel of a port whose frames are as long as its first extent.
ChannelLayout layoutOf(const PortRings& rings, std::uint64_t channel, bool isFrameBased, double framePeriod,
                       std::uint64_t steps)
{
    const StepLayout& layout = rings.layout();
    const std::uint64_t perFrame = isFrameBased && !layout.extents().empty() ? layout.extents()[0] : 1;
    // There are steps, so no extent is 0.
    return ChannelLayout::of(layout.elements() / perFrame, channel, isFrameBased, framePeriod, perFrame, steps,
                             steps * layout.elements());
}

} // namespace

void TimeBuffer::GetTimeAndValueInterleaved(std::uint64_t port, HostArray*& out, std::vector<double>& limits,
                                            double timeOffset, const double& tStart, const double& tEnd,
                                            const double& tLastDrawn, std::uint64_t channelCount, std::uint64_t channel,
                                            bool isFrameBased, double framePeriod, std::int32_t samplesPerFrame,
                                            bool widen, bool toMagnitudePhase) const
{
    out = nullptr;
    auto drawn = state_->onPort(port, [&](const Ports&, const Port& one) -> std::optional<DisplayPairs> {
        if (limits.size() != 4)
            throw Error(errors::InvalidLimits);
        std::optional<StepRange> range = one.rings.find(tStart, tEnd, widen).range();
        if (!range)
            return std::nullopt;
        const StepsView steps = one.rings.view();
        const double firstTime = steps.times[range->first];
        if (tLastDrawn > firstTime || std::abs(firstTime - tLastDrawn) < timeSpacing(tLastDrawn))
            ++range->first;
        if (range->count() == 0)
            return std::nullopt;
        const auto perFrame = static_cast<std::uint64_t>(std::max(samplesPerFrame, 0));
        const auto layout = ChannelLayout::of(channelCount, channel, isFrameBased, framePeriod, perFrame,
                                              range->count(), range->count() * steps.width);
        std::optional<DisplayPairs> pairs(std::in_place, std::span<const double, 4>(limits));
        pairs->layOut(ChannelRead(steps, *range, layout), timeOffset);
        return pairs;
    });
    if (!drawn)
        return;
    drawn->finish(toMagnitudePhase);
    std::vector<double> widened = drawn->limits();
    out = drawn->take();
    limits.swap(widened);
}

void TimeBuffer::GetSamplesAfter(double after, std::uint64_t port, std::uint64_t channel, bool isFrameBased,
                                 double framePeriod, SamplePart part, std::vector<double>& pairs) const
{
    struct Cut { // whatever happens; what stays is not filled anew
        std::vector<double>& pairs;
        std::uint64_t samples = 0;
        ~Cut() { pairs.resize(2 * samples); }
    } cut{pairs};
    PartPairs wanted(part);
    state_->onPort(port, [&](const Ports&, const Port& one) {
        const auto range = one.rings.find(beginningFrom(after), kLargest, false).range();
        if (!range)
            return;
        const StepsView steps = one.rings.view();
        const ChannelRead read(steps, *range, layoutOf(one.rings, channel, isFrameBased, framePeriod, range->count()));
        if (2 * read.samples() > pairs.size()) {
            pairs.clear(); // nothing to take along
            pairs.resize(2 * read.samples());
        }
        wanted.layOut(read, after, std::numeric_limits<double>::infinity(), std::span(pairs).first(2 * read.samples()));
    });
    cut.samples = wanted.finish();
}

std::uint64_t TimeBuffer::GetSamplesBetween(double after, double upTo, std::uint64_t port, std::uint64_t channel,
                                            bool isFrameBased, double framePeriod, SamplePart part,
                                            std::span<double> pairs) const
{
    pairs = pairs.first(pairs.size() / 2 * 2);
    PartPairs wanted(part);
    state_->onPort(port, [&](const Ports&, const Port& one) {
        if (!one.rings.readable())
            return;
        const TimeLine& times = one.rings.times();
        std::uint64_t first = times.startingIndex(beginningFrom(after)).value_or(times.ring.size());
        if (isFrameBased && first > 0)
            --first; // its later samples may be after `after`
        const auto last = times.endingIndex(std::min(upTo, kLargest));
        if (!last || first > *last)
            return;
        const StepRange range{first, *last};
        const StepsView steps = one.rings.view();
        wanted.layOut(ChannelRead(steps, range, layoutOf(one.rings, channel, isFrameBased, framePeriod, range.count())),
                      after, upTo, pairs);
    });
    const std::uint64_t count = wanted.finish();
    if (2 * count < pairs.size() || count == 0)
        return count;
    const double end = pairs[2 * count - 2];
    std::uint64_t before = count;
    while (before > 0 && pairs[2 * before - 2] == end)
        --before;
    return before > 0 ? before : count;
}

} // namespace tracery
