#include "sources.h"

#include "commands.h"

#include <charconv>
#include <limits>

namespace scope {

Recordings openAll(const std::vector<std::string>& files, std::optional<double> rate)
{
    Recordings recordings;
    for (const std::string& file : files)
        recordings.push_back(openRecording(file, {rate}));
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

TriggerSource findTriggerSource(const Recordings& recordings, const std::string& wanted)
{
    std::size_t number = 0;
    for (std::size_t port = 0; port < recordings.size(); ++port) {
        const auto& channels = recordings[port]->info().channels;
        for (std::size_t c = 0; c < channels.size(); ++c)
            if (wanted.empty() || meansChannel(wanted, ++number, channels[c].name))
                return {port, c, recordings[port]->range()};
    }
    throw UsageError("--source: there is no channel '" + wanted + "'; there are " + channelNames(recordings));
}

BatchReader openBatches(const std::vector<std::string>& files, std::optional<double> rate, const TriggerSource& source,
                        double from, std::size_t steps)
{
    return {openRecording(files[source.port], {rate}), from, std::numeric_limits<double>::infinity(), steps};
}

std::unique_ptr<TriggerScan> makeScan(const std::vector<std::string>& files, std::optional<double> rate,
                                      const TriggerSource& source, const TriggerSettings& settings, double from,
                                      double span, std::size_t blockSteps)
{
    if (!(span > 0))
        throw UsageError("--span must be positive");
    SignalRange range{0, 1, 0};
    if (settings.needsRange()) {
        range = measureRange(openBatches(files, rate, source, from), source.channel, settings.part);
        if (range.finite == 0)
            throw UsageError("nothing triggers: the trigger channel has only gaps: no number in it");
    }
    auto scan =
        std::make_unique<TriggerScan>(openBatches(files, rate, source, from, blockSteps), source.channel, from, span);
    configure(scan->controller(), settings, range);
    return scan;
}

} // namespace scope
