#include "display/TextFrame.h"

#include "display/PanelSorter.h"
#include "libraries.h"

#include <tracery/basics/cleanText.h>
#include <tracery/basics/quantity.h>
#include <tracery/basics/units.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <stdexcept>
#include <utility>

namespace scope {

namespace {

constexpr const char* kBlocks[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::size_t kFewestColumns = 10; // of a course

/// Lowest and highest value of each column; where nothing is, reversed.
std::vector<Limits> columnLimits(const std::vector<Point>& points, const Figure& figure, std::size_t columns)
{
    std::vector<Limits> limits(columns);
    const double perColumn = (figure.xMax - figure.xMin) / static_cast<double>(columns);
    const auto extendAt = [&](double place, double value) {
        if (place >= 0 && place <= static_cast<double>(columns))
            limits[std::min(static_cast<std::size_t>(place), columns - 1)].extend(value);
    };
    double lastPlace = std::numeric_limits<double>::quiet_NaN();
    double last = 0;
    for (const Point& point : points) {
        const double place = (point.x - figure.xMin) / perColumn;
        // The line between two points crosses the columns between theirs.
        const double end = std::min(place, static_cast<double>(columns));
        for (double at = std::max(std::floor(lastPlace) + 1.5, 0.5); at < end; at += 1)
            extendAt(at, last + (point.y - last) * (at - lastPlace) / (place - lastPlace));
        if (std::isfinite(point.y))
            extendAt(place, point.y);
        lastPlace = std::isfinite(point.y) ? place : std::numeric_limits<double>::quiet_NaN();
        last = point.y;
    }
    return limits;
}

std::string drawCourse(const std::vector<Limits>& columns, const Limits& range)
{
    double sum = 0;
    double count = 0;
    for (const Limits& column : columns)
        if (!column.empty()) {
            sum += (column.low + column.high) / 2;
            ++count;
        }
    const double middle = sum / count;
    std::string text;
    for (const Limits& column : columns) {
        if (column.empty()) {
            text += ' ';
            continue;
        }
        const double value = middle - column.low > column.high - middle ? column.low : column.high;
        const double level = range.high > range.low ? (value - range.low) / (range.high - range.low) * 8 : 3;
        text += kBlocks[static_cast<std::size_t>(std::clamp(level, 0.0, 7.0))];
    }
    return text;
}

std::size_t width(const std::string& text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void fitTo(std::string& text, std::size_t columns)
{
    while (width(text) > columns) {
        while ((static_cast<unsigned char>(text.back()) & 0xC0) == 0x80)
            text.pop_back();
        text.pop_back();
    }
    text.append(columns - width(text), ' ');
}

struct Row {
    const Trace* trace;
    std::string unit;
    std::string label;
    Limits range;
};

/// Three digits with their unit, under a prefix where the unit takes one.
std::string valueText(double value, const std::string& text)
{
    const Unit unit = parseUnit(text);
    if (unit.scaling != Scaling::Powers)
        return formatQuantity(value * std::pow(10, unit.exponent), unit.base, 3);
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "%.3g", value);
    return number.data() + (text.empty() ? "" : " " + text);
}

} // namespace

std::vector<std::string> drawText(const Figure& figure, std::size_t columns, std::size_t mostRows)
{
    std::vector<Row> rows;
    std::size_t lines = 0;
    std::size_t labels = 0;
    for (const Panel& panel : figure.panels)
        for (const Trace& trace : panel.traces) {
            if (++lines > mostRows)
                continue;
            Row row{&trace, cleanText(panel.yUnit), cleanText(trace.label), {}};
            for (const Limits& column : columnLimits(trace.points, figure, columns))
                row.range.extend(column);
            row.label += row.range.empty()
                             ? "  no samples"
                             : "  " + valueText(row.range.low, row.unit) + " … " + valueText(row.range.high, row.unit);
            labels = std::max(labels, width(row.label));
            rows.push_back(std::move(row));
        }
    labels = std::min(labels, columns - std::min(columns, kFewestColumns + 1));
    const double span = figure.xMax - figure.xMin;
    std::string heading =
        cleanText(figure.title) + "  " + formatTime(figure.xMin, span, 6) + " … " + formatTime(figure.xMax, span, 6);
    if (figure.xLabel != "Time")
        heading += "  " + figure.xLabel;
    if (rows.size() < lines)
        heading += "  (" + std::to_string(rows.size()) + " of " + std::to_string(lines) + " lines)";
    fitTo(heading, columns);
    heading.erase(heading.find_last_not_of(' ') + 1);
    std::vector<std::string> text{heading};
    for (Row& row : rows) {
        fitTo(row.label, labels);
        const std::size_t room = std::max(columns, labels + 1 + kFewestColumns) - labels - 1;
        text.push_back(row.label + ' ' + drawCourse(columnLimits(row.trace->points, figure, room), row.range));
    }
    return text;
}

TextScreen::TextScreen() : terminal_(isatty(STDOUT_FILENO) != 0), size_(currentSize()) {}

TextScreen::Size TextScreen::currentSize() const
{
    Size found;
    winsize size{};
    if (!terminal_ || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return found;
    if (size.ws_col > 0)
        found.columns = size.ws_col;
    if (size.ws_row > 0)
        found.rows = std::max(size.ws_row, static_cast<unsigned short>(4)) - 3U; // heading above, cursor below
    return found;
}

void TextScreen::show(const Figure& figure)
{
    std::string text;
    const Size before = std::exchange(size_, currentSize());
    if (shown_ > 0 && !terminal_)
        text = "\n";
    else if (shown_ > 0 && before == size_)
        text = "\r\033[" + std::to_string(shown_) + "A"; // from the left edge: a key's echo may have moved the cursor
    else if (shown_ > 0)
        text = "\033[H\033[J"; // nobody knows where the terminal has put the rows: begin anew at the top
    const std::vector<std::string> rows = drawText(figure, size_.columns, size_.rows);
    for (const std::string& row : rows) // erased before: behind a row of full width that would take its last character
        text += (terminal_ ? "\033[K" : "") + row + "\n";
    shown_ = rows.size();
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw std::runtime_error("standard output: cannot be written");
}

} // namespace scope
