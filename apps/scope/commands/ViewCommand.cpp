#include "commands/commands.h"
#include "commands/output.h"
#include "display/DisplayLines.h"
#include "display/ScopeDisplay.h"
#include "display/ScopeHost.h"
#include "libraries.h"
#include "stream/Progress.h"
#include "stream/sources.h"
#include "trigger/TriggeredWindow.h"

#include <tracery/basics/quantity.h>
#include <tracery/figures/Figure.h>
#include <tracery/measures/explain.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

namespace scope {

namespace {

TimeRange wholeRange(Recordings& recordings)
{
    TimeRange all{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const auto& recording : recordings) {
        const TimeRange range = recording->range();
        all = {std::min(all.first, range.first), std::max(all.last, range.last)};
    }
    return all;
}

Window chooseWindow(Recordings& recordings, const ViewOptions& options)
{
    if (options.span && !(*options.span > 0))
        throw UsageError("--span must be positive");
    if (options.span) {
        const double from = options.from ? *options.from : wholeRange(recordings).first;
        requireResolution(*options.span, from, from + *options.span, TimeAxis::OfTimes);
        return {from, from + *options.span};
    }
    const TimeRange all = wholeRange(recordings);
    const double from = options.from.value_or(all.first);
    if (from > all.last)
        throw UsageError(nothingAfter(from, all));
    const double least = narrowestSpan(from, all.last);
    if (all.last - from >= least)
        return {from, all.last};
    // Few steps, or one, or several at one time.
    const double around = all.last > from ? least : std::max(1e-6, std::abs(from) * 1e-9);
    return {from - around, all.last + around};
}

/// What streams past a display whose window follows it.
Window chooseStretch(Recordings& recordings, const ViewOptions& options)
{
    const TimeRange all = wholeRange(recordings);
    const double from = options.from.value_or(all.first);
    if (from > all.last)
        throw UsageError(nothingAfter(from, all));
    if (options.until && !(*options.until > from))
        throw UsageError("--until: expected a time after the start, " + formatQuantity(from, "s") + ", found " +
                         formatQuantity(*options.until, "s"));
    const double to = std::min(options.until.value_or(all.last), all.last);
    return {from, to > from ? to : from + std::max(1e-6, std::abs(from) * 1e-9)};
}

TriggeredWindow findWindow(const Recordings& recordings, const ViewOptions& options)
{
    const TriggerSettings& settings = *options.trigger;
    const TriggerSource source = findTriggerSource(recordings, settings, options.channels);
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
            found = TriggeredWindow{{event.start, event.end},
                                    event.time,
                                    {},
                                    {source.port, source.channel, partOf(settings.part)},
                                    event.freeRun};
            return false;
        },
        [&](double reached) { progress.show((reached - from) / (source.range.last - from)); });
    if (!found) {
        const SignalRange range =
            measureRange(openBatches(options.files, options.rate, source, from), source.channel, settings.part);
        throw UsageError(explainNothingShown(settings, scan->controller(), totals, range, span));
    }
    found->levels = levelsOf(scan->controller(), settings);
    return *found;
}

} // namespace

void runView(const ViewOptions& options)
{
    Recordings recordings = openAll(options.files, options.rate);
    const std::string output =
        chooseOutput(options.output, options.files, ".png", Output::Kinds::Pictures, options.width, options.height)
            .path;
    // Before a long reading, though a polar part of the trigger's may join them.
    requireDrawable(chooseLines(recordings, options.channels, std::nullopt), options.stack, plotWidth(options.width),
                    options.height);
    ScopeHost host;

    std::optional<TriggeredWindow> triggered;
    if (options.trigger)
        triggered = findWindow(recordings, options);
    const Window stretch = triggered         ? triggered->window
                           : options.overrun ? chooseStretch(recordings, options)
                                             : chooseWindow(recordings, options);
    const double whole = stretch.to - stretch.from;
    const double least = narrowestSpan(stretch.from, stretch.to);
    const double span = options.overrun ? options.span.value_or(std::max(whole / 10, least)) : whole;
    if (!triggered)
        requireResolution(span, stretch.from, stretch.to, TimeAxis::OfTimes);

    std::vector<DisplayLine> lines =
        chooseLines(recordings, options.channels, triggered ? std::optional(triggered->source) : std::nullopt);
    ScopeDisplay display(host, stretch.from, span, plotWidth(options.width), lines.size());
    if (options.overrun)
        display.follow(*options.overrun, stretch.to);
    // What a commit shows of the display is the picture.
    const auto picture = host->graphics().addCommitHook([&](int) {
        Figure figure;
        options.applyTo(figure);
        figure.title = headingOf(options.title, options.files[0]);
        const Window window = options.overrun ? Window{display.getStartTime(), display.windowEnd()} : stretch;
        figure.xMin = window.from;
        figure.xMax = window.to;
        bool anything = false;
        figure.panels = makePanels(lines, display, window, options.stack, anything);
        if (!anything)
            throw UsageError("no samples between " + formatQuantity(window.from, "s") + " and " +
                             formatQuantity(window.to, "s") + " in the channels chosen");
        if (triggered)
            markTrigger(figure, *triggered, lines);
        writeFigure(figure, output);
    });
    streamLines(std::move(recordings), stretch, lines, display);
    host->graphics().commitDatabaseUpdates(0);
    announce(output);
}

} // namespace scope
