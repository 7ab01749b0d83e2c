#pragma once

#include <optional>
#include <string>
#include <vector>

namespace scope {

struct Point {
    double x;
    double y;
};

/// A line in data units. A point with a NaN in it separates runs; a run of one point is drawn as a dot.
struct Trace {
    std::string label;
    std::vector<Point> points;
};

/// A straight line across a panel, at a value of the x or the y axis, with a short label.
struct Marker {
    double at;
    std::string label;
};

/// One axes: traces that share a y axis.
struct Panel {
    std::string yLabel;
    std::string yUnit; ///< gets an SI prefix in labels; empty: plain numbers
    double yMin = 0;
    double yMax = 1;
    std::vector<Trace> traces;
    std::vector<Marker> levels; ///< horizontal markers at y values
};

/// A picture: panels above each other over one x axis.
struct Figure {
    std::string title;
    std::string xLabel = "Time";
    std::string xUnit = "s";
    double xMin = 0;
    double xMax = 1;
    std::vector<Panel> panels;
    std::vector<Marker> positions; ///< vertical markers at x values, through all panels
    int width = 1200;              ///< pixels
    int height = 600;
};

/// Width in pixels of the plotting area of a figure `width` pixels wide: what lines are thinned to.
int plotWidth(int width);

/// Limits that hold [low, high] with a margin, widened when both are equal; 0 to 1 for an empty (inverted) range.
struct Limits {
    double low;
    double high;
};
Limits comfortableLimits(double low, double high);

/// Draws the figure to a .png or .svg file, chosen by the ending. The file appears whole or not at all. The same figure
/// gives the same bytes.
/// throws  std::runtime_error whose text names the path and what is wrong (unknown ending, cannot be written)
void writeFigure(const Figure& figure, const std::string& path);

} // namespace scope
