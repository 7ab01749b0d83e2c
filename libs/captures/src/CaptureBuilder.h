#pragma once

#include "CacheFile.h"
#include "TimeRuns.h"

#include <tracery/recordings/Recording.h>

#include <functional>

namespace tracery::captures {

/// Enters the overview of samples that are read where they lie into `index`, which tells all else.
void buildInPlace(const StepFile& file, CacheIndex& index, const std::function<void(double)>& progress);

/// A value that has no number of the type it was to be stored in.
struct NoSuchNumber {};

/// Reads a recording to its end, writes its samples to a cache file and enters all into `index`, which tells layout,
/// channels and whether steps have times of their own. The file is not kept yet.
/// start   of the recording
/// throws  NoSuchNumber; std::runtime_error when the file cannot be written; as Recording::read
void buildDecoded(recordings::Recording& recording, const Time& start, basics::WholeFile& file, CacheIndex& index,
                  const std::function<void(double)>& progress);

} // namespace tracery::captures
