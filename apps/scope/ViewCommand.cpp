#include "Feed.h"
#include "LineThinner.h"
#include "Progress.h"
#include "commands.h"
#include "picture/Figure.h"
#include "quantity.h"
#include "sources.h"
#include "trigger/explain.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>

namespace scope {

namespace {

/// One line to draw: a part of a channel of a recording.
struct Line {
    std::size_t port;
    std::size_t channel;
    bool imaginary;
    std::string label;
    std::string unit;
    LineThinner thinner;
    std::size_t panel = 0; ///< where it is drawn
};

struct Window {
    double from;
    double to;
};

Window chooseWindow(Recordings& recordings, const ViewOptions& options)
{
    if (options.span && !(*options.span > 0))
        throw UsageError("--span must be positive");
    if (options.from && options.span)
        return {*options.from, *options.from + *options.span};
    TimeRange all{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const auto& recording : recordings) {
        const TimeRange range = recording->range();
        all = {std::min(all.first, range.first), std::max(all.last, range.last)};
    }
    const double from = options.from.value_or(all.first);
    double to = options.span ? from + *options.span : all.last;
    if (!options.span && options.from && from >= all.last)
        throw UsageError("no samples at or after " + formatQuantity(from, "s") + ": the recording ends at " +
                         formatQuantity(all.last, "s"));
    if (!(to > from)) // a single step, or several at one time
        to = from + std::max(1e-6, std::abs(from) * 1e-9);
    return {from, to};
}

std::vector<Line> chooseLines(const Recordings& recordings, const ViewOptions& options, double columnsPerSecond)
{
    std::vector<bool> found(options.channels.size(), options.channels.empty());
    std::vector<Line> lines;
    std::size_t number = 0;
    for (std::size_t port = 0; port < recordings.size(); ++port) {
        const RecordingInfo& info = recordings[port]->info();
        for (std::size_t c = 0; c < info.channels.size(); ++c) {
            const Channel& channel = info.channels[c];
            ++number;
            bool wanted = options.channels.empty();
            for (std::size_t i = 0; i < options.channels.size(); ++i)
                if (meansChannel(options.channels[i], number, channel.name))
                    wanted = found[i] = true;
            if (!wanted)
                continue;
            std::string label = channel.name;
            if (recordings.size() > 1)
                label = std::filesystem::path(info.path).stem().string() + ": " + label;
            lines.push_back(
                {port, c, false, info.complex ? label + " I" : label, channel.unit, LineThinner(columnsPerSecond)});
            if (info.complex)
                lines.push_back({port, c, true, label + " Q", channel.unit, LineThinner(columnsPerSecond)});
        }
    }
    for (std::size_t i = 0; i < options.channels.size(); ++i)
        if (!found[i])
            throw UsageError("--channels: there is no channel '" + options.channels[i] + "'; there are " +
                             channelNames(recordings));
    return lines;
}

/// Reads the window through the buffer and thins every line on the way.
void streamLines(Recordings recordings, const Window& window, std::vector<Line>& lines)
{
    Progress progress;
    std::vector<std::size_t> channels;
    for (const auto& recording : recordings)
        channels.push_back(recording->info().channels.size());
    Feed feed(std::move(recordings), window.from, window.to);
    while (const std::optional<FeedSteps> steps = feed.next()) {
        const double* times = tracery::getRealData(steps->times.get());
        for (Line& line : lines) {
            if (line.port != steps->port)
                continue;
            const double* values =
                line.imaginary ? tracery::getImagData(steps->values.get()) : tracery::getRealData(steps->values.get());
            line.thinner.add(times, values + line.channel, steps->count(), channels[line.port]);
        }
        progress.show((feed.reached() - window.from) / (window.to - window.from));
    }
}

/// Grows `limits` by what of the line is seen in the window: points inside, or a segment that crosses all of it.
bool foldLimits(const std::vector<Point>& points, const Window& window, Limits& limits)
{
    bool seen = false;
    const auto fold = [&](const Point& point) {
        limits.low = std::min(limits.low, point.y);
        limits.high = std::max(limits.high, point.y);
        seen = true;
    };
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& point = points[i];
        if (point.x >= window.from && point.x <= window.to)
            fold(point);
        else if (i + 1 < points.size() && point.x < window.from && points[i + 1].x > window.to) {
            fold(point);
            fold(points[i + 1]);
        }
    }
    return seen;
}

/// One panel a unit, or a channel when they are stacked, in order of appearance.
std::vector<Panel> makePanels(std::vector<Line>& lines, const Window& window, bool stack)
{
    std::vector<Panel> panels;
    std::vector<Limits> limits;
    bool anything = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Line& line = lines[i];
        const auto together = [&](const Line& other) {
            return stack ? other.port == line.port && other.channel == line.channel : other.unit == line.unit;
        };
        const auto here = lines.begin() + static_cast<std::ptrdiff_t>(i);
        const auto companion = std::find_if(lines.begin(), here, together);
        line.panel = companion->panel;
        if (companion == here) {
            line.panel = panels.size();
            panels.emplace_back().yUnit = line.unit;
            limits.push_back({std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()});
        }
        Trace trace{line.label, line.thinner.finish()};
        anything |= foldLimits(trace.points, window, limits[line.panel]);
        panels[line.panel].traces.push_back(std::move(trace));
    }
    if (!anything)
        throw UsageError("no samples between " + formatQuantity(window.from, "s") + " and " +
                         formatQuantity(window.to, "s") + " in the channels chosen");
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const Limits comfortable = comfortableLimits(limits[i].low, limits[i].high);
        panels[i].yMin = comfortable.low;
        panels[i].yMax = comfortable.high;
        panels[i].yLabel = panels[i].traces.size() == 1 ? panels[i].traces[0].label : "Amplitude";
    }
    return panels;
}

