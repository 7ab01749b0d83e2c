#pragma once

#include "libraries.h"

#include <tracery/measures/TriggerScan.h>
#include <tracery/recordings/Recording.h>

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace scope {

using Recordings = std::vector<std::unique_ptr<Recording>>;

/// Opens all files. throws  InputError
Recordings openAll(const std::vector<std::string>& files, std::optional<double> rate);

/// Whether `wanted`, a number from 1 or a name, means channel `number` (from 1, over all recordings) of this name.
bool meansChannel(const std::string& wanted, std::size_t number, const std::string& name);

/// The names of all channels, with commas.
std::string channelNames(const Recordings& recordings);

/// A channel of a recording.
struct ChosenChannel {
    std::size_t port;    ///< which recording
    std::size_t channel; ///< which of its channels
    std::string label;   ///< with the recording's name when there are several recordings
    std::string unit;
};

/// The channels that are wanted, in the order of the recordings; all when none are named.
/// throws  UsageError when a wanted channel does not exist
std::vector<ChosenChannel> chooseChannels(const Recordings& recordings, const std::vector<std::string>& wanted);

/// Says that a recording ends before a time.
std::string nothingAfter(double time, const TimeRange& range);

/// Where windows of a span are shown: an axis of times needs some of them, while one that counts from an event does not.
enum class TimeAxis { OfTimes, FromEvent };

/// throws  UsageError when a window of the span, anywhere from one time to another, is too short to tell its times apart
void requireResolution(double span, double from, double to, TimeAxis axis);

/// Where the trigger signal is.
struct TriggerSource {
    std::size_t port = 0; ///< which recording
    std::size_t channel = 0;
    TimeRange range{}; ///< of the recording
};

/// wanted  a channel's name or number; empty: the first one
/// option  what `wanted` was given with, for the message
/// throws  UsageError when there is no such channel
TriggerSource findTriggerSource(const Recordings& recordings, const std::string& wanted,
                                const char* option = "--source");

/// The settings' source, or else the first channel drawn. throws  UsageError
TriggerSource findTriggerSource(const Recordings& recordings, const TriggerSettings& settings,
                                const std::vector<std::string>& channels);

/// Batches of the source's recording, from `from` on.
BatchReader openBatches(const std::vector<std::string>& files, std::optional<double> rate, const TriggerSource& source,
                        double from, std::size_t steps = 4096,
                        double seconds = std::numeric_limits<double>::infinity());

/// Reads the source's recording for the range of the trigger signal, when a level is a share of it; else some range.
/// throws  UsageError when the channel has no such part, or nothing but gaps
SignalRange rangeForLevels(const std::vector<std::string>& files, const Recording& recording,
                           std::optional<double> rate, const TriggerSource& source, const TriggerSettings& settings,
                           double from);

/// A scan of the source's recording with its controller set up; reads the recording once before when a level is a
/// share of the signal's range.
std::unique_ptr<TriggerScan> makeScan(const std::vector<std::string>& files, std::optional<double> rate,
                                      const TriggerSource& source, const TriggerSettings& settings, double from,
                                      double span, std::size_t blockSteps);

} // namespace scope
