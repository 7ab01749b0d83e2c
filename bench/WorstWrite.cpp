#include "Harness.h"
#include "Subjects.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace tracery::bench {

nlohmann::json worstWriteTable()
{
    nlohmann::json rows = nlohmann::json::array();
    std::printf("| capacity (steps) | median write (µs) | worst write (µs) | worst, room taken ahead (µs) |\n"
                "|---|---|---|---|\n");
    for (std::uint64_t steps = 1000; steps <= 100'000'000; steps *= 10) {
        // The least of three worst ones: the others met something that is not the buffer's.
        constexpr int kRuns = 3;
        double median = 0, worst[2] = {1e9, 1e9};
        for (int run = 0; run < kRuns; ++run)
            for (const bool roomAhead : {false, true}) {
                std::vector<double> seconds = writeTimes(steps, roomAhead, processorTime);
                worst[roomAhead] = std::min(worst[roomAhead], *std::max_element(seconds.begin(), seconds.end()));
                const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
                std::nth_element(seconds.begin(), middle, seconds.end());
                median = *middle;
            }
        std::printf("| %.0e | %.2f | %.1f | %.1f |\n", static_cast<double>(steps), median * 1e6, worst[0] * 1e6,
                    worst[1] * 1e6);
        std::fflush(stdout);
        rows.push_back({{"steps", steps},
                        {"medianSeconds", median},
                        {"worstSeconds", worst[0]},
                        {"worstRoomAheadSeconds", worst[1]}});
    }
    return rows;
}

} // namespace tracery::bench