/// The window that a trigger shows, the event's time, and the levels as they were then.
struct TriggeredWindow {
    Window window;
    double event;
    std::vector<Marker> levels;
    TriggerSource source;
};

TriggeredWindow findWindow(const Recordings& recordings, const ViewOptions& options)
{
    TriggerSettings settings = *options.trigger;
    if (settings.source.empty() && !options.channels.empty())
        settings.source = options.channels[0];
    const TriggerSource source = findTriggerSource(recordings, settings.source);
    const double from = options.from.value_or(source.range.first);
    const double span = options.span.value_or((source.range.last - source.range.first) / 10);
    const auto scan = makeScan(options.files, options.rate, source, settings, from, span, options.blockSteps);

    std::optional<TriggeredWindow> found;
    std::uint64_t shown = 0;
    Progress progress;
    const TriggerTotals totals = scan->run(
        [&](const TriggerEvent& event) {
            if (event.fate != Fate::shown || ++shown < options.nth)
                return true;
            found = TriggeredWindow{{event.start, event.end}, event.time, {}, source};
            return false;
        },
        [&](double reached) { progress.show((reached - from) / (source.range.last - from)); });
    if (!found) {
        const SignalRange range =
            measureRange(openBatches(options.files, options.rate, source, from), source.channel, settings.part);
        throw UsageError(explainNothingShown(settings, scan->controller(), totals, range, span));
    }
    const auto& controller = scan->controller();
    if (settings.usesTwoLevels())
        found->levels = {{controller.getUpperLevel(), "upper"}, {controller.getLowerLevel(), "lower"}};
    else
        found->levels = {{controller.getLevel(), "level"}};
    return *found;
}

/// Puts time zero at the event and marks it, and the levels where the source is drawn as it is triggered on.
void markTrigger(Figure& figure, const TriggeredWindow& triggered, const std::vector<Line>& lines,
                 tracery::TDTC::ComplexityEnum part)
{
    using tracery::TDTC::ComplexityEnum;
    figure.xLabel = "Time from trigger";
    figure.xMin -= triggered.event;
    figure.xMax -= triggered.event;
    figure.positions.push_back({0, "T"});
    for (Panel& panel : figure.panels)
        for (Trace& trace : panel.traces)
            for (Point& point : trace.points)
                point.x -= triggered.event;
    for (const Line& line : lines)
        if (line.port == triggered.source.port && line.channel == triggered.source.channel &&
            part != ComplexityEnum::Magnitude && part != ComplexityEnum::Phase)
            figure.panels[line.panel].levels = triggered.levels;
}

} // namespace

void runView(const ViewOptions& options)
{
    Recordings recordings = openAll(options.files, options.rate);
    const std::string stem = std::filesystem::path(options.files[0]).stem().string();
    const std::string output = options.output.empty() ? stem + ".png" : options.output;
    requireWritablePicture(output, options.width, options.height);
    std::optional<TriggeredWindow> triggered;
    if (options.trigger)
        triggered = findWindow(recordings, options);
    const Window window = triggered ? triggered->window : chooseWindow(recordings, options);

    Figure figure;
    figure.width = options.width;
    figure.height = options.height;
    figure.title = options.title.empty() ? std::filesystem::path(options.files[0]).filename().string() : options.title;
    figure.xMin = window.from;
    figure.xMax = window.to;
    std::vector<Line> lines = chooseLines(recordings, options, plotWidth(options.width) / (window.to - window.from));
    streamLines(std::move(recordings), window, lines);
    figure.panels = makePanels(lines, window, options.stack);
    if (triggered)
        markTrigger(figure, *triggered, lines, options.trigger->part);
    writeFigure(figure, output);
    std::printf("%s\n", output.c_str());
}

} // namespace scope
