#include "commands/liveChannels.h"
#include "commands/measureCommands.h"
#include "commands/output.h"
#include "display/PanelSorter.h"
#include "libraries.h"
#include "stream/sources.h"

#include <tracery/basics/Text.h>
#include <tracery/figures/Figure.h>
#include <tracery/measures/LevelUnit.h>
#include <tracery/measures/PowerStatistics.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace scope {

namespace {

constexpr double kLeastPercent = 1e-9;  // a picture's lowest
constexpr double kReferenceStep = 0.05; // dB

std::string faultOf(const PowerStatistics::Channel& totals)
{
    if (totals.samples == 0)
        return totals.tooLarge ? kTooLarge : kOnlyMissing;
    if (totals.zero)
        return totals.tooLarge ? kTooLarge : kZero;
    if (!std::isfinite(totals.sum))
        return kTooLarge;
    return totals.average() < std::numeric_limits<double>::min() ? kTooSmall : "";
}

/// The channels that have something to show. throws  UsageError when none has
std::vector<std::size_t> check(const PowerStatistics& statistics, const std::vector<ChosenChannel>& channels)
{
    std::vector<std::string> faults;
    for (std::size_t i = 0; i < channels.size(); ++i)
        faults.push_back(faultOf(statistics.channel(i)));
    std::vector<std::size_t> live = liveChannels(channels, faults);
    ShortList list(", ");
    bool tooLarge = false;
    for (const std::size_t i : live)
        if (const PowerStatistics::Channel& totals = statistics.channel(i); totals.leftOut > 0) {
            list.add(channels[i].label + " " + std::to_string(totals.leftOut) + " of " +
                     std::to_string(totals.leftOut + totals.samples));
            tooLarge |= totals.tooLarge;
        }
    if (!list.empty())
        std::fprintf(stderr, "tracery-scope: samples left out, missing%s infinite%s: %s\n", tooLarge ? "," : " or",
                     tooLarge ? " or too large to square" : "", list.text().c_str());
    return live;
}

std::string tableOf(const PowerStatistics& statistics, const std::vector<ChosenChannel>& channels,
                    const std::vector<std::size_t>& live)
{
    std::string text = "channel,level [dB],above [%]\n";
    for (const std::size_t i : live)
        for (const auto& [level, percent] : statistics.curve(i))
            text += csvField(channels[i].label) + ',' + computedText(level) + ',' + computedText(percent) + '\n';
    return text;
}

Figure figureOf(const PowerStatistics& statistics, const std::vector<ChosenChannel>& channels,
                const std::vector<std::size_t>& live, const CcdfOptions& options)
{
    Panel panel;
    panel.yLabel = "Samples above";
    panel.yUnit = "%";
    panel.yMax = 100;
    panel.yDecades = true;
    double least = 100, farthest = 0;
    for (const std::size_t i : live) {
        const PowerStatistics::Channel& totals = statistics.channel(i);
        const double rarest = 100 / static_cast<double>(totals.samples);
        const double peak = decibels(totals.peak / totals.average());
        Trace trace{.label = channels[i].label, .points = {}};
        for (const auto& [level, percent] : statistics.curve(i))
            if (percent > 0)
                trace.points.push_back({level, percent});
        // The strongest sample is above all levels below it, and none is above it.
        trace.points.push_back({peak, std::min(rarest, trace.points.empty() ? 100 : trace.points.back().y)});
        trace.points.push_back({peak, 0});
        panel.traces.push_back(std::move(trace));
        least = std::min(least, rarest);
        farthest = std::max(farthest, peak);
    }
    panel.yMin = std::max(kLeastPercent, std::pow(10, std::floor(std::log10(least))));

    // The power of a complex Gaussian signal is spread exponentially.
    const double end = 10 * std::log10(std::log(100 / panel.yMin));
    Trace reference{.label = "complex Gaussian", .points = {}, .reference = true};
    for (int i = 0; i * kReferenceStep <= end + kReferenceStep; ++i)
        reference.points.push_back({i * kReferenceStep, 100 * std::exp(-std::pow(10, i * kReferenceStep / 10))});
    panel.traces.push_back(std::move(reference));

    Figure figure;
    options.applyTo(figure);
    figure.title = headingOf(options.title, options.file);
    figure.xLabel = "Power above average";
    figure.xUnit = "dB";
    figure.xMin = 0;
    figure.xMax = comfortableLimits(0, std::max(end, farthest)).high;
    figure.panels.push_back(std::move(panel));
    return figure;
}

/// As four decimals show it, without a sign before zero.
double shown(double level) { return std::round(level * 1e4) / 1e4 + 0.0; }

void printTotals(std::FILE* out, const PowerStatistics& statistics, const std::vector<ChosenChannel>& channels,
                 const std::vector<std::size_t>& live)
{
    for (const std::size_t i : live) {
        const PowerStatistics::Channel& totals = statistics.channel(i);
        const std::string unit = squared(channels[i].unit);
        const auto line = [&](const char* name, double power) {
            std::fprintf(out, "  %-14s %-12.6g %s%s(%.4f %s)\n", name, power, unit.c_str(), unit.empty() ? "" : " ",
                         shown(decibels(power)),
                         levelText(LevelUnit::Decibel, SpectrumScale::Power, channels[i].unit).c_str());
        };
        std::fprintf(out, "%s: %llu %s\n", channels[i].label.c_str(), static_cast<unsigned long long>(totals.samples),
                     totals.samples == 1 ? "sample" : "samples");
        line("average power", totals.average());
        line("peak power", totals.peak);
        std::fprintf(out, "  %-14s %.4f dB\n  %-14s %.4f %%\n", "PAPR", shown(decibels(totals.peak / totals.average())),
                     "above average", 100 * static_cast<double>(totals.above) / static_cast<double>(totals.samples));
    }
}

} // namespace

void runCcdf(const CcdfOptions& options)
{
    const Recordings recordings = openAll({options.file}, options.rate);
    Recording& recording = *recordings[0];
    const Output output = chooseOutput(options.output, {options.file}, "-ccdf.png", Output::Kinds::PicturesAndTables,
                                       options.width, options.height);
    const std::vector<ChosenChannel> channels = chooseChannels(recordings, options.channels);
    requireMeasurable(channels.size(), static_cast<std::size_t>(options.bins), "--bins");
    std::vector<std::size_t> numbers;
    for (const ChosenChannel& chosen : channels)
        numbers.push_back(chosen.channel);

    PowerStatistics statistics(recording.info().channels.size(), numbers, options.bins, options.resolutionDecibels);
    StepLengths lengths;
    Block block;
    for (StretchReader reader(recording, options.stretch); reader.next(block);) {
        statistics.add(block.real, block.imag);
        if (!recording.info().rate)
            lengths.add(block.times);
    }
    const std::string uneven = lengths.requireEven(
        recording, "shares of samples are not shares of the time there; try a stretch of even ones (--from, --span)");
    if (!uneven.empty())
        tellTakenAsEven(recording, uneven);
    const std::vector<std::size_t> live = check(statistics, channels);
    for (StretchReader reader(recording, options.stretch); reader.next(block);)
        statistics.countAbove(block.real, block.imag);

    if (output.isTable)
        writeText(output.path, tableOf(statistics, channels, live));
    else
        writeFigure(figureOf(statistics, channels, live, options), output.path);
    announce(output.path);
    printTotals(output.report(), statistics, channels, live);
}

} // namespace scope
