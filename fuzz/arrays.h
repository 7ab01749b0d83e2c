#pragma once

#include "Bytes.h"

#include <tracery/host/Arrays.h>

#include <vector>

namespace tracery::fuzz {

using Extents = std::vector<std::uint64_t>;

/// Of few elements; those of an empty array may be huge.
inline Extents anyExtents(Bytes& bytes)
{
    constexpr std::uint64_t kHuge = std::uint64_t{1} << 31;
    constexpr std::uint64_t kSome[] = {0, 1, 1, 1, 2, 2, 3, 4, 5, 8, 17, kHuge, kHuge * kHuge};
    Extents extents(bytes.below(4) != 0 ? 2 : 1 + bytes.below(5));
    std::uint64_t count = 1;
    for (auto& extent : extents) {
        extent = bytes.oneOf(kSome);
        count = count != 0 && extent > 300 / count ? 0 : count * extent;
    }
    if (count == 0)
        extents.front() = 0;
    return extents;
}

/// Doubles of any kind, in even steps or each its own.
inline HostArrayPtr numbersOf(Bytes& bytes, HostComplexity complexity, const Extents& extents)
{
    HostArrayPtr array(createNumericArray(extents.size(), extents.data(), HostClassID::double_, complexity));
    for (const std::span<double> part : {realValues(array.get()), imagValues(array.get())}) {
        double value = bytes.number();
        const double step = bytes.number();
        const bool even = bytes.flag();
        for (std::size_t i = 0; i < part.size(); ++i) {
            part[i] = value;
            value = even || i > 16 ? value + step : bytes.number();
        }
    }
    return array;
}

} // namespace tracery::fuzz
