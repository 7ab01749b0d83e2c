#pragma once

#include "CacheFile.h"
#include "CaptureSource.h"

#include <memory>

namespace tracery::captures {

/// A capture whose samples are in a file: a recording, where they lie, or a cache file.
/// info, axis  as the capture tells them
/// samples     the recording itself, or the file that the index describes
std::shared_ptr<const CaptureSource> makeFileSource(recordings::RecordingInfo info, std::optional<TimeAxis> axis,
                                                    CacheIndex index, std::unique_ptr<StepFile> samples);

} // namespace tracery::captures
