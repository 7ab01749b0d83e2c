// What all fuzz targets share: a limit to what one allocation may take, and failed expectations that end the program.

#include "Bytes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kLargest = std::size_t{1} << 24;
std::atomic<std::size_t> largestAllocation = ~std::size_t{0}; // the fuzzer's own may be larger

void* allocate(std::size_t bytes)
{
    if (bytes <= largestAllocation)
        if (void* memory = std::malloc(bytes != 0 ? bytes : 1))
            return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return std::malloc(bytes != 0 ? bytes : 1); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

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
    largestAllocation = kLargest;
    tracery::fuzz::runInput(bytes);
    largestAllocation = ~std::size_t{0};
    return 0;
}
