// Reads of one channel of a port.

#include "buffers/TimeBufferState.h"
#include "support/pairKernels.h"
#include "support/timeSpacing.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <limits>

namespace tracery {

namespace {

/// Where one channel's samples lie in a range of steps, and when they were taken.
struct ChannelLayout {
    std::uint64_t samplesPerStep;
    std::uint64_t stride; ///< from one step's block to the next
    std::uint64_t offset; ///< of the channel in a block
    double sampleSpacing; ///< seconds

    /// Samples of step i start at `i * stride + offset`. The last of `steps` steps must end inside `available` values.
    /// As a block holds one channel at least, there are no more samples than values.
    static ChannelLayout of(std::uint64_t channelCount, std::uint64_t channel, bool isFrameBased, double framePeriod,
                            std::uint64_t samplesPerFrame, std::uint64_t steps, std::uint64_t available)
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
};

/// NaN leaves the range alone.
void fold(double value, ValueRange& range)
{
    if (value < range.least)
        range.least = value;
    if (value > range.greatest)
        range.greatest = value;
}

double magnitudeOf(double re, double im) { return im == 0 ? std::abs(re) : std::hypot(re, im); }

/// Degrees.
double phaseOf(double re, double im)
{
    constexpr double kDegreesPerRadian = 57.29577951308232;
    return std::atan2(im, re) * kDegreesPerRadian;
}

/// One part of one channel's samples, in a range of steps.
struct ChannelSamples {
    Ring::View times;
    Ring::View values;
    std::uint64_t firstStep;
    std::uint64_t steps;
    std::uint64_t firstValue;
    ChannelLayout layout;

    /// Calls use(run) for stretches of samples that lie side by side in the rings, `room` samples at most; it returns how
    /// much room is left.
    template <class Use>
    void forEachRun(std::uint64_t room, Use&& use) const
    {
        const std::uint64_t k = layout.samplesPerStep;
        SampleRun run;
        run.spacing = layout.sampleSpacing;
        for (std::uint64_t i = 0; i < steps && room > 0; ++i) {
            std::uint64_t at = firstValue + i * layout.stride + layout.offset;
            if (k == 1) { // many steps at once
                const std::span<const double> when = times.stretch(firstStep + i), what = values.stretch(at);
                run.times = when.data();
                run.lead = 0.0 * layout.sampleSpacing;
                run.values = what.data();
                run.stride = layout.stride;
                run.count =
                    std::min<std::uint64_t>({steps - i, room, when.size(), (what.size() - 1) / layout.stride + 1});
                i += run.count - 1;
                room = use(run);
                continue;
            }
            run.lead = times[firstStep + i];
            for (std::uint64_t j = 0; j < k && room > 0; j += run.count, at += run.count) {
                const std::span<const double> what = values.stretch(at);
                run.first = static_cast<double>(j);
                run.values = what.data();
                run.count = std::min<std::uint64_t>({k - j, room, what.size()});
                room = use(run);
            }
        }
    }

    /// The same as the formulas stand: use(time, value), which returns how much room is left.
    template <class Use>
    void forEachSample(Use&& use) const
    {
        for (std::uint64_t i = 0; i < steps; ++i) {
            const double stepTime = times[firstStep + i];
            std::uint64_t at = firstValue + i * layout.stride + layout.offset;
            for (std::uint64_t j = 0; j < layout.samplesPerStep; ++j, ++at)
                if (use(static_cast<double>(j) * layout.sampleSpacing + stepTime, values[at]) == 0)
                    return;
        }
    }

    /// Lays all samples out as pairs, and folds their values.
    void layOut(double timeOffset, ValueRange& range, std::span<double> pairs) const
    {
        double* out = pairs.data();
        const auto left = [&] { return static_cast<std::uint64_t>(pairs.data() + pairs.size() - out) / 2; };
        if constexpr (kPlainKernels)
            forEachSample([&](double time, double value) {
                *out++ = time + timeOffset;
                *out++ = value;
                fold(value, range);
                return left();
            });
        else
            forEachRun(left(), [&](SampleRun& run) {
                run.offset = timeOffset;
                out = layOutPairs(run, range, out);
                return left();
            });
    }

