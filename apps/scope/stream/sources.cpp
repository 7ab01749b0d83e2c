#include "stream/sources.h"

#include "UsageError.h"
#include "libraries.h"
#include "stream/StandardInput.h"

#include <tracery/basics/quantity.h>
#include <tracery/figures/Figure.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <limits>

namespace scope {

Recordings openAll(const std::vector<std::string>& files, std::optional<double> rate)
{
    Recordings recordings;
    for (const std::string& file : files)
        recordings.push_back(openInput(file, {rate}));
    return recordings;
}

bool meansChannel(const std::string& wanted, std::size_t number, const std::string& name)
{
    if (wanted == name)
        return true;
    std::size_t parsed = 0;
    const auto [end, error] = std::from_chars(wanted.data(), wanted.data() + wanted.size(), parsed);
    return error == std::errc() && end == wanted.data() + wanted.size() && parsed == number;
}

std::string channelNames(const Recordings& recordings)
{
    std::string names;
    for (const auto& recording : recordings)
        for (const Channel& channel : recording->info().channels)
            names += (names.empty() ? "" : ", ") + channel.name;
    return names;
}

std::vector<ChosenChannel> chooseChannels(const Recordings& recordings, const std::vector<std::string>& wanted)
{
    std::vector<bool> found(wanted.size());
    std::vector<ChosenChannel> channels;
    std::size_t number = 0;
    for (std::size_t port = 0; port < recordings.size(); ++port) {
        const RecordingInfo& info = recordings[port]->info();
        const std::string prefix =
            recordings.size() > 1 ? std::filesystem::path(info.path).stem().string() + ": " : std::string();
        for (std::size_t c = 0; c < info.channels.size(); ++c) {
            const Channel& channel = info.channels[c];
            ++number;
            bool chosen = wanted.empty();
            for (std::size_t i = 0; i < wanted.size(); ++i)
                if (meansChannel(wanted[i], number, channel.name))
                    chosen = found[i] = true;
            if (chosen)
                channels.push_back({port, c, prefix + channel.name, channel.unit});
        }
    }
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (!found[i])
            throw UsageError("--channels: there is no channel '" + wanted[i] + "'; there are " +
                             channelNames(recordings));
    return channels;
}

std::string nothingAfter(double time, const TimeRange& range)
{
    return "no samples at or after " + formatQuantity(time, "s") + ": the recording ends at " +
           formatQuantity(range.last, "s");
}

TriggerSource findTriggerSource(const Recordings& recordings, const std::string& wanted, const char* option)
{
    std::size_t number = 0;
    for (std::size_t port = 0; port < recordings.size(); ++port) {
        const auto& channels = recordings[port]->info().channels;
        for (std::size_t c = 0; c < channels.size(); ++c)
            if (wanted.empty() || meansChannel(wanted, ++number, channels[c].name))
                return {port, c, recordings[port]->range()};
    }
    throw UsageError(std::string(option) + ": there is no channel '" + wanted + "'; there are " +
                     channelNames(recordings));
}

TriggerSource findTriggerSource(const Recordings& recordings, const TriggerSettings& settings,
                                const std::vector<std::string>& channels)
{
    return settings.source.empty() && !channels.empty() ? findTriggerSource(recordings, channels[0], "--channels")
                                                        : findTriggerSource(recordings, settings.source);
}

BatchReader openBatches(const std::vector<std::string>& files, std::optional<double> rate, const TriggerSource& source,
                        double from, std::size_t steps, double seconds)
{
    return {openInput(files[source.port], {rate}), from, std::numeric_limits<double>::infinity(), steps, seconds};
}

SignalRange rangeForLevels(const std::vector<std::string>& files, const Recording& recording,
                           std::optional<double> rate, const TriggerSource& source, const TriggerSettings& settings,
                           double from)
{
    if (settings.part == tracery::TDTC::ComplexityEnum::Imaginary && !recording.info().complex)
        throw UsageError(recording.info().path + ": the trigger channel is real: it has no imaginary part");
    if (!settings.needsRange())
        return {{0, 1}, 0};
    const SignalRange range = measureRange(openBatches(files, rate, source, from), source.channel, settings.part);
    if (range.finite == 0)
        throw UsageError("nothing triggers: the trigger channel has only gaps: no number in it");
    return range;
}

void requireResolution(double span, double from, double to, TimeAxis axis)
{
    const double latest = std::max(std::abs(from), std::abs(to));
    const double spacing = std::nextafter(latest, std::numeric_limits<double>::infinity()) - latest;
    if (!(span >= (axis == TimeAxis::OfTimes ? narrowestSpan(from, to) : spacing)))
        throw UsageError("a span of " + formatQuantity(span, "s") + " is too short to tell times apart at " +
                         formatQuantity(latest, "s"));
}

std::unique_ptr<TriggerScan> makeScan(const std::vector<std::string>& files, std::optional<double> rate,
                                      const TriggerSource& source, const TriggerSettings& settings, double from,
                                      double span, std::size_t blockSteps)
{
    if (!(span > 0))
        throw UsageError("the recording has a single time: say with --span how much time a window shows");
    requireResolution(span, from, source.range.last, TimeAxis::FromEvent);
    const auto recording = openInput(files[source.port], {rate});
    if (from > source.range.last)
        throw UsageError(recording->info().path + ": " + nothingAfter(from, source.range));
    // Levels that follow the signal do so batch by batch: batches are short beside the span that they look back on.
    constexpr double kBatchesASpan = 16;
    const double seconds = settings.autoLevel() ? span / kBatchesASpan : std::numeric_limits<double>::infinity();
    const SignalRange range = rangeForLevels(files, *recording, rate, source, settings, from);
    auto scan = std::make_unique<TriggerScan>(openBatches(files, rate, source, from, blockSteps, seconds),
                                              source.channel, from, span);
    configure(scan->controller(), settings, range);
    return scan;
}

} // namespace scope
