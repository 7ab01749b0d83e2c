// Power statistics and segmenting, each beside its reference in the same run: the formulas as they stand, with a
// logarithm a sample, and memcpy of the same bytes.

#include "buffers/NaiveCcdf.h"

#include <tracery/SpectrumBuffer.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <random>

using namespace tracery;

namespace {

HostArrayPtr column(const std::vector<double>& values)
{
    HostArrayPtr array(createDoubleMatrix(values.size(), 1, HostComplexity::real));
    std::copy(values.begin(), values.end(), getRealData(array.get()));
    return array;
}

/// What the samples' power is like: of complex noise, of a carrier of constant envelope, of bursts with silence between.
enum Signal : std::int64_t { kNoise, kCarrier, kBursts };

std::vector<double> powerOf(std::int64_t signal, std::size_t count)
{
    std::mt19937_64 random(1);
    std::normal_distribution<> normal;
    std::vector<double> power(count);
    for (std::size_t i = 0; i < count; ++i)
        switch (signal) {
        case kCarrier:
            power[i] = std::norm(std::polar(0.8, 0.1 * static_cast<double>(i)));
            break;
        case kBursts:
            power[i] = i / 64 % 2 == 0 ? 0.0 : std::norm(std::complex(normal(random), normal(random)));
            break;
        default:
            power[i] = std::norm(std::complex(normal(random), normal(random)));
        }
    return power;
}

/// Arguments: powers a frame, bins per dB, signal. The histogram spans 100 dB.
constexpr std::int64_t kSpanDecibels = 100;

void ccdfUpdate(benchmark::State& state)
{
    const std::vector<double> power = powerOf(state.range(2), static_cast<std::size_t>(state.range(0)));
    const HostArrayPtr frame = column(power);
    SpectrumBuffer buffer;
    for (auto _ : state) {
        HostArray *peak = nullptr, *average = nullptr, *count = nullptr, *table = nullptr;
        buffer.updateCCDF(frame.get(), static_cast<int>(kSpanDecibels * state.range(1)),
                          1 / static_cast<double>(state.range(1)), peak, average, count, table);
        for (HostArray* result : {peak, average, count, table})
            destroyArray(result);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ccdfPlain(benchmark::State& state)
{
    const std::vector<double> power = powerOf(state.range(2), static_cast<std::size_t>(state.range(0)));
    test::NaiveCcdf plain;
    for (auto _ : state) {
        plain.update(power.data(), power.size(), 1, static_cast<int>(kSpanDecibels * state.range(1)),
                     1 / static_cast<double>(state.range(1)));
        benchmark::DoNotOptimize(plain.distribution(0));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ccdfCases(benchmark::internal::Benchmark* cases)
{
    cases->ArgNames({"frame", "binsPerDecibel", "signal"});
    for (const std::int64_t signal : {kNoise, kCarrier, kBursts})
        cases->Args({1 << 18, 10, signal});
    cases->Args({1 << 18, 100, kNoise})->Args({1 << 18, 2, kNoise})->Args({1024, 10, kNoise})->Args({1024, 2, kNoise});
}
BENCHMARK(ccdfUpdate)->Apply(ccdfCases);
BENCHMARK(ccdfPlain)->Apply(ccdfCases);

/// Arguments: new samples held before the buffer is emptied (its capacity stays), frame, segment length, overlap (%).
void appendSegments(benchmark::State& state)
{
    const auto frame = static_cast<std::size_t>(state.range(1));
    const HostArrayPtr input = column(std::vector<double>(frame, 1.0));
    SpectrumBuffer buffer(static_cast<std::uint32_t>(state.range(2)), static_cast<double>(state.range(3)),
                          HostComplexity::real, 1);
    const std::int64_t frames = state.range(0) / state.range(1);
    const auto fill = [&] {
        for (std::int64_t i = 0; i < frames; ++i)
            buffer.AddValue(input.get(), 0, true);
        buffer.flush();
    };
    fill();
    for (auto _ : state)
        fill();
    const std::int64_t step = state.range(2) - buffer.getNumOverlapSamples();
    state.SetBytesProcessed(state.iterations() * frames * state.range(1) * state.range(2) / step * 8);
}

/// memcpy of as many bytes as the segments have, in as many calls as there are frames.
void appendSegmentsLimit(benchmark::State& state)
{
    const double overlap = static_cast<double>(state.range(3)) / 100;
    const auto held = static_cast<std::size_t>(static_cast<double>(state.range(0)) / (1 - overlap));
    const auto part = static_cast<std::size_t>(static_cast<double>(state.range(1)) / (1 - overlap));
    const std::vector<double> input(part, 1.0);
    std::vector<double> out(held);
    for (auto _ : state) {
        for (std::size_t at = 0; at + part <= held; at += part)
            std::memcpy(out.data() + at, input.data(), part * sizeof(double));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(held / part * part * 8));
}

void segmentCases(benchmark::internal::Benchmark* cases)
{
    cases->ArgNames({"held", "frame", "segment", "overlap"});
    for (const std::int64_t held : {1 << 14, 1 << 20, 1 << 24}) // L2, L3, DRAM
        for (const std::int64_t overlap : {0, 50, 75})
            cases->Args({held, 1 << 12, 1 << 10, overlap});
    cases->Args({1 << 14, 64, 1 << 10, 50})->Args({1 << 14, 1 << 12, 64, 50});
}
BENCHMARK(appendSegments)->Apply(segmentCases);
BENCHMARK(appendSegmentsLimit)->Apply(segmentCases);

} // namespace
