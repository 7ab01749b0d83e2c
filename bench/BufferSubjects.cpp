// Buffers at work. Compiled twice, as Subjects.cpp.

#include "Subjects.h"

#include <tracery/SpectrumBuffer.h>
#include <tracery/TimeBuffer.h>
#include <tracery/host/Arrays.h>

#include <boost/circular_buffer.hpp>

#include <limits>
#include <memory>
#include <vector>

namespace tracery::bench {

namespace {

/// A full buffer of one port whose steps have `width` values.
struct FullBuffer {
    FullBuffer(std::uint64_t width, std::uint64_t steps)
        : dims{width, 1}, block(width, 1.0), buffer({steps}, {width}, 1)
    {
        while (time < static_cast<double>(steps) + static_cast<double>(steps / 3)) // the oldest one is inside
            addStep();
    }
    void addStep()
    {
        buffer.AddTime(&time, 1, 0);
        buffer.AddValue(block.data(), dims, 0, HostComplexity::real);
        time += 1;
    }

    double time = 0;
    TimeBuffer::Counts dims;
    std::vector<double> block;
    TimeBuffer buffer;
};

} // namespace

std::function<void()> pushBacks(std::size_t count, std::size_t capacity)
{
    return [count, ring = std::make_shared<boost::circular_buffer<double>>(capacity, 0.0)] {
        for (std::size_t i = 0; i < count; ++i)
            ring->push_back(static_cast<double>(i));
    };
}

std::function<void()> stepWrites(std::size_t width, std::size_t steps)
{
    return [full = std::make_shared<FullBuffer>(width, steps)] { full->addStep(); };
}

std::function<void()> arrayWrites(std::size_t width, std::size_t steps)
{
    const std::shared_ptr<HostArray> time = makeScalar(0);
    const std::shared_ptr<HostArray> values = makeMatrix(width, 1);
    return [=, full = std::make_shared<FullBuffer>(width, steps)] {
        *getRealData(time.get()) = full->time;
        full->buffer.addTimeAndValue(time.get(), values.get(), 0, false);
        full->time += 1;
    };
}

std::function<void()> wholeRead(std::size_t width, std::size_t steps)
{
    return [full = std::make_shared<FullBuffer>(width, steps)] {
        outputsOf<2>([&](auto&... out) { full->buffer.GetTimeAndValue(0, out...); });
    };
}

std::function<void()> displayRead(std::size_t channels, std::size_t steps)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    return [=, full = std::make_shared<FullBuffer>(channels, steps)] {
        HostArray* out = nullptr;
        std::vector<double> limits{kInf, -kInf, kInf, -kInf};
        full->buffer.GetTimeAndValueInterleaved(0, out, limits, 0, 0, std::numeric_limits<double>::max(), -kInf,
                                                channels, channels / 2, false, 1, 1, false, false);
        destroyArray(out);
    };
}

std::function<void()> triggerRead(std::size_t channels, std::size_t steps)
{
    return [=, full = std::make_shared<FullBuffer>(channels, steps), pairs = std::make_shared<std::vector<double>>()] {
        full->buffer.GetSamplesAfter(0, 0, channels / 2, false, 1, TimeBuffer::SamplePart::real, *pairs);
    };
}

std::function<void()> blockRead(std::size_t channels, std::size_t steps)
{
    return [=, full = std::make_shared<FullBuffer>(channels, steps), pairs = std::vector<double>(1 << 14)]() mutable {
        const auto next = [&](double after) {
            return full->buffer.GetSamplesBetween(after, std::numeric_limits<double>::max(), 0, channels / 2, false, 1,
                                                  TimeBuffer::SamplePart::real, pairs);
        };
        std::uint64_t count = next(0);
        while (count > 0)
            count = next(pairs[2 * count - 2]);
    };
}

std::function<void()> portWrites(std::size_t ports)
{
    constexpr std::size_t kFrame = 256, kSteps = 128;
    const auto buffer = std::make_shared<TimeBuffer>();
    buffer->ResetBuffer({kSteps}, TimeBuffer::Counts(ports, kFrame), TimeBuffer::Counts(ports, 1), ports,
                        BufferType::MultipleRate, std::vector<HostComplexity>(ports, HostComplexity::real), true);
    const std::shared_ptr<HostArray> time = makeScalar(0);
    const std::shared_ptr<HostArray> values = makeMatrix(kFrame, 1);
    const auto write = [=] {
        *getRealData(time.get()) += 1;
        for (std::size_t port = 0; port < ports; ++port)
            buffer->addTimeAndValue(time.get(), values.get(), port, false);
    };
    for (std::size_t step = 0; step < kSteps; ++step)
        write();
    return write;
}

std::function<void()> windowRead(std::size_t window, std::size_t steps)
{
    return [=, full = std::make_shared<FullBuffer>(1, steps), pairs = std::vector<double>(2 * window + 2)]() mutable {
        const double end = full->time - static_cast<double>(steps) / 2;
        full->buffer.GetSamplesBetween(end - static_cast<double>(window), end, 0, 0, false, 1,
                                       TimeBuffer::SamplePart::real, pairs);
    };
}

std::vector<double> writeTimes(std::uint64_t steps, bool roomAhead, double (*now)())
{
    constexpr std::uint64_t kStepsAWrite = 256;
    TimeBuffer buffer({steps}, {1}, 1);
    if (roomAhead)
        buffer.reserveCapacity();
    std::vector<double> seconds, times(kStepsAWrite);
    const TimeBuffer::Counts dims{1, kStepsAWrite};
    seconds.reserve(steps / kStepsAWrite + 2);
    for (std::uint64_t written = 0; written < steps + kStepsAWrite; written += kStepsAWrite) {
        for (std::uint64_t i = 0; i < kStepsAWrite; ++i)
            times[i] = static_cast<double>(written + i);
        const double begin = now();
        buffer.AddTime(times.data(), kStepsAWrite, 0);
        buffer.AddValue(times.data(), dims, 0, HostComplexity::real);
        seconds.push_back(now() - begin);
    }
    return seconds;
}

std::function<void()> segmentation(std::size_t held, std::size_t frame, std::size_t segment, double overlapPercent)
{
    const std::shared_ptr<HostArray> input = makeMatrix(frame, 1);
    const auto buffer =
        std::make_shared<SpectrumBuffer>(static_cast<std::uint32_t>(segment), overlapPercent, HostComplexity::real, 1);
    return [=] {
        for (std::size_t i = 0; i < held / frame; ++i)
            buffer->AddValue(input.get(), 0, true);
        buffer->flush(); // keeps the memory
    };
}

} // namespace tracery::bench
