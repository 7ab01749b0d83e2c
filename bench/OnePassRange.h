#pragma once

#include <span>

namespace tracery::bench {

/// Greatest minus least value, in one pass: what memory and the vector unit allow for work that looks at
/// every double once. The limit to hold scans against. Knows nothing of NaN. Uses AVX2 where there is AVX2.
double onePassRange(std::span<const double> data);

} // namespace tracery::bench
