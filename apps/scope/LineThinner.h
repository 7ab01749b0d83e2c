#pragma once

#include "picture/Figure.h"

#include <tracery/DataThinner.h>
#include <tracery/host/HostArray.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace scope {

/// Thins one line while it streams in, losing no finite extreme: values are cut into runs at whatever is not a number
/// before they are thinned, and the last column of each run is closed. Repeated times are moved apart by the smallest
/// step there is. How the line is cut into calls makes no difference.
class LineThinner {
public:
    explicit LineThinner(double columnsPerSecond);

    /// Adds `count` samples; sample i is values[i * stride] at times[i]. Times must not decrease.
    void add(const double* times, const double* values, std::size_t count, std::size_t stride);
    /// The thinned line, runs separated by NaN points. The thinner starts anew.
    std::vector<Point> finish();

private:
    std::size_t addRun(const double* times, const double* values, std::size_t count, std::size_t stride);
    void thin(bool endOfRun);
    void closeRun();

    tracery::DataThinner thinner_;
    double columnsPerSecond_;
    tracery::HostArrayPtr batch_; ///< (time, value) pairs: the column that was open, then what is not thinned yet
    double* pairs_;               ///< the batch's data
    std::size_t count_ = 0;       ///< points in the batch
    double lastTime_ = -std::numeric_limits<double>::infinity();
    std::vector<Point> points_;
};

} // namespace scope