    /// Lays out the samples at times in (after, upTo], as many as there is room for. Returns how many those are.
    std::uint64_t layOutWithin(double after, double upTo, std::span<double> pairs) const
    {
        double* out = pairs.data();
        const auto left = [&] { return static_cast<std::uint64_t>(pairs.data() + pairs.size() - out) / 2; };
        if constexpr (kPlainKernels)
            forEachSample([&](double time, double value) {
                if (time > after && time <= upTo) {
                    *out++ = time;
                    *out++ = value;
                }
                return left();
            });
        else
            forEachRun(left(), [&](SampleRun& run) {
                run.offset = -0.0; // the one number that changes no time
                out = layOutPairsWithin(run, after, upTo, out);
                return left();
            });
        return static_cast<std::uint64_t>(out - pairs.data()) / 2;
    }
};

/// The zero that an extreme came to is the first one met, of either sign, as in a fold value by value.
void settleZero(double& extreme, double before, std::span<const double> pairs)
{
    if (extreme != 0 || before == 0)
        return;
    std::size_t i = 1;
    while (pairs[i] != 0)
        i += 2;
    extreme = pairs[i];
}

} // namespace

void TimeBuffer::GetTimeAndValueInterleaved(std::uint64_t port, HostArray*& out, std::vector<double>& limits,
                                            double timeOffset, const double& tStart, const double& tEnd,
                                            const double& tLastDrawn, std::uint64_t channelCount, std::uint64_t channel,
                                            bool isFrameBased, double framePeriod, std::int32_t samplesPerFrame,
                                            bool widen, bool toMagnitudePhase) const
{
    out = nullptr;
    std::uint64_t columns = 0;
    bool complex = false;
    HostDoubles realPart, imagPart;
    const auto pairsOf = [&columns](const HostDoubles& part) { return std::span(part.get(), 2 * columns); };
    ValueRange real{}, imag{}; // of the parts as they are stored
    {
        const Lock lock(*state_);
        if (!state_->initialized)
            return;
        if (limits.size() != 4)
            throw Error(errors::InvalidLimits);
        real = {limits[0], limits[1]};
        imag = {limits[2], limits[3]};
        std::optional<State::StepRange> range = state_->findSteps(port, tStart, tEnd, widen).range();
        if (!range)
            return;
        const Ring::View times = state_->timesOf(port).ring.view();
        const double firstTime = times[range->first];
        if (tLastDrawn > firstTime || std::abs(firstTime - tLastDrawn) < timeSpacing(tLastDrawn))
            ++range->first;
        const State::Port& p = state_->ports[port];
        if (range->count() == 0)
            return;
        const ChannelLayout layout = ChannelLayout::of(channelCount, channel, isFrameBased, framePeriod,
                                                       static_cast<std::uint64_t>(std::max(samplesPerFrame, 0)),
                                                       range->count(), range->count() * p.elementsPerStep);

        columns = layout.samplesPerStep * range->count();
        realPart = allocateDoubles(2 * columns);
        imagPart = allocateDoubles(2 * columns);
        complex = p.complex();
        ChannelSamples samples{
            times, p.real.ring.view(), range->first, range->count(), range->first * p.elementsPerStep, layout};
        samples.layOut(timeOffset, real, pairsOf(realPart));
        if (complex) {
            samples.values = p.imag->ring.view();
            samples.layOut(timeOffset, imag, pairsOf(imagPart));
        }
    }
    const std::span<double> reals = pairsOf(realPart), imags = pairsOf(imagPart);
    if (!complex) {
        for (std::size_t i = 0; i < reals.size(); i += 2) {
            imags[i] = reals[i];
            imags[i + 1] = 0.0;
        }
        fold(0.0, imag);
    }
    ValueRange ranges[] = {{limits[0], limits[1]}, {limits[2], limits[3]}};
    if (toMagnitudePhase) {
        for (std::size_t i = 1; i < reals.size(); i += 2) {
            const double magnitude = magnitudeOf(reals[i], imags[i]);
            imags[i] = phaseOf(reals[i], imags[i]);
            reals[i] = magnitude;
            fold(magnitude, ranges[0]);
            fold(imags[i], ranges[1]);
        }
    } else {
        ranges[0] = real;
        ranges[1] = imag;
        settleZero(ranges[0].least, limits[0], reals);
        settleZero(ranges[0].greatest, limits[1], reals);
        settleZero(ranges[1].least, limits[2], imags);
        settleZero(ranges[1].greatest, limits[3], imags);
    }
    out = adoptDoubleMatrix(2, columns, std::move(realPart), std::move(imagPart));
    limits = {ranges[0].least, ranges[0].greatest, ranges[1].least, ranges[1].greatest};
}

template <class Find, class MakeRoom>
std::uint64_t TimeBuffer::readChannel(const ChannelRead& read, double after, double upTo, Find&& find,
                                      MakeRoom&& makeRoom) const
{
    const bool polar = read.part == SamplePart::magnitude || read.part == SamplePart::phase;
    bool complex = false;
    std::span<double> pairs;
    std::vector<double> imagPairs; // of polar reads
    std::uint64_t count = 0;
    {
        const Lock lock(*state_);
        if (!state_->initialized)
            return 0;
        const double start = std::isinf(after) && after < 0 ? std::numeric_limits<double>::lowest() : after;
        const std::optional<State::StepRange> range = find(std::as_const(*state_), start);
        if (!range)
            return 0;
        const State::Port& p = state_->ports[read.port];
        const std::uint64_t perFrame = read.isFrameBased && !p.extents.empty() ? p.extents[0] : 1;
        // There are steps, so no extent is 0.
        const auto layout =
            ChannelLayout::of(p.elementsPerStep / perFrame, read.channel, read.isFrameBased, read.framePeriod, perFrame,
                              range->count(), range->count() * p.elementsPerStep);
        pairs = makeRoom(layout.samplesPerStep * range->count());
        complex = p.complex();
        ChannelSamples samples{state_->timesOf(read.port).ring.view(),
                               p.real.ring.view(),
                               range->first,
                               range->count(),
                               range->first * p.elementsPerStep,
                               layout};
        if (read.part == SamplePart::imaginary && complex)
            samples.values = p.imag->ring.view();
        count = samples.layOutWithin(after, upTo, pairs);
        if (polar && complex) {
            samples.values = p.imag->ring.view();
            imagPairs.resize(pairs.size());
            samples.layOutWithin(after, upTo, imagPairs);
        }
    }
    if (polar || (read.part == SamplePart::imaginary && !complex))
        for (std::size_t i = 1; i < 2 * count; i += 2) {
            const double im = complex ? imagPairs[i] : 0.0;
            pairs[i] = read.part == SamplePart::imaginary   ? im
                       : read.part == SamplePart::magnitude ? magnitudeOf(pairs[i], im)
                                                            : phaseOf(pairs[i], im);
        }
    return count;
}

void TimeBuffer::GetSamplesAfter(double after, std::uint64_t port, std::uint64_t channel, bool isFrameBased,
                                 double framePeriod, SamplePart part, std::vector<double>& pairs) const
{
    struct Cut { // whatever happens; what stays is not filled anew
        std::vector<double>& pairs;
        std::uint64_t samples = 0;
        ~Cut() { pairs.resize(2 * samples); }
    } cut{pairs};
    cut.samples = readChannel(
        {port, channel, isFrameBased, framePeriod, part}, after, std::numeric_limits<double>::infinity(),
        [port](const State& s, double start) {
            return s.findSteps(port, start, std::numeric_limits<double>::max(), false).range();
        },
        [&pairs](std::uint64_t samples) {
            if (2 * samples > pairs.size()) {
                pairs.clear(); // nothing to take along
                pairs.resize(2 * samples);
            }
            return std::span(pairs).first(2 * samples);
        });
}

std::uint64_t TimeBuffer::GetSamplesBetween(double after, double upTo, std::uint64_t port, std::uint64_t channel,
                                            bool isFrameBased, double framePeriod, SamplePart part,
                                            std::span<double> pairs) const
{
    pairs = pairs.first(pairs.size() / 2 * 2);
    std::uint64_t count = readChannel(
        {port, channel, isFrameBased, framePeriod, part}, after, upTo,
        [=](const State& s, double start) -> std::optional<State::StepRange> {
            if (!s.readable(port))
                return std::nullopt;
            const Ring& times = s.timesOf(port).ring;
            std::uint64_t first = State::startingIndex(times, start).value_or(times.size());
            if (isFrameBased && first > 0)
                --first; // its later samples may be after `start`
            const auto last = State::endingIndex(times, std::min(upTo, std::numeric_limits<double>::max()));
            return last && first <= *last ? std::optional(State::StepRange{first, *last}) : std::nullopt;
        },
        [pairs](std::uint64_t) { return pairs; });
    if (2 * count < pairs.size() || count == 0)
        return count;
    const double end = pairs[2 * count - 2];
    std::uint64_t before = count;
    while (before > 0 && pairs[2 * before - 2] == end)
        --before;
    return before > 0 ? before : count;
}

} // namespace tracery
