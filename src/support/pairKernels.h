#pragma once

#include "support/vectorUnit.h"

#include <tracery/SampleView.h>

namespace tracery {

/// Samples to lay out as (time, value) pairs. Sample i has the value `values[i]`, and the time
/// (lead + times[i]) + offset, or without `times` ((first + i) * spacing + lead) + offset.
struct SampleRun {
    const double* times = nullptr;
    double lead = 0;
    double first = 0;
    double spacing = 0;
    double offset = 0;
    SampleView values;
};

struct ValueRange {
    double least;
    double greatest;

    /// NaN leaves the range alone.
    TRACERY_INLINE void widen(double value)
    {
        least = value < least ? value : least;
        greatest = value > greatest ? value : greatest;
    }
};

/// Lays out a run, and widens the range by its values. NaN leaves the range alone; of zeros of both signs, the range may
/// have either one. Returns the end of what was written.
double* layOutPairs(const SampleRun& run, ValueRange& range, double* out);

/// Lays out those samples of a run whose times are in (after, upTo]. There must be room for all. Returns the end.
double* layOutPairsWithin(const SampleRun& run, double after, double upTo, double* out);

} // namespace tracery
