// How much memory a buffer takes; that operations without it have not happened, fuzz/time_buffer.cpp tries.

#include "support/FailingMemory.h"

#include <tracery/TimeBuffer.h>

#include <gtest/gtest.h>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr auto kReal = HostComplexity::real;

TEST(TimeBufferFaultTest, MemoryIsTakenAsValuesComeOrAheadWhenItIsAskedFor)
{
    constexpr std::uint64_t kSteps = 1 << 20, kAllBytes = kSteps * 4 * sizeof(double);
    TimeBuffer buffer({kSteps}, {3}, 1);
    const std::vector<double> times(256, 1), values(768, 2);
    const TimeBuffer::Counts dims{3, 256};
    const auto add = [&] {
        buffer.AddTime(times.data(), 256, 0);
        buffer.AddValue(values.data(), dims, 0, kReal);
    };
    const auto bytesOf = [](auto&& operation) {
        const std::size_t before = bytesAllocated();
        operation();
        return bytesAllocated() - before;
    };
    EXPECT_LT(bytesOf([&] {
                  for (int i = 0; i < 40; ++i)
                      add();
              }),
              std::size_t{10240 * 4 * sizeof(double) * 5}); // the last room and those before it
    EXPECT_LT(bytesOf([&] { buffer.SetMaxNumTimeSteps({2 * kSteps}), buffer.SetMaxNumTimeSteps({kSteps}); }), 4096U);
    EXPECT_GE(bytesOf([&] { buffer.reserveCapacity(); }), kAllBytes);
    const auto addsWithoutMemory = [&] {
        const MemoryLimit limit(0, Shortage::lasting);
        for (std::uint64_t written = 0; written < kSteps + 512; written += 256)
            EXPECT_NO_THROW(add());
        EXPECT_TRUE(buffer.GetIsFull());
    };
    addsWithoutMemory();
    buffer.Clear();
    addsWithoutMemory();
    buffer.clearUptoLastTime();
    addsWithoutMemory();
    buffer.SetMaxDimensions({3}, 0);
    addsWithoutMemory();
    buffer.Clear();
    EXPECT_GE(bytesOf([&] { buffer.SetMaxNumTimeSteps({kSteps + 1}); }), kAllBytes);
    buffer.ResetBuffer({100}, {3}, {1}, 1, BufferType::SingleRate, {kReal}, false);
    EXPECT_GT(bytesOf(add), 0U) << "a new set-up holds nothing";
    add();
    EXPECT_EQ(bytesOf(add), 0U) << "a full ring needs no more";
}

} // namespace
