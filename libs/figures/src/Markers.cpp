#include "Markers.h"

#include <tracery/basics/cleanText.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>

namespace tracery::figures {

using namespace basics;

namespace {

constexpr int kMostRows = 3;
constexpr double kTriangle = 7;    // height, pixels at scale 1
constexpr double kLabelSpace = 6;  // between labels
constexpr double kRowHeight = 1.3; // in text sizes
constexpr double kBaseline = 0.3;  // of a text above the bottom of its row, in text sizes
constexpr double kOpacity = 0.85;  // of what is behind a label in a panel

} // namespace

PositionMarkers::PositionMarkers(Canvas& canvas, std::span<const Marker> positions, const Limits& limits,
                                 const Sizes& sizes, double left, double right, double mostRight)
    : sizes_(sizes)
{
    std::vector<const Marker*> shown;
    for (const Marker& marker : positions)
        if (limits.contains(marker.at))
            shown.push_back(&marker);
    std::stable_sort(shown.begin(), shown.end(), [](auto* a, auto* b) { return a->at < b->at; });

    std::array<double, kMostRows> rowEnds;
    rowEnds.fill(0);
    for (const Marker* marker : shown) {
        const double x = left + (marker->at - limits.low) / (limits.high - limits.low) * (right - left);
        Placed placed{x, canvas.fitted(cleanText(marker->label), sizes.tick, (right - left) / 3), x, 0};
        const double width = canvas.textWidth(placed.label, sizes.tick);
        placed.labelLeft = std::clamp(x - width / 2, 0.0, std::max(0.0, mostRight - width));
        const auto row =
            std::find_if(rowEnds.begin(), rowEnds.end(), [&](double end) { return end <= placed.labelLeft; });
        if (placed.label.empty() || row == rowEnds.end()) {
            placed.label.clear();
        } else {
            *row = placed.labelLeft + width + kLabelSpace * sizes.scale;
            placed.row = static_cast<int>(row - rowEnds.begin());
            rows_ = std::max(rows_, placed.row + 1);
        }
        placed_.push_back(std::move(placed));
    }
}

double PositionMarkers::rowHeight() const { return std::ceil(kRowHeight * sizes_.tick.size); }

double PositionMarkers::height() const
{
    return placed_.empty() ? 0 : std::ceil(kTriangle * sizes_.scale) + 1 + rows_ * rowHeight();
}

void PositionMarkers::drawLabels(Canvas& canvas, double bottom) const
{
    const double tall = kTriangle * sizes_.scale;
    cairo_t* const context = canvas.context();
    for (const Placed& placed : placed_) {
        canvas.setColour(canvas.theme().marker);
        const double tip = std::round(placed.x - sizes_.hairline / 2) + sizes_.hairline / 2;
        cairo_move_to(context, tip, bottom);
        cairo_line_to(context, tip - 0.6 * tall, bottom - tall);
        cairo_line_to(context, tip + 0.6 * tall, bottom - tall);
        cairo_close_path(context);
        cairo_fill(context);
        if (!placed.label.empty())
            canvas.text(placed.label, sizes_.tick, Align::Start, placed.labelLeft,
                        bottom - tall - 3 * sizes_.scale - placed.row * rowHeight());
    }
}

void PositionMarkers::drawLines(Canvas& canvas, const Box& panel) const
{
    canvas.setColour(canvas.theme().marker);
    for (const Placed& placed : placed_)
        canvas.dashedVertical(placed.x, panel.top, panel.bottom, sizes_.hairline);
}

void drawLevels(Canvas& canvas, std::span<const Marker> levels, const Mapping& mapping, const Sizes& sizes)
{
    struct Level {
        std::string label;
        double y;
    };
    const Box& panel = mapping.box();
    const double half = sizes.hairline;
    std::vector<Level> shown;
    std::vector<Box> taken;
    canvas.setColour(canvas.theme().marker);
    for (const Marker& level : levels) {
        if (!mapping.yLimits().contains(level.at))
            continue;
        const double y = mapping.y(level.at);
        canvas.dashedHorizontal(panel.left, panel.right, y, sizes.hairline);
        taken.push_back({panel.left, y - half, panel.right, y + half});
        shown.push_back({canvas.fitted(cleanText(level.label), sizes.tick, panel.width() / 3), y});
    }

    const double height = kRowHeight * sizes.tick.size;
    /// Draws the label with its top at one of `tops`, as far right as it meets nothing that is taken.
    const auto place = [&](const std::string& label, std::initializer_list<double> tops) {
        const double width = canvas.textWidth(label, sizes.tick) + kLabelSpace * sizes.scale;
        for (double right = panel.right - 3 * sizes.scale; right - width >= panel.left; right -= width / 2)
            for (const double top : tops) {
                const Box box{right - width, top, right, top + height};
                const bool meets =
                    std::any_of(taken.begin(), taken.end(), [&](const Box& other) { return box.overlaps(other); });
                if (box.top < panel.top || box.bottom > panel.bottom || meets)
                    continue;
                canvas.setColour(canvas.theme().paper, kOpacity);
                canvas.fill(box);
                canvas.setColour(canvas.theme().ink);
                canvas.text(label, sizes.tick, Align::Centre, (box.left + box.right) / 2,
                            box.bottom - kBaseline * sizes.tick.size);
                taken.push_back(box);
                return true;
            }
        return false;
    };
    const std::size_t lines = taken.size();
    std::vector<Level> crowded;
    for (const Level& level : shown)
        if (!level.label.empty() && !place(level.label, {level.y - half - height, level.y + half}))
            crowded.push_back(level);
    // Between other lines there was no room: onto its own line, and the neighbours be covered.
    taken.erase(taken.begin(), taken.begin() + static_cast<std::ptrdiff_t>(lines));
    for (const Level& level : crowded)
        place(level.label, {level.y - height / 2});
}

} // namespace tracery::figures
