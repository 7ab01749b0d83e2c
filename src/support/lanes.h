#pragma once

#include "support/vectorUnit.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tracery {

/// Vectors of doubles, and the masks that comparing them gives: as wide as any processor's, and as AVX2's. Passed by
/// reference, because the wide ones have no one way to be passed by value.
struct TwoLanes {
    using Lanes [[gnu::vector_size(16)]] = double;
    using Mask [[gnu::vector_size(16)]] = std::int64_t;
};
struct FourLanes {
    using Lanes [[gnu::vector_size(32)]] = double;
    using Mask [[gnu::vector_size(32)]] = std::int64_t;
};

template <class Lanes>
TRACERY_INLINE void load(Lanes& lanes, const double* data)
{
    std::memcpy(&lanes, data, sizeof lanes);
}

/// One bit a lane.
TRACERY_INLINE unsigned bitsOf(const TwoLanes::Mask& mask)
{
#if defined(__SSE2__)
    __m128d lanes;
    std::memcpy(&lanes, &mask, sizeof mask);
    return static_cast<unsigned>(_mm_movemask_pd(lanes));
#else
    return static_cast<unsigned>((mask[0] & 1) | (mask[1] & 2));
#endif
}
TRACERY_INLINE unsigned bitsOf(const FourLanes::Mask& mask)
{
    TwoLanes::Mask halves[2];
    std::memcpy(halves, &mask, sizeof mask);
    return bitsOf(halves[0]) | bitsOf(halves[1]) << 2;
}

TRACERY_INLINE bool allOf(const TwoLanes::Mask& mask) { return bitsOf(mask) == 3; }
TRACERY_INLINE bool allOf(const FourLanes::Mask& mask)
{
    TwoLanes::Mask halves[2];
    std::memcpy(halves, &mask, sizeof mask);
    return allOf(halves[0] & halves[1]);
}

} // namespace tracery
