#include "DisplayLines.h"

#include "Feed.h"
#include "Progress.h"
#include "quantity.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace scope {

std::vector<Line> chooseLines(const Recordings& recordings, const std::vector<std::string>& wanted,
                              const std::optional<LineSource>& trigger)
{
    std::vector<bool> found(wanted.size());
    std::vector<Line> lines;
    std::size_t number = 0;
    for (std::size_t port = 0; port < recordings.size(); ++port) {
        const RecordingInfo& info = recordings[port]->info();
        for (std::size_t c = 0; c < info.channels.size(); ++c) {
            const Channel& channel = info.channels[c];
            ++number;
            bool chosen = wanted.empty();
            for (std::size_t i = 0; i < wanted.size(); ++i)
                if (meansChannel(wanted[i], number, channel.name))
                    chosen = found[i] = true;
            if (!chosen)
                continue;
            std::string label = channel.name;
            if (recordings.size() > 1)
                label = std::filesystem::path(info.path).stem().string() + ": " + label;
            const auto add = [&](SamplePart part, const char* suffix, const std::string& unit) {
                lines.push_back({{port, c, part}, label + suffix, unit});
            };
            add(SamplePart::real, info.complex ? " I" : "", channel.unit);
            if (info.complex)
                add(SamplePart::imaginary, " Q", channel.unit);
            if (trigger && isPolar(trigger->part) && trigger->sameChannel({port, c, trigger->part}))
                trigger->part == SamplePart::magnitude ? add(SamplePart::magnitude, " magnitude", channel.unit)
                                                       : add(SamplePart::phase, " phase", "°");
        }
    }
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (!found[i])
            throw UsageError("--channels: there is no channel '" + wanted[i] + "'; there are " +
                             channelNames(recordings));
    return lines;
}

void streamLines(Recordings recordings, const Window& stretch, const std::vector<Line>& lines, ScopeDisplay& display)
{
    Progress progress;
    std::vector<std::size_t> channels;
    for (const auto& recording : recordings)
        channels.push_back(recording->info().channels.size());
    Feed feed(std::move(recordings), stretch.from, stretch.to);
    std::vector<double> polar;
    while (const std::optional<FeedSteps> steps = feed.next()) {
        const std::size_t stride = channels[steps->port];
        const double* times = tracery::getRealData(steps->times.get());
        const std::size_t first = display.advance({times, steps->count()});
        const std::size_t count = steps->count() - first;
        times += first;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const LineSource& source = lines[i].source;
            if (source.port != steps->port)
                continue;
            const std::size_t offset = first * stride + source.channel;
            const double* real = tracery::getRealData(steps->values.get()) + offset;
            const double* imag = tracery::getImagData(steps->values.get());
            if (imag != nullptr)
                imag += offset;
            if (isPolar(source.part)) {
                polar.resize(count);
                for (std::size_t k = 0; k < count; ++k)
                    polar[k] = polarPart(real[k * stride], imag != nullptr ? imag[k * stride] : 0.0,
                                         source.part == SamplePart::phase);
                display.add(i, times, polar.data(), count, 1);
            } else {
                display.add(i, times, source.part == SamplePart::imaginary ? imag : real, count, stride);
            }
        }
        progress.show((feed.reached() - stretch.from) / (stretch.to - stretch.from));
    }
    display.finish();
}

namespace {

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

} // namespace

std::vector<Panel> makePanels(std::vector<Line>& lines, const ScopeDisplay& display, const Window& window, bool stack)
{
    std::vector<Panel> panels;
    std::vector<Limits> limits;
    bool anything = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Line& line = lines[i];
        const auto together = [&](const Line& other) {
            const bool sameKind = isPolar(other.source.part) == isPolar(line.source.part);
            return sameKind && (stack ? other.source.sameChannel(line.source) : other.unit == line.unit);
        };
        const auto here = lines.begin() + static_cast<std::ptrdiff_t>(i);
        const auto companion = std::find_if(lines.begin(), here, together);
        line.panel = companion->panel;
        if (companion == here) {
            line.panel = panels.size();
            panels.emplace_back().yUnit = line.unit;
            limits.push_back({std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()});
        }
        Trace trace{line.label, display.points(i)};
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

} // namespace scope
