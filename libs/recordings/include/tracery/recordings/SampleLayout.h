#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tracery::recordings {

enum class SampleType : std::uint8_t { I8, U8, I16, U16, I24, U24, I32, U32, F32, F64, Bit };

/// How a recording's samples are stored: one step behind the other, and within a step channel by channel; of complex ones
/// in-phase before quadrature. Bits are packed, the first channel's the lowest of the step's first byte.
/// The value of a stored number is (number - bias) / divisor * scale + offset, in this order; an offset of 0 is not added.
struct SampleLayout {
    std::string path;           ///< the file that has the samples as they are; empty when they must be decoded
    std::uint64_t position = 0; ///< of the first step, bytes
    SampleType type = SampleType::F64;
    bool bigEndian = false;
    double bias = 0;
    double divisor = 1;
    double scale = 1;
    double offset = 0;

    friend bool operator==(const SampleLayout&, const SampleLayout&) = default;
};

} // namespace tracery::recordings
