#pragma once

#include "commands/PictureOptions.h"
#include "libraries.h"
#include "stream/StretchReader.h"

#include <tracery/measures/LevelUnit.h>
#include <tracery/measures/WindowFunction.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scope {

/// What is measured, and where the result goes.
struct MeasureOptions : PictureOptions {
    std::string file;
    std::optional<double> rate;        ///< samples per second, for files that do not tell
    std::vector<std::string> channels; ///< names or numbers from 1; empty: all
    Stretch stretch;
    std::string output; ///< a picture or a table; empty: a picture named after the file and the command
};

struct SpectrumOptions : MeasureOptions {
    std::optional<std::uint32_t> segment; ///< samples; none: what gives eight averages, or as many as are wanted
    double overlapPercent = 50;
    WindowFunction window = WindowFunction::Hann;
    std::optional<std::uint64_t> averages; ///< at most; none: all there are
    SpectrumScale scale = SpectrumScale::Power;
    LevelUnit unit = LevelUnit::Decibel;
    std::size_t peaks = 5;
    double range = 100;               ///< of peaks, dB below the strongest bin
    std::optional<double> prominence; ///< of peaks, dB; none: what noise does not reach
};

/// Draws the power spectrum of a recording and prints its peaks. throws  InputError, UsageError
void runSpectrum(const SpectrumOptions& options);

struct CcdfOptions : MeasureOptions {
    double resolutionDecibels = 0.1;
    int bins = 1000;
};

/// Draws how often a recording's power is how far above its average, and prints the totals.
/// throws  InputError, UsageError
void runCcdf(const CcdfOptions& options);

} // namespace scope
