// What all fuzz targets share: limits to what they may allocate, and failed expectations that end the program.

#include "Bytes.h"
#include "support/FailingMemory.h"

#include <gtest/gtest.h>

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
    tracery::test::limitBytes(std::size_t{1} << 24, std::size_t{1} << 29); // the fuzzer's own are not
    tracery::fuzz::runInput(bytes);
    tracery::test::limitBytes();
    return 0;
}
