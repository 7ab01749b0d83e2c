#include "Harness.h"
#include "Subjects.h"

#include <tracery/DataThinner.h>
#include <tracery/host/Arrays.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>

namespace tracery::bench {

namespace {

/// A line of 2^18 samples over a second, thinned to some columns.
std::function<void()> thinned(double columns)
{
    constexpr std::size_t kSamples = 1 << 18;
    const std::shared_ptr<HostArray> line = makeMatrix(2, kSamples);
    for (std::size_t i = 0; i < kSamples; ++i) {
        realValues(line.get())[2 * i] = static_cast<double>(i) / kSamples;
        realValues(line.get())[2 * i + 1] = std::sin(0.1 * static_cast<double>(i));
    }
    return [=, thinner = DataThinner()]() mutable {
        destroyArray(thinner.getArrayThinData(line.get(), kSamples, columns, false));
    };
}

/// One kind of work over one size.
struct Sweep {
    const char* work;
    const char* size;
    std::vector<double> sizes;
    std::function<std::function<void()>(std::size_t size)> make;
    std::function<double(double size)> samples; ///< of a call
};

std::vector<Sweep> sweeps()
{
    const std::vector<double> channels{1, 4, 16, 64, 256, 1024}, capacities{1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    const auto one = [](double) { return 1.0; };
    return {
        {"write", "ports", {1, 2, 4, 8, 16, 32, 64}, portWrites, [](double ports) { return 256 * ports; }},
        {"write", "channels a port", channels, [](std::size_t n) { return stepWrites(n, (1 << 15) / n); },
         [](double n) { return n; }},
        {"display read", "channels a port", channels, [](std::size_t n) { return displayRead(n, 1 << 12); },
         [](double) { return 1 << 12; }},
        {"write", "capacity (steps)", capacities, [](std::size_t n) { return stepWrites(1, n); }, one},
        {"read of 500 samples", "capacity (steps)", capacities, [](std::size_t n) { return windowRead(500, n); },
         [](double) { return 500; }},
        {"thinning",
         "pixels",
         {100, 300, 1000, 3000, 10'000, 30'000},
         [](std::size_t n) { return thinned(static_cast<double>(n)); },
         [](double) { return 1 << 18; }},
        {"segmentation",
         "overlap (%)",
         {0, 25, 50, 75, 90, 95},
         [](std::size_t percent) { return segmentation(1 << 14, 1 << 12, 1 << 10, static_cast<double>(percent)); },
         [](double) { return 1 << 14; }},
    };
}

} // namespace

nlohmann::json scalingTable(int rounds)
{
    nlohmann::json rows = nlohmann::json::array();
    std::printf("| work | size | value | ns a sample |\n|---|---|---|---|\n");
    for (const Sweep& sweep : sweeps())
        for (const double size : sweep.sizes) {
            const Work work{sweep.samples(size), sweep.make(static_cast<std::size_t>(size)), {}, {}};
            const double seconds = measure(work, rounds).secondsPerItem;
            std::printf("| %s | %s | %.0f | %.2f |\n", sweep.work, sweep.size, size, seconds * 1e9);
            std::fflush(stdout);
            rows.push_back(
                {{"work", sweep.work}, {"size", sweep.size}, {"value", size}, {"secondsPerSample", seconds}});
        }
    return rows;
}

} // namespace tracery::bench
