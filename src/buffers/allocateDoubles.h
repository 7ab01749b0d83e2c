#pragma once

#include <tracery/host/HostArray.h>

#include <cstdint>
#include <new>

namespace tracery {

/// Doubles for an array to come, not filled. throws  std::bad_alloc
inline HostDoubles allocateDoubles(std::uint64_t count)
{
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, sizeof(double), &bytes))
        throw std::bad_alloc();
    return HostDoubles(static_cast<double*>(allocateMemory(bytes)));
}

} // namespace tracery
