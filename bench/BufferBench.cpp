// Append and read of the time buffer, each beside its limit: memcpy of the same bytes in the same run.

#include <tracery/TimeBuffer.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <limits>

using namespace tracery;

namespace {

constexpr std::uint64_t kRingValues = 1 << 15; // 256 KiB of values: the L2 cache

/// A full buffer of one port whose steps have `channels` values.
struct FullBuffer {
    explicit FullBuffer(std::uint64_t channels, std::uint64_t values = kRingValues)
        : steps(values / channels), buffer({steps}, {channels}, 1)
    {
        const std::vector<double> times(1, 0.0), block(channels, 1.0);
        for (; next < 2.0 * static_cast<double>(steps); ++next) {
            buffer.AddTime(&next, 1, 0);
            buffer.AddValue(block.data(), {channels, 1}, 0, HostComplexity::real);
        }
    }
    std::uint64_t steps;
    double next = 0;
    TimeBuffer buffer;
};

/// Frames of `size` values, one time each, into a full ring.
void appendFrames(benchmark::State& state)
{
    const auto size = static_cast<std::uint64_t>(state.range(0));
    FullBuffer full(size);
    const std::vector<double> frame(size, 2.0);
    const TimeBuffer::Counts dims{size, 1};
    for (auto _ : state) {
        full.buffer.AddTime(&full.next, 1, 0);
        full.buffer.AddValue(frame.data(), dims, 0, HostComplexity::real);
        full.next += 1;
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(appendFrames)->Arg(1)->Arg(16)->Arg(256)->Arg(1024);

void appendLimit(benchmark::State& state)
{
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<double> ring(kRingValues), frame(size, 2.0);
    std::size_t at = 0;
    for (auto _ : state) {
        std::memcpy(ring.data() + at, frame.data(), size * sizeof(double));
        at = (at + size) % kRingValues;
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(appendLimit)->Arg(1)->Arg(16)->Arg(256)->Arg(1024);

void readWhole(benchmark::State& state)
{
    const FullBuffer full(16, static_cast<std::uint64_t>(state.range(0)));
    for (auto _ : state) {
        HostArray *time = nullptr, *value = nullptr;
        full.buffer.GetTimeAndValue(0, time, value);
        benchmark::DoNotOptimize(getRealData(value));
        destroyArray(time);
        destroyArray(value);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(readWhole)->Arg(1 << 15)->Arg(1 << 20);

void readLimit(benchmark::State& state)
{
    const std::vector<double> ring(static_cast<std::size_t>(state.range(0)), 1.0);
    std::vector<double> out(ring.size());
    for (auto _ : state) {
        std::memcpy(out.data(), ring.data(), ring.size() * sizeof(double));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 8);
}
BENCHMARK(readLimit)->Arg(1 << 15)->Arg(1 << 20);

/// One channel of steps that are `channels` wide: the cost should follow the samples delivered.
void readInterleaved(benchmark::State& state)
{
    const auto channels = static_cast<std::uint64_t>(state.range(0));
    constexpr std::uint64_t kSteps = 1 << 14;
    const FullBuffer full(channels, kSteps * channels);
    const double everything = -std::numeric_limits<double>::infinity();
    for (auto _ : state) {
        HostArray* out = nullptr;
        std::vector<double> limits(4, 0.0);
        full.buffer.GetTimeAndValueInterleaved(0, out, limits, 0, everything, std::numeric_limits<double>::max(),
                                               everything, channels, channels / 2, false, 1, 1, false, false);
        benchmark::DoNotOptimize(getRealData(out));
        destroyArray(out);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSteps));
}
BENCHMARK(readInterleaved)->Arg(1)->Arg(8)->Arg(64);

/// Its limit: writing as many (time, value) pairs in two parts.
void interleavedLimit(benchmark::State& state)
{
    constexpr std::size_t kSteps = 1 << 14;
    const std::vector<double> source(4 * kSteps, 1.0);
    std::vector<double> out(4 * kSteps);
    for (auto _ : state) {
        std::memcpy(out.data(), source.data(), source.size() * sizeof(double));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSteps));
}
BENCHMARK(interleavedLimit);

} // namespace
