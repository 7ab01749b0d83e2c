#pragma once

#include <tracery/captures/Capture.h>
#include <tracery/recordings/Recording.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tracery::captures {

/// $XDG_CACHE_HOME/tracery, or ~/.cache/tracery; empty when there is neither.
std::string defaultCacheFolder();

struct CaptureOptions {
    recordings::OpenOptions recording;
    /// When the recording began. Its own times count from there, or are what they are if nothing is said.
    Time start;
    /// Where overviews are kept, and samples that cannot be read where they lie. Empty: nowhere.
    std::string cacheFolder = defaultCacheFolder();
    /// What may lie there, bytes; what was used longest ago goes first.
    std::uint64_t mostCacheBytes = std::uint64_t{16} << 30;
    /// Told how much of the building is done, 0 to 1. What it throws ends the building, and nothing is left.
    std::function<void(double)> progress;
    /// Told, in a line, of what is no error: an overview that is made anew, one that cannot be kept.
    std::function<void(const std::string&)> notice;
};

/// Opens a recording at random access. The first time, its overview is built in one pass, and kept; later ones read it,
/// unless the file is another one since. Samples stay where they are if they can be read there, else they are decoded once,
/// in their own type, beside the overview.
/// Files are read, never mapped: a file that is cut while a program looks at its mapping ends the program.
/// throws  recordings::InputError, as openRecording; TimeError for a rate or times that cannot be told exactly
Capture openCapture(const std::string& path, const CaptureOptions& options = {});

/// A file of the cache.
struct CacheEntry {
    std::string path;
    std::string recording; ///< whose it is; empty when that cannot be read
    std::uint64_t bytes = 0;
    std::int64_t usedAt = 0; ///< seconds since the epoch
};

/// What is kept, the latest used first. An absent folder is empty.
/// throws  std::runtime_error when it cannot be read
std::vector<CacheEntry> listCache(const std::string& folder = defaultCacheFolder());
/// Removes all of it. Captures that are open stay so.
/// returns  bytes
std::uint64_t clearCache(const std::string& folder = defaultCacheFolder());

} // namespace tracery::captures
