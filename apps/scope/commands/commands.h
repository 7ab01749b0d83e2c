#pragma once

#include "UsageError.h"
#include "commands/PictureOptions.h"
#include "libraries.h"

#include <tracery/AbstractTimeDomainPlotter.h>
#include <tracery/measures/TriggerSettings.h>

#include <optional>
#include <string>
#include <vector>

namespace scope {

struct InfoOptions {
    std::vector<std::string> files;
    std::optional<double> rate;
};

/// Prints what a recording holds. throws  InputError
void runInfo(const InfoOptions& options);

struct ViewOptions : PictureOptions {
    std::vector<std::string> files;
    std::optional<double> rate;             ///< samples per second, for files that do not tell
    std::string output;                     ///< empty: the first file's name with .png, in the current folder
    std::vector<std::string> channels;      ///< names or numbers from 1; empty: all
    std::optional<double> from;             ///< seconds; the recording's start when missing
    std::optional<double> span;             ///< seconds; to the recording's end when missing
    bool stack = false;                     ///< every channel in axes of its own
    std::optional<TriggerSettings> trigger; ///< none: the whole window, untriggered
    std::uint64_t nth = 1;                  ///< which triggered window, from 1
    std::size_t blockSteps = 1024;          ///< steps handed to the detector at once
    std::optional<tracery::TimeOverrunModeEnum> overrun; ///< stream without trigger, the window following the data
    std::optional<double> until;                         ///< where streaming stops; the recording's end when missing
};

/// Draws a stretch of recordings and prints where the picture is. throws  InputError, UsageError
void runView(const ViewOptions& options);

struct EventsOptions {
    std::string file;
    std::optional<double> rate;
    std::optional<double> from;
    std::optional<double> span; ///< of a window; a tenth of the recording when missing
    TriggerSettings trigger;
    std::size_t blockSteps = 1024;
    bool json = false;
};

struct ClassesOptions {
    std::string name;   ///< with or without packages; empty: all
    std::string module; ///< the file of another module; empty: the library
};

/// Prints the classes that a module publishes as tables. throws  UsageError
void runClasses(const ClassesOptions& options);

/// Prints every trigger event and every window shown, and totals that add up. throws  InputError, UsageError
void runEvents(const EventsOptions& options);

} // namespace scope
