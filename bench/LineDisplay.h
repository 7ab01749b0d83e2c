#pragma once

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/host/Arrays.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace tracery::bench {

/// A time display as a host makes it: its lines are objects of the embedded host, which keeps the points that are
/// drawn. The host outlives the display and has the library's classes.
class LineDisplay : public AbstractTimeDomainPlotter {
public:
    LineDisplay(embedded::EmbeddedHost& host, std::size_t count) : host_(host)
    {
        const std::uint64_t extents[] = {count, 1};
        const HostArrayPtr lines(createObjectArray("tracery.TimeScopeLine", 2, extents));
        for (std::size_t i = 0; i < count; ++i) {
            animated_.push_back(host.construct(embedded::LineAnimator::kClassName));
            const HostArrayPtr line = hostobj::omCreateScalar(animated_[i]);
            const HostArray* inputs[] = {line.get()};
            hostobj::omSetArrayElement(lines.get(), i, host.construct("tracery.TimeScopeLine", inputs));
        }
        setLines(lines.get());
    }

    std::size_t size() const { return animated_.size(); }
    /// Draws the real part of what an interleaved read gave, thinned to `columns` in a window; null draws nothing.
    void draw(std::size_t line, const HostArray* pairs, double columns)
    {
        if (pairs == nullptr)
            return;
        const HostArrayPtr points = makeMatrix(2, getNumberOfElements(pairs) / 2, realValues(pairs));
        getTimeScopeLine(line)->plotData(points.get(), true, columns / getTimeSpan());
    }
    void clearLines()
    {
        for (std::size_t i = 0; i < size(); ++i)
            getTimeScopeLine(i)->reset();
    }
    /// Time and value in turn.
    std::span<const double> points(std::size_t line) const { return host_.animator().points(animated_[line]); }

private:
    embedded::EmbeddedHost& host_;
    std::vector<HostObjectRef> animated_;
};

} // namespace tracery::bench
