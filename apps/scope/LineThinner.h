#pragma once

#include "picture/Figure.h"

#include <tracery/DataThinner.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace scope {

/// Thins one line while it streams in, losing no finite extreme: values are cut into runs at whatever is not a number
/// before they are thinned, and the last column of each run is closed. Repeated times are moved apart by the smallest
/// step there is. How the line is cut into calls makes no difference.
class LineThinner {
public:
    explicit LineThinner(double columnsPerSecond) : columnsPerSecond_(columnsPerSecond) {}

    /// Adds `count` samples; sample i is values[i * stride] at times[i]. Times must not decrease.
    void add(const double* times, const double* values, std::size_t count, std::size_t stride);
    /// The thinned line, runs separated by NaN points. The thinner starts anew.
    std::vector<Point> finish();

private:
    void thin();
    void closeRun();
    void keepPendingExtremes();

    tracery::DataThinner thinner_;
    double columnsPerSecond_;
    std::vector<double> pairs_; ///< of the run: the pending extremes of its open column, then what is not thinned yet
    bool runOpen_ = false;      ///< the run's first points have gone through the thinner
    double columnStart_ = 0;
    double lastTime_ = -std::numeric_limits<double>::infinity();
    std::vector<Point> points_;
};

} // namespace scope
