#include "UsageError.h"
#include "commands/liveChannels.h"
#include "commands/measureCommands.h"
#include "commands/output.h"
#include "display/PanelSorter.h"
#include "libraries.h"
#include "stream/StandardInput.h"
#include "stream/sources.h"

#include <tracery/basics/Text.h>
#include <tracery/basics/quantity.h>
#include <tracery/figures/Figure.h>
#include <tracery/measures/SpectrumEstimate.h>
#include <tracery/measures/peaks.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace scope {

namespace {

constexpr std::uint32_t kLongestSegment = 16384; // unless asked for
constexpr std::uint32_t kShortestSegment = 16;
constexpr std::uint64_t kAverages = 8;
constexpr double kLeastProminence = 4; // of peaks, 6 dB, unless asked for
constexpr double kMarkRoom = 0.05;     // for the marks above the highest peak, as a share of the range
constexpr double kMostDecibels = 200;  // that a picture spans; below are rounding errors

/// Whether a transform takes a fraction of a second: what it costs grows with the largest prime factor.
bool isFast(std::uint32_t length)
{
    constexpr std::uint64_t kMostWork = 1U << 26U;
    std::uint64_t rest = length, largest = 1;
    for (std::uint64_t factor = 2; factor * factor <= rest; ++factor)
        for (; rest % factor == 0; rest /= factor)
            largest = factor;
    return length * std::max(largest, rest) <= kMostWork;
}

std::uint32_t chooseSegment(const SpectrumOptions& options, const std::string& path, std::uint64_t steps)
{
    if (steps < options.segment.value_or(kShortestSegment))
        throw UsageError(path + ": " + std::to_string(steps) + " samples are too few for a segment of " +
                         std::to_string(options.segment.value_or(kShortestSegment)));
    std::uint32_t length = options.segment.value_or(kLongestSegment);
    if (options.segment) {
        while (!isFast(length))
            --length;
        if (length < *options.segment)
            throw UsageError("--segment: the transform of " + std::to_string(*options.segment) +
                             " samples is slow, for their number has a large prime factor; " + std::to_string(length) +
                             " is not");
        return length;
    }
    for (; length > kShortestSegment; length /= 2) {
        const double hop = std::max(1.0, length * (1 - options.overlapPercent / 100));
        const double averages = (static_cast<double>(steps) - length) / hop + 1;
        if (averages >= static_cast<double>(options.averages.value_or(kAverages)))
            break;
    }
    return length;
}

/// Why a channel has no segment without missing values.
std::string missingFault(Recording& recording, const Stretch& stretch, std::size_t channel)
{
    std::optional<double> firstMissing;
    bool any = false;
    const std::size_t width = recording.info().channels.size();
    Block block;
    for (StretchReader reader(recording, stretch); reader.next(block);)
        for (std::size_t i = 0; i < block.steps(); ++i) {
            const std::size_t at = i * width + channel;
            if (std::isfinite(block.real[at]) && (block.imag.empty() || std::isfinite(block.imag[at])))
                any = true;
            else if (!firstMissing)
                firstMissing = block.times[i];
        }
    if (!any || !firstMissing)
        return kOnlyMissing;
    return "has missing or infinite values in every segment, the first at " + formatQuantity(*firstMissing, "s") +
           ": try a shorter --segment, or a stretch without them (--from, --span)";
}

/// The channels that have something to show; one line, if any segment of them was left out.
/// throws  UsageError when none has
std::vector<std::size_t> check(const SpectrumEstimate& estimate, const std::vector<ChosenChannel>& channels,
                               Recording& recording, const Stretch& stretch)
{
    std::vector<std::string> faults(channels.size());
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const std::vector<double> power = estimate.power(i, SpectrumScale::Power);
        const double most = *std::max_element(power.begin(), power.end());
        if (estimate.averages(i) == 0)
            faults[i] = estimate.tooLarge(i) ? kTooLarge : missingFault(recording, stretch, channels[i].channel);
        else if (estimate.zero(i))
            faults[i] = estimate.tooLarge(i) ? kTooLarge : kZero;
        else if (!std::isfinite(most))
            faults[i] = kTooLarge;
        else if (most < std::numeric_limits<double>::min())
            faults[i] = kTooSmall;
    }
    std::vector<std::size_t> live = liveChannels(channels, faults);
    ShortList list(", ");
    bool tooLarge = false;
    for (const std::size_t i : live)
        if (estimate.leftOut(i) > 0) {
            list.add(channels[i].label + " " + std::to_string(estimate.leftOut(i)) + " of " +
                     std::to_string(estimate.averages(i) + estimate.leftOut(i)));
            tooLarge |= estimate.tooLarge(i);
        }
    if (!list.empty())
        std::fprintf(stderr, "tracery-scope: segments left out for missing%s infinite%s values: %s\n",
                     tooLarge ? "," : " or", tooLarge ? " or too large" : "", list.text().c_str());
    return live;
}

