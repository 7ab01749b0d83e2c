#include "Harness.h"
#include "PlainSubjects.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace tracery::bench {

nlohmann::json worstWriteTable()
{
    nlohmann::json rows = nlohmann::json::array();
    std::printf("| capacity (steps) | median write (µs) | worst write (µs) | worst, growth by copies (µs) |\n"
                "|---|---|---|---|\n");
    for (std::uint64_t steps = 1000; steps <= 100'000'000; steps *= 10) {
        // The least of three worst ones: the others met something that is not the buffer's.
        constexpr int kRuns = 3;
        double median = 0, worst[2] = {1e9, 1e9};
        for (int run = 0; run < kRuns; ++run) {
            std::vector<double> ours = writeTimes(steps, processorTime);
            const std::vector<double> copying = tracery_plain::bench::writeTimes(steps, processorTime);
            worst[0] = std::min(worst[0], *std::max_element(ours.begin(), ours.end()));
            worst[1] = std::min(worst[1], *std::max_element(copying.begin(), copying.end()));
            std::nth_element(ours.begin(), ours.begin() + static_cast<std::ptrdiff_t>(ours.size() / 2), ours.end());
            median = ours[ours.size() / 2];
        }
        std::printf("| %.0e | %.2f | %.1f | %.1f |\n", static_cast<double>(steps), median * 1e6, worst[0] * 1e6,
                    worst[1] * 1e6);
        std::fflush(stdout);
        rows.push_back({{"steps", steps},
                        {"medianSeconds", median},
                        {"worstSeconds", worst[0]},
                        {"worstCopyingSeconds", worst[1]}});
    }
    return rows;
}

} // namespace tracery::bench
