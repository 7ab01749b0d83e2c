#pragma once

#include "SampleFormat.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tracery::recordings {

/// What the description of a SigMF recording says about its data file.
struct SigMfMeta {
    std::string datatype;
    SampleFormat format;
    std::uint64_t channels = 1;
    std::optional<double> rate;
    std::optional<double> frequency; ///< Hz at the middle of the band when the first capture began
    std::uint64_t headerBytes = 0;   ///< before the first sample
    std::uint64_t trailingBytes = 0; ///< after the last
};

/// throws  InputError: no such file, not JSON, a field that is missing or of the wrong type
SigMfMeta readSigMfMeta(const std::string& path);

} // namespace tracery::recordings
