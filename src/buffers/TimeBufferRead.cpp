#include "buffers/TimeBufferState.h"
#include "support/timeSpacing.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <limits>
#include <new>

namespace tracery {

namespace {

HostDoubles allocateDoubles(std::uint64_t count)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, sizeof(double), &bytes))
        throw std::bad_alloc();
    return HostDoubles(static_cast<double*>(allocateMemory(bytes)));
}

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

/// Folds a value into a (minimum, maximum) pair; NaN leaves it alone.
void fold(double value, double& minimum, double& maximum)
{
    if (value < minimum)
        minimum = value;
    if (value > maximum)
        maximum = value;
}

double magnitudeOf(double re, double im) { return im == 0 ? std::abs(re) : std::hypot(re, im); }

/// Degrees.
double phaseOf(double re, double im)
{
    constexpr double kDegreesPerRadian = 57.29577951308232;
    return std::atan2(im, re) * kDegreesPerRadian;
}

/// Calls use(time, real part, imaginary part) for each sample of one channel in a range of steps.
template <class Port, class Range, class Use>
void forEachSample(const Ring::View& times, const Port& port, const Range& range, const ChannelLayout& layout,
                   Use&& use)
{
    const Ring::View real = port.real.ring.view();
    const Ring::View imag = port.imag ? port.imag->ring.view() : real;
    for (std::uint64_t i = 0; i < range.count(); ++i) {
        const double stepTime = times[range.first + i];
        std::uint64_t at = range.first * port.elementsPerStep + i * layout.stride + layout.offset;
        for (std::uint64_t j = 0; j < layout.samplesPerStep; ++j, ++at)
            use(static_cast<double>(j) * layout.sampleSpacing + stepTime, real[at], port.imag ? imag[at] : 0.0);
    }
}

} // namespace

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

void TimeBuffer::GetTimeAndValueInterleaved(std::uint64_t port, HostArray*& out, std::vector<double>& limits,
                                            double timeOffset, const double& tStart, const double& tEnd,
                                            const double& tLastDrawn, std::uint64_t channelCount, std::uint64_t channel,
                                            bool isFrameBased, double framePeriod, std::int32_t samplesPerFrame,
                                            bool widen, bool toMagnitudePhase) const
{
    out = nullptr;
    std::uint64_t columns = 0;
    HostDoubles realPart;
    HostDoubles imagPart;
    {
        const Lock lock(*state_);
        if (!state_->initialized)
            return;
        if (limits.size() != 4)
            throw Error(errors::InvalidLimits);
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
        double* realOut = realPart.get();
        double* imagOut = imagPart.get();
        forEachSample(times, p, *range, layout, [&](double time, double re, double im) {
            *realOut++ = time + timeOffset;
            *realOut++ = re;
            *imagOut++ = time + timeOffset;
            *imagOut++ = im;
        });
    }
    HostArrayPtr pairs(adoptDoubleMatrix(2, columns, std::move(realPart), std::move(imagPart)));
    double* const reals = getRealData(pairs.get());
    double* const imags = getImagData(pairs.get());
    for (std::uint64_t i = 1; i < 2 * columns; i += 2) {
        double& re = reals[i];
        double& im = imags[i];
        if (toMagnitudePhase) {
            const double magnitude = magnitudeOf(re, im);
            im = phaseOf(re, im);
            re = magnitude;
        }
        fold(re, limits[0], limits[1]);
        fold(im, limits[2], limits[3]);
    }
    out = pairs.release();
}

void TimeBuffer::GetSamplesAfter(double after, std::uint64_t port, std::uint64_t channel, bool isFrameBased,
                                 double framePeriod, SamplePart part, std::vector<double>& pairs) const
{
    pairs.clear();
    const bool polar = part == SamplePart::magnitude || part == SamplePart::phase;
    std::vector<double> imagParts; // of polar reads
    {
        const Lock lock(*state_);
        if (!state_->initialized)
            return;
        const double start = std::isinf(after) && after < 0 ? std::numeric_limits<double>::lowest() : after;
        const auto range = state_->findSteps(port, start, std::numeric_limits<double>::max(), false).range();
        if (!range)
            return;
        const State::Port& p = state_->ports[port];
        const std::uint64_t perFrame = isFrameBased && !p.extents.empty() ? p.extents[0] : 1;
        // There are steps, so no extent is 0.
        const auto layout = ChannelLayout::of(p.elementsPerStep / perFrame, channel, isFrameBased, framePeriod,
                                              perFrame, range->count(), range->count() * p.elementsPerStep);
        pairs.reserve(2 * layout.samplesPerStep * range->count());
        forEachSample(state_->timesOf(port).ring.view(), p, *range, layout, [&](double time, double re, double im) {
            if (!(time > after))
                return;
            pairs.push_back(time);
            pairs.push_back(part == SamplePart::imaginary ? im : re);
            if (polar)
                imagParts.push_back(im);
        });
    }
    for (std::size_t i = 0; i < imagParts.size(); ++i) {
        double& value = pairs[2 * i + 1];
        value = part == SamplePart::magnitude ? magnitudeOf(value, imagParts[i]) : phaseOf(value, imagParts[i]);
    }
}

} // namespace tracery