/// What is shown of one channel.
struct Curve {
    std::string label;
    std::string unit;
    std::vector<double> levels; ///< by bin
    std::vector<SpectrumPeak> peaks;
};

std::vector<Curve> makeCurves(const SpectrumEstimate& estimate, const std::vector<ChosenChannel>& channels,
                              const std::vector<std::size_t>& live, const SpectrumOptions& options,
                              std::uint32_t segment, bool complex)
{
    const std::vector<double> frequencies = estimate.frequencies();
    std::vector<Curve> curves;
    for (const std::size_t i : live) {
        std::vector<double> power = estimate.power(i, options.scale);
        const double noise = noiseProminence(estimate.independentAverages(i), power.size());
        std::vector<SpectrumPeak> peaks =
            findPeaks(frequencies, power,
                      {.window = options.window,
                       .segment = segment,
                       .complex = complex,
                       .prominence = options.prominence ? std::pow(10, *options.prominence / 10)
                                                        : std::max(kLeastProminence, noise),
                       .range = std::pow(10, -options.range / 10),
                       .most = options.peaks});
        for (double& each : power)
            each = levelOf(each, options.unit, complex);
        curves.push_back({channels[i].label, levelText(options.unit, options.scale, channels[i].unit), std::move(power),
                          std::move(peaks)});
    }
    return curves;
}

std::string tableOf(const std::vector<double>& frequencies, const std::vector<Curve>& curves)
{
    std::string text = "frequency [Hz]";
    for (const Curve& curve : curves)
        text += ',' + csvField(curve.label + (curve.unit.empty() ? "" : " [" + curve.unit + "]"));
    text += '\n';
    for (std::size_t k = 0; k < frequencies.size(); ++k) {
        text += computedText(frequencies[k]);
        for (const Curve& curve : curves)
            text += ',' + numberText(curve.levels[k]);
        text += '\n';
    }
    return text;
}

/// The power of ten of the last digit that says something of a frequency between bins.
int lastDigit(double binWidth) { return static_cast<int>(std::floor(std::log10(binWidth / 10))); }

Figure figureOf(const std::vector<double>& frequencies, const std::vector<Curve>& curves,
                const SpectrumOptions& options, double binWidth, bool complex)
{
    PanelSorter sorter;
    for (const Curve& curve : curves) {
        Trace trace{.label = curve.label, .points = {}};
        Limits seen;
        for (std::size_t k = 0; k < frequencies.size(); ++k) {
            trace.points.push_back({frequencies[k], curve.levels[k]});
            if (std::isfinite(curve.levels[k]))
                seen.extend(curve.levels[k]);
        }
        if (options.unit != LevelUnit::Linear)
            seen.low = std::max(seen.low, seen.high - kMostDecibels);
        if (!curve.peaks.empty()) {
            seen.extend(levelOf(curve.peaks[0].power, options.unit, complex)); // may be above the bins
            seen.high += kMarkRoom * (seen.high - seen.low);
        }
        for (const SpectrumPeak& peak : curve.peaks) {
            const int first = static_cast<int>(std::floor(std::log10(std::abs(peak.frequency))));
            const int digits = std::clamp(first - lastDigit(binWidth) + 1, 1, 12);
            trace.marks.push_back({{peak.frequency, levelOf(peak.power, options.unit, complex)},
                                   formatQuantity(peak.frequency, "Hz", digits)});
        }
        sorter.add(curve.unit, curve.unit, std::move(trace), seen);
    }
    Figure figure;
    options.applyTo(figure);
    figure.xLabel = "Frequency";
    figure.xUnit = "Hz";
    figure.xMin = frequencies.front();
    figure.xMax = complex ? frequencies.front() + binWidth * static_cast<double>(frequencies.size()) // one bin on
                          : frequencies.back();
    figure.panels = sorter.finish();
    for (Panel& panel : figure.panels)
        panel.yLabel = options.scale == SpectrumScale::Power ? "Power" : "Power density";
    return figure;
}

