#pragma once

#include "CaptureView.h"
#include "StepFile.h"

#include <tracery/basics/WholeFile.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tracery::captures {

/// What a cache file tells about a recording: it comes behind the samples, if there are any.
struct CacheIndex {
    std::string recording; ///< path
    FileState state;       ///< of the file that was read
    std::uint64_t contentHash = 0;
    SampleLayout layout; ///< without a path when the samples are in the cache file
    std::uint64_t channels = 1;
    bool complex = false;
    bool ownTimes = false;
    std::int64_t steps = 0;
    std::vector<std::byte> tables;          ///< overviews, chunk by chunk
    std::vector<std::vector<TimeRun>> runs; ///< of each chunk, with times of their own
    std::vector<std::uint32_t> hashes;      ///< of pieces of samples, and of offsets, that are in the cache file

    std::int64_t chunks() const { return (steps + kChunkSteps - 1) / kChunkSteps; }
};

/// Samples in a cache file lie chunk by chunk, each chunk's steps and then their offsets; pieces of so many steps have a
/// hash.
inline constexpr std::int64_t kPieceSteps = 256;
inline constexpr std::int64_t kPiecesOfChunk = kChunkSteps / kPieceSteps;

/// throws  std::runtime_error that tells what is wrong with the bytes, as do all
CacheIndex parseIndex(std::span<const std::byte> bytes);
std::vector<std::byte> indexBytes(const CacheIndex& index);

/// Reads the index of a cache file.
CacheIndex readIndex(const StepFile& file);
/// Whose cache file it is, without reading all of the index.
std::string readRecordingName(const StepFile& file);
/// Writes the index and what tells where it is. False when the file cannot be written.
bool writeIndex(basics::WholeFile& file, std::uint64_t position, const CacheIndex& index);

} // namespace tracery::captures
