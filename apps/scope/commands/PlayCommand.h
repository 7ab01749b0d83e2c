#pragma once

#include "commands/PictureOptions.h"
#include "libraries.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/measures/TriggerSettings.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scope {

struct PlayOptions : PictureOptions {
    std::string file; ///< "-" for standard input
    std::optional<double> rate;
    std::string format = "csv"; ///< of standard input
    std::size_t columns = 1;    ///< of raw standard input
    double rateFactor = 1;
    double refresh = 0.05;             ///< seconds between redraws
    std::string folder;                ///< of the pictures; empty: text on standard output
    std::uint64_t frames = 0;          ///< ends after so many; 0: with the recording
    std::vector<std::string> channels; ///< names or numbers from 1; empty: all
    std::optional<double> from;        ///< seconds; the recording's start when missing
    std::optional<double> span;        ///< seconds; a tenth of the recording when missing, 1 s of standard input
    tracery::TimeOverrunModeEnum overrun = tracery::TimeOverrunModeEnum::Scroll;
    std::optional<TriggerSettings> trigger;
};

/// Plays a recording in real time, as a running scope shows it, and prints totals. throws  InputError, UsageError
void runPlay(const PlayOptions& options);

} // namespace scope
