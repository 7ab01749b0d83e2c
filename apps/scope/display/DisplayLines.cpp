#include "display/DisplayLines.h"

#include "UsageError.h"
#include "display/PanelSorter.h"
#include "stream/Progress.h"

#include <set>
#include <utility>

namespace scope {

std::vector<DisplayLine> chooseLines(const Recordings& recordings, const std::vector<std::string>& wanted,
                                     const std::optional<LineSource>& trigger)
{
    std::vector<DisplayLine> lines;
    for (const ChosenChannel& chosen : chooseChannels(recordings, wanted)) {
        const auto add = [&](SamplePart part, const char* suffix, const std::string& unit) {
            lines.push_back({{chosen.port, chosen.channel, part}, chosen.label + suffix, unit});
        };
        const bool complex = recordings[chosen.port]->info().complex;
        add(SamplePart::real, complex ? " I" : "", chosen.unit);
        if (complex)
            add(SamplePart::imaginary, " Q", chosen.unit);
        if (trigger && isPolar(trigger->part) && trigger->sameChannel({chosen.port, chosen.channel, trigger->part}))
            trigger->part == SamplePart::magnitude ? add(SamplePart::magnitude, " magnitude", chosen.unit)
                                                   : add(SamplePart::phase, " phase", "°");
    }
    return lines;
}

namespace {

/// Lines of one key share a panel.
std::string panelKey(const DisplayLine& line, bool stack)
{
    const LineSource& source = line.source;
    return (stack ? std::to_string(source.port) + '.' + std::to_string(source.channel) : line.unit) +
           (isPolar(source.part) ? " polar" : "");
}

} // namespace

void requireDrawable(const std::vector<DisplayLine>& lines, bool stack, int columns, int height)
{
    const std::size_t most = kMostColumnsOfLines / static_cast<std::size_t>(columns);
    if (lines.size() > most)
        throw UsageError(std::to_string(lines.size()) + " lines are too many, " + std::to_string(columns) +
                         " pixels wide: at most " + std::to_string(most) + " are drawn; choose some with --channels");
    std::set<std::string> panels;
    for (const DisplayLine& line : lines)
        panels.insert(panelKey(line, stack));
    const std::size_t mostPanels = static_cast<std::size_t>(height) / kLeastPanelPixels;
    if (panels.size() > mostPanels)
        throw UsageError(std::to_string(panels.size()) + " panels are too many, " + std::to_string(height) +
                         " pixels high: at most " + std::to_string(mostPanels) +
                         " are drawn; choose some with --channels, or a taller --size");
}

StepsPainter::StepsPainter(const Recordings& recordings, const std::vector<DisplayLine>& lines, ScopeDisplay& display)
    : lines_(lines), display_(display)
{
    for (const auto& recording : recordings)
        channels_.push_back(recording->info().channels.size());
}

void StepsPainter::paint(const FeedSteps& steps)
{
    const std::size_t stride = channels_[steps.port];
    const std::span<const double> shown = display_.advance(steps.times);
    const auto first = static_cast<std::size_t>(shown.data() - steps.times.data());
    const std::size_t count = shown.size();
    const double* times = shown.data();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const LineSource& source = lines_[i].source;
        if (source.port != steps.port)
            continue;
        const std::size_t offset = first * stride + source.channel;
        const double* real = steps.real.data() + offset;
        const double* imag = steps.imag.empty() ? nullptr : steps.imag.data() + offset;
        if (isPolar(source.part)) {
            polar_.resize(count);
            for (std::size_t k = 0; k < count; ++k)
                polar_[k] = polarPart(real[k * stride], imag != nullptr ? imag[k * stride] : 0.0,
                                      source.part == SamplePart::phase);
            display_.add(i, times, polar_.data(), count, 1);
        } else {
            display_.add(i, times, source.part == SamplePart::imaginary ? imag : real, count, stride);
        }
    }
}

void streamLines(Recordings recordings, const Window& stretch, const std::vector<DisplayLine>& lines,
                 ScopeDisplay& display)
{
    Progress progress;
    StepsPainter painter(recordings, lines, display);
    Feed feed(std::move(recordings), stretch.from, stretch.to);
    while (const std::optional<FeedSteps> steps = feed.next()) {
        painter.paint(*steps);
        progress.show((feed.reached() - stretch.from) / (stretch.to - stretch.from));
    }
    display.finish();
}

namespace {

/// What of the line is seen in the window: points inside, or a segment that crosses all of it.
Limits limitsIn(const std::vector<Point>& points, const Window& window)
{
    Limits limits;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& point = points[i];
        if (point.x >= window.from && point.x <= window.to)
            limits.extend(point.y);
        else if (i + 1 < points.size() && point.x < window.from && points[i + 1].x > window.to) {
            limits.extend(point.y);
            limits.extend(points[i + 1].y);
        }
    }
    return limits;
}

} // namespace

std::vector<Panel> makePanels(std::vector<DisplayLine>& lines, const ScopeDisplay& display, const Window& window,
                              bool stack, bool& anything)
{
    PanelSorter sorter;
    anything = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        DisplayLine& line = lines[i];
        Trace trace{line.label, display.points(i)};
        const Limits seen = limitsIn(trace.points, window);
        anything |= !seen.empty();
        line.panel = sorter.add(panelKey(line, stack), line.unit, std::move(trace), seen);
    }
    std::vector<Panel> panels = sorter.finish();
    for (Panel& panel : panels)
        panel.yLabel = panel.traces.size() == 1 ? panel.traces[0].label : "Amplitude";
    return panels;
}

} // namespace scope
