// In a file of its own, as compilers that see both a replaced operator and its use complain of the pair.

#include "support/FailingMemory.h"

#include <cstdlib>

namespace {

thread_local long allocationsLeft = -1;

void* allocate(std::size_t bytes)
{
    if (allocationsLeft >= 0 && allocationsLeft-- == 0)
        throw std::bad_alloc();
    if (void* memory = std::malloc(bytes != 0 ? bytes : 1))
        return memory;
    throw std::bad_alloc();
}

} // namespace

void tracery::test::allowAllocations(long count) { allocationsLeft = count; }

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
