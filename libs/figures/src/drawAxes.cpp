#include "drawAxes.h"

#include <tracery/basics/cleanText.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tracery::figures {

using namespace basics;

namespace {

constexpr int kMostXSteps = 12;
constexpr int kMostYSteps = 9;
constexpr double kXLabelSpace = 1.3;    // between labels, in text sizes
constexpr double kYLabelDistance = 1.9; // of baselines, in text sizes
constexpr double kTick = 6;             // length in pixels at scale 1
constexpr double kMinorTick = 3;
constexpr double kLeastMinorDistance = 6; // pixels at scale 1; no minor ticks where they would be closer
constexpr double kLabelGap = 6;           // between tick labels and frame
constexpr double kMiddle = 0.36;          // of a digit's height over the baseline, in text sizes

double stepPixels(const Axis& axis, const Limits& limits, double pixels)
{
    return axis.step / (axis.decades ? std::log10(limits.high / limits.low) : limits.high - limits.low) * pixels;
}

/// Calls draw(value) for every minor tick; they lie between the ticks and before the first and after the
/// last.
template <class Draw>
void forMinorTicks(const Axis& axis, const Limits& limits, double pixels, double scale, Draw&& draw)
{
    if (axis.ticks.empty() || stepPixels(axis, limits, pixels) / axis.divisions < kLeastMinorDistance * scale)
        return;
    const auto drawInside = [&](double value) {
        if (value > limits.low && value < limits.high)
            draw(value);
    };
    if (axis.decades) {
        // 2, 3, … 9 of every power; where ticks leave powers out, these.
        const double next = std::pow(10.0, axis.step);
        for (double power = axis.ticks.front().at / next; power < limits.high; power *= next)
            for (int i = 1; i < axis.divisions; ++i)
                drawInside(axis.step > 1 ? power * std::pow(10.0, i) : power * (i + 1));
        return;
    }
    const double part = axis.step / axis.divisions;
    const double start = axis.ticks.front().at - axis.step;
    const auto count = static_cast<int>(axis.ticks.size() + 1) * axis.divisions;
    for (int i = 1; i < count; ++i)
        if (i % axis.divisions != 0)
            drawInside(start + i * part);
}

/// The axis label with its unit, of which the name is cut when there is not room for all.
std::string axisLabel(Canvas& canvas, const std::string& name, const std::string& unit, Font font, double room)
{
    const std::string clean = cleanText(name);
    if (unit.empty())
        return canvas.fitted(clean, font, room);
    if (clean.empty())
        return canvas.fitted(unit, font, room);
    const std::string inBrackets = " (" + unit + ")";
    const std::string cut = canvas.fitted(clean, font, room - canvas.textWidth(inBrackets, font));
    return cut.empty() ? canvas.fitted(unit, font, room) : cut + inBrackets;
}

/// What is written along an axis: its label in the middle, and the offset at the end. A label that would meet
/// the offset moves back, and is cut at last.
struct Caption {
    std::string label;
    double middle; ///< of the label, from the start of the axis
};
Caption caption(Canvas& canvas, const Axis& axis, const std::string& name, Font font, double length)
{
    const double free = axis.offset.empty() ? length : length - canvas.textWidth(axis.offset, font) - font.size;
    std::string label = axisLabel(canvas, name, axis.unit, font, free);
    const double middle = std::min(length / 2, free - canvas.textWidth(label, font) / 2);
    return {std::move(label), middle};
}

} // namespace

Axis fittingXAxis(Canvas& canvas, const Limits& limits, std::string_view unit, double pixels, const Sizes& sizes)
{
    for (int wished = kMostXSteps;; --wished) {
        Axis axis = makeAxis(limits, wished, unit);
        double widest = 0;
        for (const Tick& tick : axis.ticks)
            widest = std::max(widest, canvas.textWidth(tick.label, sizes.tick));
        if (wished == 2 || widest + kXLabelSpace * sizes.tick.size <= stepPixels(axis, limits, pixels))
            return axis;
    }
}

Axis fittingYAxis(const Mapping& mapping, std::string_view unit, const Sizes& sizes)
{
    const Limits& limits = mapping.yLimits();
    for (int wished = kMostYSteps;; --wished) {
        Axis axis = mapping.yDecades() ? makeDecadeAxis(limits, wished, unit) : makeAxis(limits, wished, unit);
        if (wished == 2 || kYLabelDistance * sizes.tick.size <= stepPixels(axis, limits, mapping.box().height()))
            return axis;
    }
}

