#pragma once

#include <tracery/export.h>

#include <boost/circular_buffer.hpp>

namespace tracery {

/// Watches a stream of values for a NaN that recurs with a fixed period N and has a valid value (infinities count)
/// exactly halfway: NaN, then a number N values later, then NaN again N values after that.
/// Copies have a history of their own.
class TRACERY_EXPORT DataPattern {
public:
    /// patternLength  the period N, in values; the newest 3 N values are kept. 0 or less keeps none and never matches.
    explicit DataPattern(int patternLength);

    /// Appends `value`. Returns hasNaNPattern() once 3 N values have been seen, false before. O(N).
    bool addValueAndCheckPattern(double value);

    /// Whether, for some i < N, the values i, i + N and i + 2N (counted from the oldest) are NaN, not NaN and NaN.
    /// Positions past the values seen wrap around; meaningful once 3 N values have been seen.
    bool hasNaNPattern() const;

private:
    boost::circular_buffer<double> history_;
    int patternLength_;
};

} // namespace tracery
