#pragma once

#include <tracery/TimeScopeLine.h>
#include <tracery/host/HostArray.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace scope {

/// Thins what streams in to one line of a display and draws it, losing no finite extreme: values are cut into runs at
/// whatever is not a number before they are thinned, and the last column of each run is closed. Repeated times are moved
/// apart by the smallest step there is. How the line is cut into calls makes no difference. Memory is that of the samples
/// between two thinnings, up to a number.
class LineThinner {
public:
    /// mostTogether  samples thinned at once, 16 or more: many are fast, and make no difference to the line
    LineThinner(std::shared_ptr<tracery::TimeScopeLine> line, double columnsPerSecond, std::size_t mostTogether = 4096);

    /// The line's points are drawn at their distance from `origin`, which leaves room between times that are large beside
    /// their differences. Counts from the next sample of an empty thinner on.
    void setOrigin(double origin) { origin_ = origin; }
    /// Adds `count` samples; sample i is values[i * stride] at times[i]. Times must not decrease.
    void add(const double* times, const double* values, std::size_t count, std::size_t stride);
    /// Draws all but the newest column, which may still grow. When and how often makes no difference to the line.
    void drawPending();
    /// Draws what is left and separates it from what follows by a NaN point. The thinner starts anew.
    void finish();
    /// Takes away what is drawn and what is not drawn yet.
    void restart();

private:
    std::size_t addRun(const double* times, const double* values, std::size_t count, std::size_t stride);
    void thin(bool endOfRun);
    void closeRun();
    void grow();
    void draw(const double* pairs, std::size_t count, bool endOfRun);

    std::shared_ptr<tracery::TimeScopeLine> line_;
    double columnsPerSecond_;
    double origin_ = 0;           ///< seconds
    std::size_t mostTogether_;
    tracery::HostArrayPtr batch_; ///< (time, value) pairs: the column that was open, then what is not thinned yet
    double* pairs_ = nullptr;     ///< the batch's data
    std::size_t room_ = 0;        ///< points that the batch takes, one at infinity aside
    std::size_t count_ = 0;       ///< points in the batch
    double lastTime_ = -std::numeric_limits<double>::infinity();
};

} // namespace scope
