#pragma once

#include <tracery/basics/Interval.h>
#include <tracery/figures/Theme.h>

#include <string>
#include <vector>

namespace tracery::figures {

struct Point {
    double x;
    double y;
};

/// A small triangle on top of a point, with a label beside it unless other labels are there already.
struct PointMark {
    Point at;
    std::string label;
};

/// A line in data units. A point with a NaN in it separates runs; a run that covers hardly a pixel is drawn
/// as a dot. Infinite values lie far outside of every panel.
struct Trace {
    std::string label; ///< for the legend; traces of several panels that share a label share its colour
    std::vector<Point> points;
    bool reference = false; ///< what the others are compared with: grey and dashed, outside of the row of colours
    std::vector<PointMark> marks = {}; ///< in the order in which they get their labels
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
    bool yDecades = false;      ///< the y axis is logarithmic, its limits positive; values without a logarithm lie far
                                ///< below
};

/// A picture: panels above each other over one x axis. Limits closer than narrowestSpan are widened, others that are
/// unusable (NaN, reversed) count as 0 to 1.
struct Figure {
    std::string title;
    std::string xLabel = "Time";
    std::string xUnit = "s"; ///< "s" is shown in min, h or d where the axis spans that much
    double xMin = 0;
    double xMax = 1;
    std::vector<Panel> panels;
    std::vector<Marker> positions; ///< vertical markers at x values, through all panels
    int width = 1200;              ///< pixels, kMinPixels to kMaxPixels, as is the height
    int height = 600;
    ThemeEnum theme = ThemeEnum::Light;
};

inline constexpr int kMinPixels = 100;
inline constexpr int kMaxPixels = 20000;
/// The most that a raster has; each takes four bytes.
inline constexpr int kMostPixels = 1 << 26;

/// Width in pixels of the plotting area of a figure `width` pixels wide: what lines are thinned to. Exact:
/// the margins (96 pixels together at a width of 1200) follow from the width alone. At least 1.
int plotWidth(int width);

/// The ends of an axis.
using Limits = basics::Interval;

/// Limits that hold [low, high] with a margin of 5 to 10 %, rounded outward to short numbers. Widened when
/// both are equal; 0 to 1 for an empty (reversed) range and for ends that are not finite.
Limits comfortableLimits(double low, double high);

/// The narrowest span of an axis about these limits: in a narrower one doubles hardly tell ticks apart.
double narrowestSpan(double low, double high);

/// Tells early, before a long reading, what writeFigure would refuse: the ending, the size, a place that cannot be
/// written. throws  as writeFigure
void requireWritablePicture(const std::string& path, int width, int height);
/// The ending and the size alone. throws  as writeFigure
void requirePictureSize(const std::string& path, int width, int height);

/// Draws the figure to a .png or .svg file, chosen by the ending, or to standard output, "-.png" or "-.svg". The file appears whole or not at all. The
/// same figure gives the same bytes.
/// throws  std::runtime_error whose text names the path and what is wrong (ending, size, cannot be written)
void writeFigure(const Figure& figure, const std::string& path);

/// What a picture is made of: pixels, or shapes.
enum class PictureFormatEnum { Png, Svg };

/// The bytes of the file that writeFigure would write. throws  std::runtime_error: size, cannot be drawn
std::string pictureOf(const Figure& figure, PictureFormatEnum format);

} // namespace tracery::figures
