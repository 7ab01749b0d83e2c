#include "drawTrace.h"

#include "DenseLine.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <vector>

namespace tracery::figures {

namespace {

constexpr double kFarPixels = 1e100;         // stands for infinity, with room to multiply
constexpr double kOuter = 100;               // pixels around a panel within which lines are drawn, and then clipped
constexpr double kDensePoints = 3;           // a pixel column, from which a trace is drawn column by column
constexpr std::size_t kSegmentsAtOnce = 128; // the time to stroke a path grows faster than its length
constexpr double kSpeck = 1.5;               // pixels; a run that covers less is drawn as a dot
constexpr double kDotRadius = 1.8;           // in line widths

bool isGap(const Point& point) { return std::isnan(point.x) || std::isnan(point.y); }

/// The point of the line through `from` and `to` at which its x (or y, by member) is `edge`.
Point cut(Point from, Point to, double Point::*along, double Point::*across, double edge)
{
    const Point& near = std::abs(from.*along - edge) < std::abs(to.*along - edge) ? from : to;
    const double slope = (to.*across - from.*across) / (to.*along - from.*along);
    Point point{};
    point.*along = edge;
    point.*across = near.*across + (edge - near.*along) * slope;
    return point;
}

/// Strokes a polyline of segments given one after the other, in pieces short enough to be fast.
class Polyline {
public:
    Polyline(cairo_t* context, const TraceStyle& style, double lineWidth) : context_(context)
    {
        for (const double dash : style.dashes)
            dashes_.push_back(dash * lineWidth);
        cairo_set_line_width(context_, lineWidth);
        cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_cap(context_, dashes_.empty() ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
    }

    void segment(Point from, Point to)
    {
        if (!open_ || from.x != end_.x || from.y != end_.y) {
            finish();
            length_ = 0;
        }
        if (segments_ == 0) {
            cairo_set_dash(context_, dashes_.data(), static_cast<int>(dashes_.size()), length_);
            cairo_move_to(context_, from.x, from.y);
        }
        cairo_line_to(context_, to.x, to.y);
        length_ += std::hypot(to.x - from.x, to.y - from.y);
        end_ = to;
        open_ = true;
        if (++segments_ == kSegmentsAtOnce)
            stroke();
    }

    /// Ends the line: the next segment begins a new one.
    void finish()
    {
        stroke();
        open_ = false;
    }

private:
    void stroke()
    {
        if (segments_ > 0)
            cairo_stroke(context_);
        segments_ = 0;
    }

    cairo_t* context_;
    std::vector<double> dashes_;
    bool open_ = false;
    Point end_{};
    double length_ = 0;        ///< of the open line; dashes go on over pieces
    std::size_t segments_ = 0; ///< in the piece that is not stroked yet
};

void drawDot(cairo_t* context, Point centre, double radius)
{
    cairo_new_path(context);
    cairo_arc(context, centre.x, centre.y, radius, 0, 2 * std::numbers::pi);
    cairo_fill(context);
}

/// Draws the points of one run, in pixels.
template <class Line>
void drawRun(cairo_t* context, std::span<const Point> run, const Box& outer, Line& line, double dotRadius)
{
    const auto [left, right] = std::minmax_element(run.begin(), run.end(), [](auto& a, auto& b) { return a.x < b.x; });
    const auto [top, bottom] = std::minmax_element(run.begin(), run.end(), [](auto& a, auto& b) { return a.y < b.y; });
    if (right->x - left->x < kSpeck && bottom->y - top->y < kSpeck) {
        const Point centre{left->x + (right->x - left->x) / 2, top->y + (bottom->y - top->y) / 2};
        if (clipped(centre, centre, outer))
            drawDot(context, centre, dotRadius);
        return;
    }
    for (std::size_t i = 1; i < run.size(); ++i)
        if (const auto inside = clipped(run[i - 1], run[i], outer))
            line.segment(inside->first, inside->second);
    line.finish();
}

template <class Line>
void drawRuns(cairo_t* context, const Trace& trace, const Mapping& mapping, const Box& outer, Line& line,
              double dotRadius)
{
    std::vector<Point> run;
    for (auto point = trace.points.begin(); point != trace.points.end();) {
        run.clear();
        for (; point != trace.points.end() && !isGap(*point); ++point)
            run.push_back({mapping.x(point->x), mapping.y(point->y)});
        if (!run.empty())
            drawRun(context, run, outer, line, dotRadius);
        else
            ++point;
    }
}

} // namespace

Mapping::Mapping(const Box& box, const Limits& x, const Limits& y, bool yDecades)
    : box_(box), x_(x), y_(y), yDecades_(yDecades), xScale_(box.width() / (x.high - x.low)),
      yScale_(-box.height() / (onYAxis(y.high) - onYAxis(y.low)))
{}

double Mapping::placed(double value, double from, double start, double scale)
{
    return std::clamp(start + (value - from) * scale, -kFarPixels, kFarPixels);
}

std::optional<std::pair<Point, Point>> clipped(Point a, Point b, const Box& box)
{
    const auto against = [&](double Point::*along, double Point::*across, double low, double high) {
        if ((a.*along < low && b.*along < low) || (a.*along > high && b.*along > high))
            return false;
        const Point from = a;
        const Point to = b;
        for (Point* end : {&a, &b})
            if ((*end).*along < low || (*end).*along > high)
                *end = cut(from, to, along, across, (*end).*along < low ? low : high);
        return true;
    };
    if (!against(&Point::x, &Point::y, box.left, box.right) || !against(&Point::y, &Point::x, box.top, box.bottom))
        return std::nullopt;
    // What rounding made of a far cut stays near the box.
    a.x = std::clamp(a.x, box.left, box.right);
    b.x = std::clamp(b.x, box.left, box.right);
    return std::pair{a, b};
}

void drawTrace(Canvas& canvas, const Trace& trace, const Mapping& mapping, const TraceStyle& style, double lineWidth)
{
    const Box& box = mapping.box();
    const Box outer{box.left - kOuter, box.top - kOuter, box.right + kOuter, box.bottom + kOuter};
    const SavedState saved(canvas);
    cairo_t* const context = canvas.context();
    cairo_rectangle(context, box.left, box.top, box.width(), box.height());
    cairo_clip(context);
    canvas.setColour(style.colour);

    if (style.dashes.empty() && static_cast<double>(trace.points.size()) > kDensePoints * box.width()) {
        DenseLine line(context, box.left, box.right, lineWidth);
        drawRuns(context, trace, mapping, outer, line, kDotRadius * lineWidth);
        line.fill();
    } else {
        Polyline line(context, style, lineWidth);
        drawRuns(context, trace, mapping, outer, line, kDotRadius * lineWidth);
    }
}

void drawSample(Canvas& canvas, double left, double right, double y, const TraceStyle& style, double lineWidth)
{
    const SavedState saved(canvas);
    canvas.setColour(style.colour);
    Polyline line(canvas.context(), style, lineWidth);
    line.segment({left, y}, {right, y});
    line.finish();
}

} // namespace tracery::figures
