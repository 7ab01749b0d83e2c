#pragma once

#include "CacheFile.h"
#include "TimeRuns.h"

#include <tracery/recordings/Recording.h>

#include <functional>
#include <stdexcept>

namespace tracery::captures {

/// Enters the overview of samples that are read where they lie into `index`, which tells all else.
void buildInPlace(const StepFile& file, CacheIndex& index, const std::function<void(double)>& progress);

/// A value that has no number of the type it was to be stored in.
struct NoSuchNumber {};

/// Why the file that samples are decoded to cannot be written.
struct CannotWrite : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// Does what throws std::runtime_error when a file cannot be written.
template <class Action>
void writing(Action&& action)
{
    try {
        action();
    } catch (const std::runtime_error& error) {
        throw CannotWrite(error.what());
    }
}

/// Reads a recording to its end, writes its samples to a cache file and enters all into `index`, which tells layout,
/// channels and whether steps have times of their own. The file is not kept yet.
/// start   of the recording
/// throws  NoSuchNumber; CannotWrite; as Recording::read
void buildDecoded(recordings::Recording& recording, const Time& start, basics::WholeFile& file, CacheIndex& index,
                  const std::function<void(double)>& progress);

} // namespace tracery::captures
