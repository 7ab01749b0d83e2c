// In a file of its own, as compilers that see both a replaced operator and its use complain of the pair. The functions
// that arrays take their memory with are replaced, too: the program's are found before the library's.

#include "support/FailingMemory.h"

#include <tracery/host/HostArray.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

using tracery::test::Shortage;

thread_local long allocationsLeft = -1;
thread_local Shortage shortageToCome = Shortage::ofOneAllocation;
thread_local bool ranOut = false;
thread_local std::size_t bytesSoFar = 0;
std::atomic<std::size_t> largestAllowed = ~std::size_t{0}, mostAllowed = ~std::size_t{0}, held = 0;

/// throws  std::bad_alloc when this allocation is to fail
void countAllocation(std::size_t bytes)
{
    if (bytes > largestAllowed)
        throw std::bad_alloc();
    if (allocationsLeft < 0)
        return;
    if (allocationsLeft > 0) {
        --allocationsLeft;
        return;
    }
    ranOut = true;
    if (shortageToCome == Shortage::ofOneAllocation)
        allocationsLeft = -1;
    throw std::bad_alloc();
}

void* checked(void* memory)
{
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void* allocate(std::size_t bytes)
{
    countAllocation(bytes);
    bytesSoFar += bytes;
    return checked(std::malloc(bytes != 0 ? bytes : 1));
}

/// With operator new.
void* hold(std::size_t bytes)
{
    if (bytes > mostAllowed - std::min<std::size_t>(mostAllowed, held))
        throw std::bad_alloc();
    void* memory = allocate(bytes);
    held += malloc_usable_size(memory);
    return memory;
}

void release(void* memory) noexcept
{
    held -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

void tracery::test::allowAllocations(long count, Shortage shortage)
{
    allocationsLeft = count;
    shortageToCome = shortage;
    if (count >= 0)
        ranOut = false;
}
void tracery::test::limitBytes(std::size_t largest, std::size_t most)
{
    largestAllowed = largest;
    mostAllowed = most;
}
bool tracery::test::memoryRanOut() { return ranOut; }
std::size_t tracery::test::bytesAllocated() { return bytesSoFar; }

void* tracery::allocateMemory(std::size_t bytes) { return allocate(bytes); }
void* tracery::allocateZeros(std::size_t bytes)
{
    countAllocation(bytes);
    return checked(std::calloc(bytes != 0 ? bytes : 1, 1));
}

void* operator new(std::size_t bytes) { return hold(bytes); }
void* operator new[](std::size_t bytes) { return hold(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    try {
        return hold(bytes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
