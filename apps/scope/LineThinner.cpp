#include "LineThinner.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace scope {

using namespace tracery;

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();
} // namespace

void LineThinner::add(const double* times, const double* values, std::size_t count, std::size_t stride)
{
    pairs_.reserve(pairs_.size() + 2 * count + 2);
    for (std::size_t i = 0; i < count; ++i) {
        const double value = values[i * stride];
        // Two samples at one time are two points of the line; the thinner would send out only one of them.
        lastTime_ = times[i] > lastTime_ ? times[i] : std::nextafter(lastTime_, kInfinity);
        if (std::isfinite(value)) {
            pairs_.push_back(lastTime_);
            pairs_.push_back(value);
        } else {
            closeRun();
        }
    }
    if (!pairs_.empty())
        thin();
}

std::vector<Point> LineThinner::finish()
{
    closeRun();
    return std::exchange(points_, {});
}

void LineThinner::closeRun()
{
    if (pairs_.empty() && !runOpen_)
        return;
    // A point at infinity opens another column, which sends out the extremes of the last one; it comes out as NaN and
    // so separates this run from the next.
    pairs_.push_back(kInfinity);
    pairs_.push_back(std::numeric_limits<double>::quiet_NaN());
    thin();
    pairs_.clear();
    runOpen_ = false;
}

void LineThinner::thin()
{
    const std::size_t count = pairs_.size() / 2;
    HostDoubles copy(static_cast<double*>(allocateMemory(pairs_.size() * sizeof(double))));
    std::copy(pairs_.begin(), pairs_.end(), copy.get());
    const HostArrayPtr line(adoptDoubleMatrix(2, count, std::move(copy), nullptr));
    const HostArrayPtr thinned(
        thinner_.getArrayThinData(line.get(), static_cast<int>(count), columnsPerSecond_, runOpen_));
    const double* out = getRealData(thinned.get());
    for (std::uint64_t i = 0; i < getN(thinned.get()); ++i)
        points_.push_back({out[2 * i], out[2 * i + 1]});
    // The last point sent out is the one that opened the column that is still open.
    if (out != nullptr)
        columnStart_ = points_.back().x;
    runOpen_ = true;
    keepPendingExtremes();
}

/// The thinner drops what it holds of the open column at the end of a batch, so its extremes go first in the next one.
/// They stand for all of the column's points: extremes of extremes, the later point winning ties.
void LineThinner::keepPendingExtremes()
{
    std::size_t first = pairs_.size();
    while (first > 0 && pairs_[first - 2] > columnStart_)
        first -= 2;
    if (first == pairs_.size()) {
        pairs_.clear();
        return;
    }
    std::size_t lowest = first;
    std::size_t highest = first;
    for (std::size_t i = first; i < pairs_.size(); i += 2) {
        if (pairs_[i + 1] <= pairs_[lowest + 1])
            lowest = i;
        if (pairs_[i + 1] >= pairs_[highest + 1])
            highest = i;
    }
    std::size_t kept = 0;
    for (const std::size_t i : {std::min(lowest, highest), std::max(lowest, highest)}) {
        if (kept == 0 || lowest != highest) {
            pairs_[kept++] = pairs_[i];
            pairs_[kept++] = pairs_[i + 1];
        }
    }
    pairs_.resize(kept);
}

} // namespace scope
