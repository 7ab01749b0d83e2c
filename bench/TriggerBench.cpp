#include <tracery/EdgeTimeDomainTrigger.h>
#include <tracery/PulseWidthTimeDomainTrigger.h>
#include <tracery/RuntTimeDomainTrigger.h>
#include <tracery/TimeoutTimeDomainTrigger.h>
#include <tracery/TransitionTimeDomainTrigger.h>
#include <tracery/WindowTimeDomainTrigger.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

/// What a detector costs a sample, beside the limit of its kind: one pass that finds minimum and maximum of
/// the same bytes. Items are samples.
namespace {

using namespace tracery;
using TDTC::PolarityEnum;

constexpr std::size_t kSamples = 1'000'000;
constexpr double kInf = std::numeric_limits<double>::infinity();

/// A million samples, one a microsecond, as (time, value) pairs.
template <class Value>
std::vector<double> signalOf(Value value)
{
    std::vector<double> pairs;
    pairs.reserve(2 * kSamples);
    for (std::size_t i = 0; i < kSamples; ++i)
        pairs.insert(pairs.end(), {1e-6 * static_cast<double>(i), value(i)});
    return pairs;
}

struct NamedSignal {
    const char* name;
    std::vector<double> pairs;
};

/// quiet: noise far below every level, with a pulse every 100 000 samples; busy: a sine of 20 samples a
/// period that crosses all levels; noisy: white noise over all levels.
const std::array<NamedSignal, 3>& signals()
{
    static const std::array<NamedSignal, 3> all = [] {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> hum(-0.6, -0.4);
        std::normal_distribution<double> white(0, 1);
        return std::array<NamedSignal, 3>{{
            {"quiet", signalOf([&](std::size_t i) { return i % 100'000 >= 99'990 ? 1.0 : hum(random); })},
            {"busy", signalOf([](std::size_t i) { return std::sin(0.314159 * static_cast<double>(i)); })},
            {"noisy", signalOf([&](std::size_t) { return white(random); })},
        }};
    }();
    return all;
}

using Lanes [[gnu::vector_size(16)]] = double;

void minMaxLimit(benchmark::State& state, const std::vector<double>& pairs)
{
    constexpr std::size_t kWidth = sizeof(Lanes) / sizeof(double), kUnrolled = 4;
    for (auto _ : state) {
        Lanes low[kUnrolled] = {}, high[kUnrolled] = {};
        for (std::size_t i = 0; i + kWidth * kUnrolled <= pairs.size(); i += kWidth * kUnrolled)
            for (std::size_t k = 0; k < kUnrolled; ++k) {
                Lanes x;
                std::memcpy(&x, &pairs[i + kWidth * k], sizeof x);
                low[k] = x < low[k] ? x : low[k];
                high[k] = x > high[k] ? x : high[k];
            }
        benchmark::DoNotOptimize(low);
        benchmark::DoNotOptimize(high);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSamples));
}

template <class Detector>
void detect(benchmark::State& state, const std::vector<double>& pairs, Detector detector)
{
    AbstractTimeDomainTrigger::EventQueue queue;
    for (auto _ : state) {
        detector.resetEvents(); // time starts again
        queue.clear();
        detector.updateEventQueue(pairs.data(), kSamples, nullptr, 0, queue);
        benchmark::DoNotOptimize(queue);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSamples));
    state.counters["events"] = static_cast<double>(queue.size());
}

template <class Detector>
void addDetector(const std::string& name, const NamedSignal& signal, const Detector& detector)
{
    benchmark::RegisterBenchmark((name + '/' + signal.name).c_str(), detect<Detector>,
                                 std::cref(signal.pairs), detector);
}

template <class Detector>
void addTwoLevelDetector(const std::string& name, const NamedSignal& signal)
{
    addDetector(name, signal, Detector(PolarityEnum::Positive, false, 0.5, -0.25, 0, kInf, 0));
    addDetector(name + "Either", signal, Detector(PolarityEnum::Either, false, 0.5, -0.25, 0, kInf, 0));
}

[[maybe_unused]] const bool registered = [] {
    for (const NamedSignal& signal : signals()) {
        benchmark::RegisterBenchmark((std::string("minMaxLimit/") + signal.name).c_str(), minMaxLimit,
                                     std::cref(signal.pairs));
        addDetector("edge", signal, EdgeTimeDomainTrigger(PolarityEnum::Positive, false, 0, 0.1, 0));
        addDetector("edgeEither", signal, EdgeTimeDomainTrigger(PolarityEnum::Either, false, 0, 0.1, 0));
        addDetector("timeout", signal, TimeoutTimeDomainTrigger(PolarityEnum::Positive, 0, 0.1, 0, 1e-3));
        addTwoLevelDetector<PulseWidthTimeDomainTrigger>("pulseWidth", signal);
        addTwoLevelDetector<RuntTimeDomainTrigger>("runt", signal);
        addTwoLevelDetector<TransitionTimeDomainTrigger>("transition", signal);
        addTwoLevelDetector<WindowTimeDomainTrigger>("window", signal);
    }
    return true;
}();

} // namespace
