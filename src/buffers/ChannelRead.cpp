#include "buffers/ChannelRead.h"

#include "support/vectorUnit.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <cmath>

namespace tracery {

ChannelLayout ChannelLayout::of(std::uint64_t channelCount, std::uint64_t channel, bool isFrameBased,
                                double framePeriod, std::uint64_t samplesPerFrame, std::uint64_t steps,
                                std::uint64_t available)
{
    const std::uint64_t k = isFrameBased ? samplesPerFrame : 1;
    if (k == 0 || channelCount == 0)
        throw Error(errors::InvalidChannelID, "a frame needs at least one sample, a step at least one channel");
    const double spacing = isFrameBased && !std::isinf(framePeriod) ? framePeriod / static_cast<double>(k) : 0.0;
    ChannelLayout layout{k, 0, 0, spacing};
    std::uint64_t end = 0;
    bool overflow = __builtin_mul_overflow(k, channelCount, &layout.stride);
    overflow |= __builtin_mul_overflow(k, channel, &layout.offset);
    overflow |= __builtin_mul_overflow(steps - 1, layout.stride, &end);
    overflow |= __builtin_add_overflow(end, layout.offset, &end);
    overflow |= __builtin_add_overflow(end, k, &end);
    if (overflow || end > available)
        throw Error(errors::InvalidChannelID);
    return layout;
}

/// Calls use(run) for stretches of samples that lie side by side in the rings, `room` samples at most; it returns how
/// much room is left.
template <class Use>
void ChannelRead::forEachRun(const Ring::View& values, std::uint64_t room, Use&& use) const
{
    const std::uint64_t k = layout_.samplesPerStep, steps = range_.count();
    const std::uint64_t firstValue = range_.first * steps_.width + layout_.offset;
    SampleRun run;
    run.spacing = layout_.sampleSpacing;
    for (std::uint64_t i = 0; i < steps && room > 0; ++i) {
        std::uint64_t at = firstValue + i * layout_.stride;
        if (k == 1) { // many steps at once
            const std::span<const double> when = steps_.times.stretch(range_.first + i), what = values.stretch(at);
            run.times = when.data();
            run.lead = 0.0 * layout_.sampleSpacing;
            run.values = {
                what.data(),
                std::min<std::uint64_t>({steps - i, room, when.size(), (what.size() - 1) / layout_.stride + 1}),
                static_cast<std::ptrdiff_t>(layout_.stride)};
            i += run.values.count - 1;
            room = use(run);
            continue;
        }
        run.lead = steps_.times[range_.first + i];
        for (std::uint64_t j = 0; j < k && room > 0; j += run.values.count, at += run.values.count) {
            const std::span<const double> what = values.stretch(at);
            run.first = static_cast<double>(j);
            run.values = {what.data(), std::min<std::uint64_t>({k - j, room, what.size()})};
            room = use(run);
        }
    }
}

/// The same as the formulas stand: use(time, value), which returns how much room is left.
template <class Use>
void ChannelRead::forEachSample(const Ring::View& values, Use&& use) const
{
    for (std::uint64_t i = 0; i < range_.count(); ++i) {
        const double stepTime = steps_.times[range_.first + i];
        std::uint64_t at = range_.first * steps_.width + i * layout_.stride + layout_.offset;
        for (std::uint64_t j = 0; j < layout_.samplesPerStep; ++j, ++at)
            if (use(static_cast<double>(j) * layout_.sampleSpacing + stepTime, values[at]) == 0)
                return;
    }
}

void ChannelRead::layOut(const Ring::View& values, double timeOffset, ValueRange& range, std::span<double> pairs) const
{
    double* out = pairs.data();
    const auto left = [&] { return static_cast<std::uint64_t>(pairs.data() + pairs.size() - out) / 2; };
    if constexpr (kPlainKernels)
        forEachSample(values, [&](double time, double value) {
            *out++ = time + timeOffset;
            *out++ = value;
            range.widen(value);
            return left();
        });
    else
        forEachRun(values, left(), [&](SampleRun& run) {
            run.offset = timeOffset;
            out = layOutPairs(run, range, out);
            return left();
        });
}

std::uint64_t ChannelRead::layOutWithin(const Ring::View& values, double after, double upTo,
                                        std::span<double> pairs) const
{
    double* out = pairs.data();
    const auto left = [&] { return static_cast<std::uint64_t>(pairs.data() + pairs.size() - out) / 2; };
    if constexpr (kPlainKernels)
        forEachSample(values, [&](double time, double value) {
            if (time > after && time <= upTo) {
                *out++ = time;
                *out++ = value;
            }
            return left();
        });
    else
        forEachRun(values, left(), [&](SampleRun& run) {
            run.offset = -0.0; // the one number that changes no time
            out = layOutPairsWithin(run, after, upTo, out);
            return left();
        });
    return static_cast<std::uint64_t>(out - pairs.data()) / 2;
}

} // namespace tracery
