#pragma once

#include "buffers/Ring.h"

#include <cstdint>
#include <optional>

namespace tracery {

/// Stored steps, inclusive, counted from the oldest.
struct StepRange {
    std::uint64_t first;
    std::uint64_t last;
    std::uint64_t count() const { return last + 1 - first; }
};

/// What a search came to; `last` is not looked for when there is no first.
struct FoundSteps {
    std::optional<std::uint64_t> first;
    std::optional<std::uint64_t> last;
    std::optional<StepRange> range() const
    {
        return first && last && *first <= *last ? std::optional(StepRange{*first, *last}) : std::nullopt;
    }
};

/// The times of one port's steps, or of all ports' when they share them.
struct TimeLine {
    explicit TimeLine(std::uint64_t capacity) : ring(capacity) {}

    /// Appends times that there is room for.
    void append(const double* times, std::uint64_t count) noexcept
    {
        ring.append(times, count);
        steps += count;
    }

    /// First step not before `time`, and last step not after it, both widened by the spacing of doubles at `time`.
    std::optional<std::uint64_t> startingIndex(double time) const;
    std::optional<std::uint64_t> endingIndex(double time) const;
    FoundSteps find(double tStart, double tEnd, bool widen) const;

    /// What a drop took away, for the values to follow.
    struct Drop {
        std::uint64_t newest;      ///< steps
        std::uint64_t stepsBefore; ///< `steps` then
    };
    /// Drops the steps newer than `time`, widened likewise.
    Drop dropAfter(double time) noexcept;

    Ring ring;
    std::uint64_t steps = 0;     ///< ever written, less the newest that were cleared; not capped by the capacity
    std::uint64_t clearings = 0; ///< number of the clearing that last took stored steps, or of the set-up
};

} // namespace tracery
