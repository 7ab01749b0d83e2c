#include "OnePassRange.h"

#include <tracery/DataThinner.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>
#include <span>

using namespace tracery;

namespace {

constexpr double kStepSeconds = 1e-6;

/// A line of noise, one point a microsecond: what leaves the branches of the extremes least to predict.
HostArrayPtr noise(std::size_t points)
{
    HostArrayPtr line(createDoubleMatrix(2, points, HostComplexity::real));
    double* pair = getRealData(line.get());
    std::minstd_rand generator(1);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (std::size_t k = 0; k < points; ++k, pair += 2) {
        pair[0] = kStepSeconds * static_cast<double>(k);
        pair[1] = value(generator);
    }
    return line;
}

template <class Call>
double secondsOf(Call&& call)
{
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// Thins a whole line (range(0) points, range(1) a column), destruction of the result included, and beside
/// each pass reads the same bytes at the limit. "overLimit" is the ratio of the fastest passes,
/// "limitSeconds" the fastest read.
void BatchThinning(benchmark::State& state)
{
    const auto points = static_cast<std::size_t>(state.range(0));
    const double columnsPerSecond = 0.5 / (static_cast<double>(state.range(1)) * kStepSeconds);
    const HostArrayPtr line = noise(points);
    const std::span<const double> doubles(getRealData(line.get()), 2 * points);

    DataThinner thinner;
    double fastestLimit = std::numeric_limits<double>::infinity();
    double fastest = fastestLimit;
    for ([[maybe_unused]] auto pass : state) {
        fastestLimit = std::min(fastestLimit,
                                secondsOf([&] { benchmark::DoNotOptimize(bench::onePassRange(doubles)); }));
        const double seconds = secondsOf([&] {
            const HostArrayPtr thinned(
                thinner.getArrayThinData(line.get(), static_cast<int>(points), columnsPerSecond, false));
            benchmark::DoNotOptimize(getRealData(thinned.get()));
        });
        fastest = std::min(fastest, seconds);
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(doubles.size_bytes()));
    state.counters["limitSeconds"] = fastestLimit;
    state.counters["overLimit"] = fastest / fastestLimit;
}
BENCHMARK(BatchThinning)
    ->ArgNames({"points", "perColumn"})
    ->Args({1'000'000, 260})
    ->Args({1'000'000, 20})
    ->Args({16'000'000, 4'000})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
