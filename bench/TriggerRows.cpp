#include "Harness.h"
#include "OnePassRange.h"
#include "PlainSubjects.h"

#include <cmath>
#include <random>

namespace tracery::bench {

namespace {

/// Samples a microsecond apart, as (time, value) pairs.
template <class Value>
std::vector<double> pairsOf(std::size_t samples, Value value)
{
    std::vector<double> pairs;
    pairs.reserve(2 * samples);
    for (std::size_t i = 0; i < samples; ++i)
        pairs.insert(pairs.end(), {1e-6 * static_cast<double>(i), value(i)});
    return pairs;
}

/// sparse: noise far below every level, with a pulse every 10 000 samples; busy: a sine of 20 samples a period that
/// crosses all levels; white noise: over all levels.
std::vector<double> signalOf(const std::string& kind, std::size_t samples)
{
    std::mt19937 random(1);
    if (kind == "sparse") {
        std::uniform_real_distribution<double> hum(-0.6, -0.4);
        return pairsOf(samples, [&](std::size_t i) { return i % 10'000 >= 9'990 ? 1.0 : hum(random); });
    }
    if (kind == "busy")
        return pairsOf(samples, [](std::size_t i) { return std::sin(0.314159 * static_cast<double>(i)); });
    std::normal_distribution<double> white(0, 1);
    return pairsOf(samples, [&](std::size_t) { return white(random); });
}

constexpr std::size_t kL2 = 1 << 14, kL3 = 1 << 18; // samples of 16 bytes

Row row(const std::string& detector, const std::string& signal, std::size_t samples, Target target)
{
    return {detector, signal + ", " + (samples == kL2 ? "L2" : "L3"), target, [=] {
                const auto pairs = std::make_shared<const std::vector<double>>(signalOf(signal, samples));
                return Work{static_cast<double>(samples), detection(detector, *pairs),
                            [pairs] { keep(onePassRange(*pairs)); }, tracery_plain::bench::detection(detector, *pairs)};
            }};
}

} // namespace

Rows triggerRows()
{
    Rows rows;
    for (const std::size_t samples : {kL2, kL3}) {
        rows.push_back(row("edge", "sparse", samples, {0.85, 3.0, {}}));
        rows.push_back(row("edge either", "sparse", samples, {0.5, {}, {}}));
    }
    rows.push_back(row("edge", "white noise", kL3, {{}, 2.5, {}}));
    rows.push_back(row("edge", "busy", kL3, {}));
    rows.push_back(row("edge either", "white noise", kL3, {}));
    for (const char* name : {"pulse-width", "runt", "transition", "window", "window either"}) {
        rows.push_back(row(name, "sparse", kL3, {{}, 3.0, {}}));
        rows.push_back(row(name, "busy", kL3, {}));
        rows.push_back(row(name, "white noise", kL3, {}));
    }
    rows.push_back(row("timeout", "sparse", kL3, {}));
    rows.push_back(row("timeout", "busy", kL3, {}));
    return rows;
}

} // namespace tracery::bench
