#pragma once

#include <complex>
#include <cstddef>
#include <span>

namespace tracery {

/// Samples that lie evenly in memory; owns nothing.
struct SampleView {
    const double* first = nullptr; ///< the first sample
    std::size_t count = 0;         ///< of samples
    std::ptrdiff_t stride = 1;     ///< doubles from one sample to the next

    /// Sample i of count; nothing is checked.
    const double& operator[](std::size_t i) const { return first[static_cast<std::ptrdiff_t>(i) * stride]; }
};

/// The real parts of complex samples.
inline SampleView realPartOf(std::span<const std::complex<double>> samples)
{
    return {reinterpret_cast<const double*>(samples.data()), samples.size(), 2}; // as complex numbers may be read
}
/// The imaginary parts.
inline SampleView imagPartOf(std::span<const std::complex<double>> samples)
{
    if (samples.empty()) // of which there may be no first one
        return {nullptr, 0, 2};
    return {reinterpret_cast<const double*>(samples.data()) + 1, samples.size(), 2};
}

/// A value, and when it was.
struct TimedSample {
    double time;  ///< seconds
    double value; ///< signal units
};

} // namespace tracery
