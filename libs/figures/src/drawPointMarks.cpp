#include "drawPointMarks.h"

#include <tracery/basics/cleanText.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace tracery::figures {

using namespace basics;

namespace {

constexpr double kTriangle = 7;    // height, pixels at scale 1
constexpr double kClear = 3;       // between the point and the triangle, and around it
constexpr double kBaseline = 0.25; // of a label above the bottom of its box, in text sizes

/// A label that is still to be placed.
struct Label {
    std::string text;
    Box triangle;
};

bool meetsTrace(const Trace& trace, const Mapping& mapping, const Box& box)
{
    const auto place = [&](const Point& point) { return Point{mapping.x(point.x), mapping.y(point.y)}; };
    for (std::size_t i = 1; i < trace.points.size(); ++i) {
        const Point from = place(trace.points[i - 1]), to = place(trace.points[i]);
        if (std::max(from.x, to.x) >= box.left && std::min(from.x, to.x) <= box.right && clipped(from, to, box))
            return true;
    }
    return false;
}

void drawTriangle(Canvas& canvas, const Box& box)
{
    cairo_t* const context = canvas.context();
    cairo_move_to(context, (box.left + box.right) / 2, box.bottom);
    cairo_line_to(context, box.left, box.top);
    cairo_line_to(context, box.right, box.top);
    cairo_close_path(context);
    cairo_fill(context);
}

} // namespace

void drawPointMarks(Canvas& canvas, std::span<const Trace> traces, std::size_t panel, const Styles& styles,
                    const Mapping& mapping, const Sizes& sizes)
{
    const Box& frame = mapping.box();
    const double clear = kClear * sizes.scale, tall = kTriangle * sizes.scale, half = 0.6 * tall;
    std::vector<Box> taken;
    std::vector<Label> labels;
    for (std::size_t i = 0; i < traces.size(); ++i) {
        canvas.setColour(styles.of(panel, i).colour);
        for (const PointMark& mark : traces[i].marks) {
            const double x = mapping.x(mark.at.x), tip = mapping.y(mark.at.y) - clear;
            if (!(x >= frame.left && x <= frame.right && tip >= frame.top && tip <= frame.bottom))
                continue;
            const Box triangle{x - half, tip - tall, x + half, tip};
            drawTriangle(canvas, triangle);
            taken.push_back(triangle);
            labels.push_back({canvas.fitted(cleanText(mark.label), sizes.tick, frame.width() / 3), triangle});
        }
    }

    canvas.setColour(canvas.theme().ink);
    const double height = 1.2 * sizes.tick.size;
    for (const Label& label : labels) {
        const double width = canvas.textWidth(label.text, sizes.tick);
        const Box& mark = label.triangle;
        const double middle = (mark.left + mark.right - width) / 2, above = mark.top - clear / 2 - height;
        const double beside = std::max(mark.bottom - height, frame.top + clear);
        const std::array<Point, 5> places = {Point{middle, above}, Point{mark.right + clear, beside},
                                             Point{mark.left - clear - width, beside}, Point{mark.left, above},
                                             Point{mark.right - width, above}};
        for (const Point& corner : places) {
            const Box box{corner.x, corner.y, corner.x + width, corner.y + height};
            const Box wide{box.left - clear, box.top, box.right + clear, box.bottom};
            if (label.text.empty() || wide.left < frame.left || box.top < frame.top || wide.right > frame.right ||
                box.bottom > frame.bottom ||
                std::any_of(taken.begin(), taken.end(), [&](const Box& other) { return box.overlaps(other); }) ||
                std::any_of(traces.begin(), traces.end(),
                            [&](const Trace& trace) { return meetsTrace(trace, mapping, box); }))
                continue;
            canvas.text(label.text, sizes.tick, Align::Start, box.left, box.bottom - kBaseline * sizes.tick.size);
            taken.push_back(wide);
            break;
        }
    }
}

} // namespace tracery::figures