void printPeaks(std::FILE* out, const std::vector<Curve>& curves, const SpectrumOptions& options, double binWidth,
                bool complex)
{
    const bool linear = options.unit == LevelUnit::Linear;
    const int decimals = std::max(0, -lastDigit(binWidth));
    for (const Curve& curve : curves) {
        if (options.peaks > 0 && curve.peaks.empty())
            std::fprintf(out, "%s: no peaks\n", curve.label.c_str());
        else if (options.peaks > 0)
            std::fprintf(out, "%s: peaks (Hz, %s)\n", curve.label.c_str(),
                         curve.unit.empty() ? "power" : curve.unit.c_str());
        for (std::size_t i = 0; i < curve.peaks.size(); ++i)
            std::fprintf(out, linear ? "%4zu %16.*f %12.6g\n" : "%4zu %16.*f %12.2f\n", i + 1, decimals,
                         curve.peaks[i].frequency, levelOf(curve.peaks[i].power, options.unit, complex));
    }
}

} // namespace

void runSpectrum(const SpectrumOptions& options)
{
    const Recordings recordings = openAll({options.file}, options.rate);
    Recording& recording = *recordings[0];
    const RecordingInfo& info = recording.info();
    const Output output = chooseOutput(options.output, {options.file}, "-spectrum.png",
                                       Output::Kinds::PicturesAndTables, options.width, options.height);
    const std::vector<ChosenChannel> channels = chooseChannels(recordings, options.channels);
    const Sampling sampling = measureSampling(recording, options.stretch);

    const std::uint32_t segment = chooseSegment(options, info.path, sampling.steps);
    requireMeasurable(channels.size(), segment, "--segment");
    SpectrumSettings settings{.width = info.channels.size(),
                              .channels = {},
                              .complex = info.complex,
                              .rate = sampling.rate,
                              .centerFrequency = info.centerFrequency.value_or(0),
                              .segment = segment,
                              .overlapPercent = options.overlapPercent,
                              .window = options.window};
    for (const ChosenChannel& chosen : channels)
        settings.channels.push_back(chosen.channel);
    if (options.averages)
        settings.mostAverages = *options.averages;
    SpectrumEstimate estimate(settings);
    {
        EvenTimes even(info.path, sampling, settings.segment);
        Block block;
        for (StretchReader reader(recording, options.stretch); !estimate.full() && reader.next(block);) {
            even.check(block.times);
            estimate.add(block.real, block.imag);
        }
    }
    const std::vector<std::size_t> live = check(estimate, channels, recording, options.stretch);

    if (!sampling.uneven.empty())
        tellTakenAsEven(recording, sampling.uneven);

    const std::vector<Curve> curves = makeCurves(estimate, channels, live, options, settings.segment, info.complex);
    std::uint64_t averages = estimate.averages(live[0]);
    for (const std::size_t i : live)
        averages = std::min(averages, estimate.averages(i));
    const std::string summary = std::to_string(averages) + (averages == 1 ? " segment" : " segments") + " of " +
                                std::to_string(settings.segment) + " samples, " + nameOf(options.window) +
                                ", noise bandwidth " + formatQuantity(estimate.noiseBandwidth(), "Hz", 4);
    if (output.isTable) {
        writeText(output.path, tableOf(estimate.frequencies(), curves));
    } else {
        Figure figure = figureOf(estimate.frequencies(), curves, options, estimate.binWidth(), info.complex);
        figure.title = headingOf(options.title, options.file) + (options.title.empty() ? ": " + summary : "");
        writeFigure(figure, output.path);
    }
    announce(output.path);
    std::fprintf(output.report(), "%s\n", summary.c_str());
    printPeaks(output.report(), curves, options, estimate.binWidth(), info.complex);
}

} // namespace scope