void drawGrid(Canvas& canvas, const Mapping& mapping, const Axis& x, const Axis& y, const Sizes& sizes)
{
    const Box& box = mapping.box();
    canvas.setColour(canvas.theme().grid);
    for (const Tick& tick : x.ticks)
        canvas.vertical(mapping.x(tick.at), box.top, box.bottom, sizes.hairline);
    for (const Tick& tick : y.ticks) {
        canvas.setColour(tick.at == 0 ? canvas.theme().zeroLine : canvas.theme().grid);
        canvas.horizontal(box.left, box.right, mapping.y(tick.at), sizes.hairline);
    }
}

void drawFrame(Canvas& canvas, const Mapping& mapping, const Axis& x, const Axis& y, const Sizes& sizes)
{
    const Box& box = mapping.box();
    canvas.setColour(canvas.theme().frame);
    const double width = sizes.hairline;
    canvas.horizontal(box.left - width / 2, box.right + width / 2, box.top, width);
    canvas.horizontal(box.left - width / 2, box.right + width / 2, box.bottom, width);
    canvas.vertical(box.left, box.top, box.bottom, width);
    canvas.vertical(box.right, box.top, box.bottom, width);

    const auto xTick = [&](double at, double length) {
        canvas.vertical(mapping.x(at), box.bottom - length * sizes.scale, box.bottom, width);
    };
    const auto yTick = [&](double at, double length) {
        canvas.horizontal(box.left, box.left + length * sizes.scale, mapping.y(at), width);
    };
    for (const Tick& tick : x.ticks)
        xTick(tick.at, kTick);
    for (const Tick& tick : y.ticks)
        yTick(tick.at, kTick);
    forMinorTicks(x, mapping.xLimits(), box.width(), sizes.scale, [&](double at) { xTick(at, kMinorTick); });
    forMinorTicks(y, mapping.yLimits(), box.height(), sizes.scale, [&](double at) { yTick(at, kMinorTick); });
}

void drawYLabels(Canvas& canvas, const Mapping& mapping, const Axis& axis, const std::string& name, const Sizes& sizes)
{
    const Box& box = mapping.box();
    const double right = box.left - kLabelGap * sizes.scale;
    // Up to here there is room for labels, from the bottom up; none where panels are lower than a line of
    // text.
    double lowest = box.height() < sizes.tick.size ? -1 : std::numeric_limits<double>::infinity();
    canvas.setColour(canvas.theme().ink);
    for (const Tick& tick : axis.ticks) {
        const double y = mapping.y(tick.at);
        if (y > lowest)
            continue;
        canvas.text(tick.label, sizes.tick, Align::End, right, y + kMiddle * sizes.tick.size);
        lowest = y - sizes.tick.size;
    }

    const double baseline = kLabelGap * sizes.scale + 0.8 * sizes.label.size;
    const auto [label, middle] = caption(canvas, axis, name, sizes.label, box.height());
    canvas.text(label, sizes.label, Align::Centre, baseline, box.bottom - middle, Turn::Upward);
    canvas.text(axis.offset, sizes.label, Align::End, baseline, box.top, Turn::Upward);
}

void drawXLabels(Canvas& canvas, const Mapping& mapping, const Axis& axis, const std::string& name, const Sizes& sizes,
                 double tickBaseline, double labelBaseline, double mostRight)
{
    const Box& box = mapping.box();
    double free = 0;
    canvas.setColour(canvas.theme().ink);
    for (const Tick& tick : axis.ticks) {
        const double width = canvas.textWidth(tick.label, sizes.tick);
        const double left = std::min(mapping.x(tick.at) - width / 2, mostRight - width);
        if (left < free)
            continue;
        canvas.text(tick.label, sizes.tick, Align::Start, left, tickBaseline);
        free = left + width + sizes.tick.size / 2;
    }

    const auto [label, middle] = caption(canvas, axis, name, sizes.label, box.width());
    canvas.text(label, sizes.label, Align::Centre, box.left + middle, labelBaseline);
    canvas.text(axis.offset, sizes.label, Align::End, box.right, labelBaseline);
}

} // namespace tracery::figures
