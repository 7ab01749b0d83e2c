#pragma once

#include <cstddef>

namespace tracery::test {

/// How long memory is short once it has run out.
enum class Shortage { ofOneAllocation, lasting };

/// Lets this thread allocate `count` times, with operator new or as arrays do, before allocations fail; negative for no
/// end. Works in programs that FailingMemory.cpp is part of.
void allowAllocations(long count, Shortage shortage = Shortage::ofOneAllocation);
/// Whether an allocation has failed since.
bool memoryRanOut();
/// From now on allocations above `largest` bytes fail, and with operator new those past `most` in all.
void limitBytes(std::size_t largest = ~std::size_t{0}, std::size_t most = ~std::size_t{0});
/// How many bytes this thread has allocated in all, freed or not.
std::size_t bytesAllocated();

/// Memory for so many allocations, for as long as this lives.
struct MemoryLimit {
    MemoryLimit(long allocations, Shortage shortage) { allowAllocations(allocations, shortage); }
    ~MemoryLimit() { allowAllocations(-1); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
};

} // namespace tracery::test
