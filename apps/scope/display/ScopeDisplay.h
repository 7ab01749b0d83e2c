#pragma once

#include "display/LineThinner.h"
#include "libraries.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/figures/Figure.h>

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

namespace scope {

/// The time display: its lines are objects of the host, their points are kept by the host's line animator. With an
/// overrun mode the window follows the data; otherwise it stays where it is.
class ScopeDisplay : public tracery::AbstractTimeDomainPlotter {
public:
    /// A window from `from`, `span` seconds long, `columns` pixels wide. The host must outlive the display.
    ScopeDisplay(tracery::embedded::EmbeddedHost& host, double from, double span, int columns, std::size_t lines);

    /// Lets the window follow the data up to a time: in sweeps, or scrolling.
    void follow(tracery::TimeOverrunModeEnum mode, double until = std::numeric_limits<double>::infinity());

    /// Samples at these times, which do not decrease, are about to come: moves the window. Returns the part of them that
    /// belongs on the display.
    std::span<const double> advance(std::span<const double> times);
    /// Draws samples on a line; sample i is values[i * stride] at times[i].
    void add(std::size_t line, const double* times, const double* values, std::size_t count, std::size_t stride);
    /// Empties the display and moves its window to start at `from`.
    void restart(double from);
    /// Draws what is not drawn yet, all but the newest column of each line.
    void drawPending();
    /// Draws what is not drawn yet.
    void finish();

    /// What is drawn of a line.
    std::vector<Point> points(std::size_t line) const;
    /// Right edge of the window.
    double windowEnd() const { return getStartTime() + getTimeSpan(); }

private:
    struct DrawnLine {
        tracery::HostObjectRef animated;
        LineThinner thinner;
        std::size_t mostPoints;   ///< a scrolling line that has more is cut to the window
        std::vector<double> edge; ///< the values at the newest time: a sweep may turn out to begin with them
        double edgeTime;
    };
    void trim(DrawnLine& line);
    void beginSweep(DrawnLine& line);

    tracery::embedded::EmbeddedHost& host_;
    bool following_ = false;
    double until_ = std::numeric_limits<double>::infinity();
    std::vector<DrawnLine> drawn_;
};

} // namespace scope
