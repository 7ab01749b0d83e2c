#pragma once

#include <tracery/recordings/SampleLayout.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tracery::recordings {

/// How the samples of a SigMF data file are stored.
struct SampleFormat {
    bool complex = false;       ///< each is a pair: in-phase, quadrature
    std::size_t numberSize = 0; ///< bytes of one number
    /// Fills `out` with the numbers that begin `stride` bytes apart at `bytes`, integers scaled to [-1, 1].
    void (*decode)(const char* bytes, std::size_t stride, std::span<double> out) = nullptr;

    SampleLayout layout; ///< of the numbers: type, byte order and scale

    std::size_t sampleSize() const { return complex ? 2 * numberSize : numberSize; }
};

/// The format of a name such as "cf32_le": c or r for complex or real, then f32, f64, i32, i16, u32, u16 with
/// _le or _be, or i8, u8. None for any other text.
std::optional<SampleFormat> sampleFormat(std::string_view name);

} // namespace tracery::recordings
