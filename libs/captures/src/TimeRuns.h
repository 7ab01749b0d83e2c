#pragma once

#include "CaptureView.h"

#include <array>
#include <optional>
#include <vector>

namespace tracery::captures {

/// Puts times into runs: each is told by a 64-bit offset from its run's start, in units as fine as it needs.
class TimeRuns {
public:
    /// Enters the next step's time, which is no earlier than the last one's; a run is added where one begins.
    /// returns  its offset
    std::int64_t enter(std::int64_t step, const Time& time, std::vector<TimeRun>& runs)
    {
        if (step % kChunkSteps == 0 || step >= run_.first + kRunSteps || !fits(time)) {
            const bool finer = step % kChunkSteps != 0 && step < run_.first + kRunSteps;
            if (finer && unit_ < kUnits.size() - 1 && time - last_ < Duration{1000, 0})
                ++unit_;
            else if (finer)
                unit_ = 0;
            run_ = {step, {time, Rate(kUnits[unit_])}};
            runs.push_back(run_);
        }
        last_ = time;
        return run_.axis.firstFrom(time);
    }

private:
    static constexpr std::array<std::int64_t, 3> kUnits{1'000'000'000, 1'000'000'000'000, kFemtosPerSecond};

    bool fits(const Time& time) const
    {
        const Duration distance = time - run_.axis.start;
        return distance.femtos % (kFemtosPerSecond / kUnits[unit_]) == 0 &&
               distance.seconds < (std::int64_t{1} << 62) / kUnits[unit_] - 1;
    }

    std::size_t unit_ = 0;
    TimeRun run_{};
    Time last_;
};

} // namespace tracery::captures
