// In a file of its own, as compilers that see both a replaced operator and its use complain of the pair. The functions
// that arrays take their memory with are replaced, too: the program's are found before the library's.

#include "support/FailingMemory.h"

#include <tracery/host/HostArray.h>

#include <cstdlib>
#include <new>

namespace {

using tracery::test::Shortage;

thread_local long allocationsLeft = -1;
thread_local Shortage shortageToCome = Shortage::ofOneAllocation;
thread_local bool ranOut = false;
thread_local std::size_t bytesSoFar = 0;

/// throws when this allocation is to fail
void countAllocation()
{
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
    countAllocation();
    bytesSoFar += bytes;
    return checked(std::malloc(bytes != 0 ? bytes : 1));
}

} // namespace

void tracery::test::allowAllocations(long count, Shortage shortage)
{
    allocationsLeft = count;
    shortageToCome = shortage;
    if (count >= 0)
        ranOut = false;
}
bool tracery::test::memoryRanOut() { return ranOut; }
std::size_t tracery::test::bytesAllocated() { return bytesSoFar; }

void* tracery::allocateMemory(std::size_t bytes) { return allocate(bytes); }
void* tracery::allocateZeros(std::size_t bytes)
{
    countAllocation();
    return checked(std::calloc(bytes != 0 ? bytes : 1, 1));
}

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
