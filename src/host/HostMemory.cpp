#include <tracery/host/HostArray.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>

namespace tracery {

void* allocateMemory(std::size_t bytes)
{
    void* memory = std::malloc(bytes != 0 ? bytes : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* allocateZeros(std::size_t bytes)
{
    // calloc lets large arrays stay untouched pages until they are written.
    void* memory = std::calloc(bytes != 0 ? bytes : 1, 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void freeMemory(void* memory) noexcept { std::free(memory); }

double getNaN() noexcept { return std::numeric_limits<double>::quiet_NaN(); }
double getInf() noexcept { return std::numeric_limits<double>::infinity(); }
bool isNaN(double value) noexcept { return std::isnan(value); }
bool isInf(double value) noexcept { return std::isinf(value); }

} // namespace tracery
