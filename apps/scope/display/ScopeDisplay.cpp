#include "display/ScopeDisplay.h"

#include <tracery/embedded/LineAnimator.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace scope {

using namespace tracery;

namespace {
constexpr std::size_t kMostPoints = 1 << 16;
constexpr std::size_t kMostTogether = 1 << 18; // samples that all lines together hold back
constexpr int kOriginBits = 10;

/// A time beside which those of a window from `from` are small. Their differences from it are doubles, as it is a multiple
/// of a power of two that is no later than they are; 0 where a window is no shorter than a thousandth of its times.
double originNear(double from, double span)
{
    int exponent = 0;
    std::frexp(span, &exponent);
    const double unit = std::ldexp(1.0, exponent + kOriginBits);
    const double units = std::trunc(from / unit);
    return std::isinf(unit) ? 0 : std::isinf(units) ? from : units * unit;
}
} // namespace

ScopeDisplay::ScopeDisplay(embedded::EmbeddedHost& host, double from, double span, int columns, std::size_t lines)
    : host_(host)
{
    setOriginTime(from);
    setStartTime(from);
    setEndTime(from);
    setTimeSpan(span);
    std::vector<HostObjectRef> animated;
    const std::uint64_t extents[] = {lines, 1};
    const HostArrayPtr lineObjects(createObjectArray("tracery.TimeScopeLine", 2, extents));
    for (std::size_t i = 0; i < lines; ++i) {
        animated.push_back(host.construct(embedded::LineAnimator::kClassName));
        const HostArrayPtr line = hostobj::omCreateScalar(animated[i]);
        const HostArray* inputs[] = {line.get()};
        hostobj::omSetArrayElement(lineObjects.get(), i, host.construct("tracery.TimeScopeLine", inputs));
    }
    setLines(lineObjects.get());
    const std::size_t together = std::clamp<std::size_t>(kMostTogether / std::max<std::size_t>(lines, 1), 256, 4096);
    for (std::size_t i = 0; i < lines; ++i)
        drawn_.push_back(
            {animated[i], LineThinner(getTimeScopeLine(i), columns / span, together), kMostPoints, {}, from});
    setOrigin(from);
}

void ScopeDisplay::setOrigin(double from)
{
    origin_ = originNear(from, getTimeSpan());
    for (DrawnLine& line : drawn_)
        line.thinner.setOrigin(origin_);
}

void ScopeDisplay::follow(TimeOverrunModeEnum mode, double until)
{
    following_ = true;
    until_ = until;
    setTimeOverrunMode(mode);
    getTimeOverrunModeController()->start();
}

std::span<const double> ScopeDisplay::advance(std::span<const double> times)
{
    if (!following_)
        return times;
    times = times.first(static_cast<std::size_t>(std::ranges::upper_bound(times, until_) - times.begin()));
    if (times.empty())
        return times;
    setEndTime(std::max(getEndTime(), times.back()));
    const double start = getTimeOverrunModeController()->calculateStartTime();
    const bool moves = start != getStartTime();
    setStartTime(start);
    if (getTimeOverrunMode() == TimeOverrunModeEnum::Scroll) {
        for (DrawnLine& line : drawn_)
            trim(line);
        return times;
    }
    if (moves)
        for (DrawnLine& line : drawn_)
            beginSweep(line);
    return times.subspan(static_cast<std::size_t>(std::ranges::lower_bound(times, start) - times.begin()));
}

void ScopeDisplay::add(std::size_t line, const double* times, const double* values, std::size_t count,
                       std::size_t stride)
{
    DrawnLine& drawn = drawn_[line];
    drawn.thinner.add(times, values, count, stride);
    if (!following_ || count == 0)
        return;
    drawn.edgeTime = times[count - 1];
    drawn.edge.clear();
    for (const double* time = std::lower_bound(times, times + count, drawn.edgeTime); time != times + count; ++time)
        drawn.edge.push_back(values[static_cast<std::size_t>(time - times) * stride]);
}

/// Empties a line for a new sweep. Data at the very boundary were drawn at the end of the old sweep while they were the
/// newest; they are the first of the new one.
void ScopeDisplay::beginSweep(DrawnLine& line)
{
    line.thinner.restart();
    const std::vector<double> times(line.edge.size(), line.edgeTime);
    if (line.edgeTime >= getStartTime())
        line.thinner.add(times.data(), line.edge.data(), times.size(), 1);
}

void ScopeDisplay::restart(double from)
{
    setStartTime(from);
    for (DrawnLine& line : drawn_)
        line.thinner.restart();
    setOrigin(from);
}

void ScopeDisplay::drawPending()
{
    for (DrawnLine& line : drawn_)
        line.thinner.drawPending();
}

void ScopeDisplay::finish()
{
    for (DrawnLine& line : drawn_)
        line.thinner.finish();
}

/// Cuts a line that has become long to what the window shows and the point before.
void ScopeDisplay::trim(DrawnLine& line)
{
    const std::span<const double> points = host_.animator().points(line.animated);
    if (points.size() / 2 <= line.mostPoints)
        return;
    std::size_t first = 0;
    for (std::size_t i = 0; i < points.size(); i += 2)
        if (points[i] + origin_ < getStartTime())
            first = i;
    const std::vector<double> kept(points.begin() + static_cast<std::ptrdiff_t>(first), points.end());
    host_.animator().reset(line.animated);
    host_.animator().append(line.animated, kept);
    line.mostPoints = std::max(kMostPoints, kept.size()); // points are halves of doubles: twice what was kept
}

std::vector<Point> ScopeDisplay::points(std::size_t line) const
{
    const std::span<const double> drawn = host_.animator().points(drawn_[line].animated);
    std::vector<Point> points;
    points.reserve(drawn.size() / 2);
    for (std::size_t i = 0; i + 1 < drawn.size(); i += 2)
        points.push_back({drawn[i] + origin_, drawn[i + 1]});
    return points;
}

} // namespace scope
