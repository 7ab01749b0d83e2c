#pragma once

#include "MendedFile.h"

#include <optional>

namespace tracery::recordings {

/// Compares the length that a WAV file (RIFF, RIFX or RF64) gives for its samples with the file itself.
/// Decoders quietly take what there is of a file that was cut short, and disagree on one whose writer never
/// came back to fill in the length, which is then 0, has all bits set or is just below 2 or 4 GiB, or could not,
/// as it passes 32 bits and only its lower ones are there. Returns a head with the length in those cases, which of more than 4 GiB is that
/// of an RF64 file; none for all other files. throws  InputError for a file cut short, saying where it ends and
/// where it should, and for too many samples behind a big-endian head
std::optional<Mend> mendWavLength(const File& file);

/// Where the samples of a WAV file begin, and whether their bytes run from the highest to the lowest; none for all other
/// files.
struct WavData {
    std::uint64_t start = 0;
    bool bigEndian = false;
};
std::optional<WavData> findWavData(const File& file);

} // namespace tracery::recordings
