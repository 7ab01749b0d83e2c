#include "display/LineThinner.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace scope {

using namespace tracery;

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::size_t kLeastRoom = 32;

/// `time`, or the next double after `last` when it is not later: two samples at one time are two points of the line, of
/// which the thinner would send out only one.
double later(double time, double last) { return time > last ? time : std::nextafter(last, kInfinity); }
} // namespace

LineThinner::LineThinner(std::shared_ptr<TimeScopeLine> line, double columnsPerSecond, std::size_t mostTogether)
    : line_(std::move(line)), columnsPerSecond_(columnsPerSecond), mostTogether_(mostTogether)
{}

void LineThinner::add(const double* times, const double* values, std::size_t count, std::size_t stride)
{
    std::size_t i = 0;
    while (true) {
        i += addRun(times + i, values + i * stride, count - i, stride);
        if (i == count)
            return;
        if (count_ == room_) {
            room_ < mostTogether_ ? grow() : thin(false);
        } else {
            lastTime_ = later(times[i++] - origin_, lastTime_); // not a number
            closeRun();
        }
    }
}

/// Adds samples to the batch until it is full or a value is not a number; returns how many.
std::size_t LineThinner::addRun(const double* times, const double* values, std::size_t count, std::size_t stride)
{
    // Locals, because for all the compiler knows the pairs could be the members.
    const std::size_t most = std::min(count, room_ - count_);
    double* pairs = pairs_ + 2 * count_;
    double lastTime = lastTime_;
    const double origin = origin_;
    std::size_t added = 0;
    for (; added < most && std::isfinite(values[added * stride]); ++added) {
        lastTime = later(times[added] - origin, lastTime);
        pairs[2 * added] = lastTime;
        pairs[2 * added + 1] = values[added * stride];
    }
    lastTime_ = lastTime;
    count_ += added;
    return added;
}

/// Takes twice the room. Displays of many lines have short ones: most take little.
void LineThinner::grow()
{
    const std::size_t room = std::min(mostTogether_, std::max(kLeastRoom, 2 * room_));
    HostArrayPtr batch(createDoubleMatrix(2, room + 1, HostComplexity::real));
    double* pairs = getRealData(batch.get());
    std::copy_n(pairs_, 2 * count_, pairs);
    batch_ = std::move(batch);
    pairs_ = pairs;
    room_ = room;
}

void LineThinner::drawPending()
{
    if (count_ > 1)
        thin(false);
}

void LineThinner::finish() { closeRun(); }

void LineThinner::restart()
{
    count_ = 0;
    lastTime_ = -kInfinity;
    line_->reset();
}

void LineThinner::closeRun()
{
    if (count_ != 0)
        thin(true);
}

/// Hands points to the line, with a NaN point after the last of a run.
void LineThinner::draw(const double* pairs, std::size_t count, bool endOfRun)
{
    const HostArrayPtr points(createDoubleMatrix(2, count + (endOfRun ? 1 : 0), HostComplexity::real));
    if (isEmpty(points.get()))
        return;
    double* end = std::copy_n(pairs, 2 * count, getRealData(points.get()));
    if (endOfRun)
        end[0] = end[1] = std::numeric_limits<double>::quiet_NaN();
    line_->plotData(points.get(), false, 0);
}

/// Thins the batch. The thinner drops what it holds of the last column at the end, so a point at infinity opens another
/// column and makes it send the extremes out. When the run goes on, that last column is thinned again with what
/// follows: its opening point and its extremes stand for all of its points, the later one winning ties.
void LineThinner::thin(bool endOfRun)
{
    pairs_[2 * count_] = kInfinity;
    pairs_[2 * count_ + 1] = 0;
    ++count_;
    const HostArrayPtr thinned(
        line_->getLineThinData(batch_.get(), static_cast<int>(count_), columnsPerSecond_, false));
    const double* out = getRealData(thinned.get());
    const std::size_t sent = getN(thinned.get()) - 1; // without the point at infinity
    std::size_t opening = 0;
    for (std::size_t i = 1; i < sent; ++i)
        if ((out[2 * i] - out[2 * opening]) * columnsPerSecond_ >= 0.5)
            opening = i;
    const std::size_t done = endOfRun ? sent : opening;
    draw(out, done, endOfRun);
    count_ = sent - done;
    std::copy(out + 2 * done, out + 2 * sent, pairs_);
}

} // namespace scope
