#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace tracery::measures {

enum class WindowFunction { Rectangular, Hann, Hamming, BlackmanHarris, FlatTop };

/// The name that options and headings use: "hann", "flat-top".
const char* nameOf(WindowFunction window);

/// Weights of cos(2πkn/L), k = 0, 1, …: all windows are sums of such terms.
std::array<double, 5> windowTerms(WindowFunction window);

/// Samples of a window in its periodic form: one sample more would begin the next period.
std::vector<double> windowSamples(WindowFunction window, std::size_t length);

} // namespace tracery::measures
