#pragma once

#include <tracery/export.h>

#include <boost/circular_buffer.hpp>

#include <cstddef>

namespace tracery {

/// Watches a stream of values for a NaN that recurs with a fixed period N and has a valid value (infinities
/// count) exactly halfway: NaN, then a number N values later, then NaN again N values after that. Copies have
/// a history of their own.
class TRACERY_EXPORT DataPattern {
public:
    /// patternLength  N, in values; the newest 3 N values are kept. 0 or less keeps none and never matches.
    explicit DataPattern(int patternLength);

    /// Appends `value`. Returns hasNaNPattern() once 3 N values have been seen, false before. O(1).
    bool addValueAndCheckPattern(double value);

    /// Whether, for some i < N, the values i, i + N and i + 2 N (counted from the oldest kept) are NaN, not
    /// NaN and NaN. Before 3 N values have been seen, this answers for those that have.
    bool hasNaNPattern() const { return matchStaysFor_ > 0; }

private:
    bool newestValueEndsMatch() const;

    boost::circular_buffer<double> history_;
    std::size_t patternLength_;
    /// For how many more values the newest match stays among the values kept; 0 when there is none.
    std::size_t matchStaysFor_ = 0;
};

} // namespace tracery
