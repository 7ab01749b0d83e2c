// What all fuzz targets share: limits to what they may allocate, and failed expectations that end the program.

#include "Bytes.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kLargest = std::size_t{1} << 24, kMost = std::size_t{1} << 29;
std::atomic<bool> limited = false; // the fuzzer's own allocations are not
std::atomic<std::size_t> held = 0;

void* allocate(std::size_t bytes) noexcept
{
    if (limited && (bytes > kLargest || held + bytes > kMost))
        return nullptr;
    void* memory = std::malloc(bytes != 0 ? bytes : 1);
    held += malloc_usable_size(memory);
    return memory;
}

void* allocateOrThrow(std::size_t bytes)
{
    if (void* memory = allocate(bytes))
        return memory;
    throw std::bad_alloc();
}

void release(void* memory) noexcept
{
    held -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

void* operator new(std::size_t bytes) { return allocateOrThrow(bytes); }
void* operator new[](std::size_t bytes) { return allocateOrThrow(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return allocate(bytes); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=64"; }
extern "C" const char* __ubsan_default_options();
extern "C" const char* __ubsan_default_options() { return "print_stacktrace=1"; }
// NOLINTEND(bugprone-reserved-identifier)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    GTEST_FLAG_SET(throw_on_failure, true);
    tracery::fuzz::Bytes bytes(data, size);
    limited = true;
    tracery::fuzz::runInput(bytes);
    limited = false;
    return 0;
}
