// What the model (TimeBufferModel.h, driven by fuzz/time_buffer.cpp) does not ask for.

#include "support/Expect.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <functional>
#include <limits>

using namespace tracery;
using namespace tracery::test;
using Counts = TimeBuffer::Counts;

namespace {

constexpr auto kReal = HostComplexity::real;
constexpr auto kComplex = HostComplexity::complex;
constexpr auto kPart = TimeBuffer::SamplePart::magnitude;

std::vector<double> timesOf(const TimeBuffer& buffer, std::uint64_t port = 0)
{
    HostArray *time = nullptr, *value = nullptr;
    buffer.GetTimeAndValue(port, time, value);
    const HostArrayPtr t(time), v(value);
    return realOf(time);
}

TEST(TimeBufferTest, BeforeSetUpNothingHappensWhateverTheArguments)
{
    TimeBuffer buffer;
    for (const std::uint64_t ports : {0U, 2U}) {
        buffer.AddTime(static_cast<const double*>(nullptr), 5, 77);
        buffer.addTimeAndValue(nullptr, nullptr, 9, false);
        buffer.AddValue(static_cast<const double*>(nullptr), {3}, 9, kReal);
        buffer.Clear(), buffer.ClearBackTo(0), buffer.clearUptoLastTime();
        buffer.reserveCapacity(), buffer.SetMaxNumTimeSteps({});
        buffer.SetMaxDimensions({-1}, 5);
        buffer.SetMaxDimensions(nullptr);
        buffer.SetSampleTimes(7, {}), buffer.setIsLinearInterpolation({1, 1, 1});
        HostArray* pairs = nullptr;
        std::vector<double> noLimits;
        buffer.GetTimeAndValueInterleaved(3, pairs, noLimits, 0, 0, 1, 0, 0, 7, true, 1, -1, false, false);
        EXPECT_EQ(pairs, nullptr);
        EXPECT_TRUE(timesOf(buffer, 3).empty());
        EXPECT_FALSE(buffer.isInitialized() || buffer.GetIsReady() || buffer.GetIsFull());
        EXPECT_EQ(buffer.GetLastTime(), -INFINITY);
        EXPECT_TRUE(buffer.GetSampleTimes(7).empty());
        EXPECT_TRUE(buffer.GetMaxDimensions(7).empty());
        EXPECT_EQ(buffer.GetNPorts(), ports);
        // … and after it was set up: capacities and sample times stay readable.
        EXPECT_EQ(buffer.GetMaxNumTimeSteps(), Counts(ports, 4));
        if (ports > 0) {
            EXPECT_EQ(buffer.GetSampleTimes(1), (std::vector<double>{0.5, 0.25}));
        }
        buffer.ResetBuffer({4}, {1, 1}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kReal}, true);
        buffer.addTimeAndValue(row({1}).get(), row({1}).get(), 1, true);
        buffer.SetSampleTimes(1, {0.5, 0.25});
        buffer.resetInitialized();
    }
    TimeBuffer portless({4}, {}, {}, 0, BufferType::SingleRate, {}, false);
    EXPECT_TRUE(portless.GetIsReady());
    EXPECT_EQ(failure([&] { portless.AddTime(row({1}).get(), 0); }), "InvalidPortID");
}

TEST(TimeBufferTest, BadInputIsRefusedAndChangesNothing)
{
    TimeBuffer buffer({8}, {2, 2}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kComplex}, false);
    TimeBuffer shared({9}, {1, 1}, 2), wide({4}, {2, 2}, 1);
    buffer.addTimeAndValue(row({1, 2}).get(), matrix(2, 2, {1, 2, 3, 4}).get(), 0, true);
    constexpr int kLargest = std::numeric_limits<int>::max();
    const HostArrayPtr one = row({1}), flag(createLogicalScalar(true)), text(createString("ab")), none = row({});
    const HostArray* const null = nullptr;
    const double* const noValues = nullptr;
    std::vector<double> pairs, block(8), sampleTimes{1, 2, 3};
    HostArray *time = nullptr, *value = nullptr;
    TimeBuffer::ReadPosition position;
    TimeBuffer::ReadSteps steps;
    int first = 0, last = 0;
    const auto reset = [&](Counts capacities, Counts extents, Counts nDim, std::uint64_t ports, std::size_t flags) {
        return [=, &buffer] {
            buffer.ResetBuffer(capacities, extents, nDim, ports, BufferType::MultipleRate,
                               std::vector<HostComplexity>(flags, kComplex), true);
        };
    };
    const auto drawn = [&](std::vector<double> limits, std::uint64_t channels, int samples) {
        return [=, &buffer]() mutable {
            HostArray* out = nullptr;
            buffer.GetTimeAndValueInterleaved(0, out, limits, 0, 0, 9, 0, channels, 0, true, 1, samples, false, false);
        };
    };
    const struct {
        const char* error;
        std::vector<std::function<void()>> calls;
    } cases[] = {
        {"InvalidMaxDimensions",
         {reset({5}, {2, 3, 4}, {1, 1}, 2, 2), reset({5}, {2}, {1}, 2, 2),
          [] {
              TimeBuffer({5}, {1, 1}, 0);
          },
          [] {
              TimeBuffer({5}, {1, 1, 1}, 2);
          },
          [&] {
              buffer.SetMaxDimensions({2, 2}, 0);
          },
          [&] { buffer.SetMaxDimensions({-2}, 0); }, [&] { buffer.SetMaxDimensions(one.get()); },
          [&] {
              buffer.SetMaxDimensions(matrix(2, 1, {2, NAN}).get());
          },
          [&] {
              buffer.SetMaxDimensions(matrix(2, 2, {5, 6, 1, 2}).get());
          }}},
        {"InvalidMaxNumTimeStepsSize",
         {reset({5, 6}, {2, 2, 2}, {1, 1, 1}, 3, 3),
          [] {
              TimeBuffer({5, 6}, {}, 1ULL << 50);
          },
          [&] {
              shared.SetMaxNumTimeSteps({9, 8, 7});
          }}},
        {"InvalidMaxNumTimeStepsValue",
         {[&] { buffer.SetMaxNumTimeSteps({1ULL << 61}); }, [&] { shared.SetMaxNumTimeSteps({0}); },
          [&] {
              wide.SetMaxDimensions({kLargest, kLargest}, 0);
          }}},
        {"InvalidMaxNumTimeStepsChange", {[&] {
             shared.SetMaxNumTimeSteps({9, 8});
         }}},
        {"InvalidComplexityDimension", {reset({5}, {2, 2}, {1, 1}, 2, 1)}},
        {"InvalidSampleTimes", {[&] { buffer.SetSampleTimes(sampleTimes); }, [&] { buffer.SetSampleTimes(0, {1}); }}},
        {"InvalidArgumentType",
         {[&] { buffer.setIsLinearInterpolation({1}); },
          [&] {
              buffer.setIsLinearInterpolation({1, 1, 1});
          }}},
        {"EmptyInput",
         {[&] { buffer.SetMaxDimensions(null); }, [&] { buffer.SetMaxDimensions(matrix(0, 2, {}).get()); },
          [&] { buffer.AddTime(noValues, 1, 0); }, [&] { buffer.AddTime(null, 0); },
          [&] { buffer.AddValue(null, 0, true); }, [&] { buffer.addTimeAndValue(one.get(), nullptr, 0, true); },
          [&] {
              TimeBuffer ahead({4}, {1}, 1);
              ahead.AddTime(one.get(), 0), ahead.AddValue(noValues, {1}, 0, kReal);
          }}},
        {"AddTimeError",
         {[&] { buffer.AddTime(flag.get(), 0); }, [&] { buffer.addTimeAndValue(flag.get(), one.get(), 0, true); }}},
        {"AddValueDataTypeError", {[&] { buffer.AddValue(text.get(), 0, true); }}},
        {"InvalidLimits", {drawn({0, 0, 0}, 1, 1)}},
        {"InvalidChannelID",
         {drawn({0, 0, 0, 0}, 1, 0), drawn({0, 0, 0, 0}, 0, 1),
          [&] { buffer.GetSamplesBetween(0, 9, 0, 2, false, 1.0, kPart, block); }}},
        {"InvalidPortID",
         {[&] { buffer.AddTime(one.get(), 2); }, [&] { buffer.AddTime(getRealData(one.get()), 1, 2); },
          [&] { buffer.AddValue(one.get(), 2, true); }, [&] { buffer.AddValue(getRealData(one.get()), {1}, 2, kReal); },
          [&] { buffer.addTimeAndValue(one.get(), one.get(), 2, true); }, [&] { buffer.SetMaxDimensions({1}, 2); },
          [&] { buffer.SetSampleTimes(2, sampleTimes); }, [&] { buffer.GetSampleTimes(2); },
          [&] { buffer.GetMaxDimensions(2); }, [&] { buffer.GetIndexRange(2, 0, 1, false, first, last); },
          [&] { buffer.GetTimeAndValue(2, time, value); }, [&] { buffer.GetTimeAndValue(2, time, value, 0, 1, false); },
          [&] { buffer.readAfter(2, position, steps); },
          [&] { buffer.GetSamplesAfter(0, 2, 0, false, 1, kPart, pairs); },
          [&] { buffer.GetSamplesBetween(0, 9, 2, 0, false, 1, kPart, block); }}},
        {"none", // but an empty array is no step
         {[&] { buffer.addTimeAndValue(none.get(), none.get(), 0, true); }, [&] { shared.SetToMaximumCapacity(); },
          [&] { EXPECT_EQ(buffer.GetSamplesBetween(0, 9, 0, 1, false, 1, kPart, {}), 0U); }}},
    };
    for (const auto& c : cases)
        for (const auto& call : c.calls)
            EXPECT_EQ(failure(call), c.error) << "call " << &call - c.calls.data();
    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2}));
    EXPECT_FALSE(buffer.getIsThreadSafe());
    EXPECT_EQ(buffer.GetMaxNumTimeSteps(), (Counts{8, 8}));
    EXPECT_EQ(shared.GetMaxNumTimeSteps(), (Counts{20000, 20000}));
    Counts flat;
    TimeBuffer::TransposeMaxDimensions(matrix(2, 3, {1, 4, 2, 5, 3, 6}).get(), flat);
    EXPECT_EQ(flat, (Counts{1, 2, 3, 4, 5, 6}));
}

TEST(TimeBufferTest, WindowEdgesAreWidenedByTheSpacingOfDoubles)
{
    // Around zero and among the denormals it is the smallest denormal; infinite edges have none.
    constexpr double d = std::numeric_limits<double>::denorm_min(), largest = std::numeric_limits<double>::max();
    const HostArrayPtr times = row({-2 * d, -d, 0, d, 2 * d, 3 * d, 4 * d, 5 * d});
    TimeBuffer buffer({9}, {1}, 1);
    buffer.addTimeAndValue(times.get(), times.get(), 0, true);
    const struct {
        double from, to;
        int first, last;
        bool found = true;
    } cases[] = {{0, 0, 1, 2}, // one spacing early is inside, one late is not
                 {3 * d, 3 * d, 4, 5},
                 {-INFINITY, largest, 0, 7},
                 {0, INFINITY, 1, -1, false}};
    for (const auto& c : cases) {
        int first = 0, last = 0;
        EXPECT_EQ(buffer.GetIndexRange(0, c.from, c.to, false, first, last), c.found);
        EXPECT_EQ(std::pair(first, last), std::pair(c.first, c.last)) << c.from / d;
    }
}

TEST(TimeBufferTest, BlocksOfOneChannelGoThroughFramesThatLastWithoutGapsOrRepeats)
{
    // Channel 1 of two, frames of 5 samples a second.
    TimeBuffer buffer({6}, {5, 2}, {2}, 1, BufferType::MultipleRate, {kReal}, true);
    for (double frame = 0; frame < 9; ++frame)
        buffer.addTimeAndValue(row({frame}).get(), matrix(10, 1, std::vector<double>(10, -frame)).get(), 0, true);
    std::vector<double> expected;
    buffer.GetSamplesAfter(-INFINITY, 0, 1, true, 1.0, kPart, expected);
    expected = {expected.begin() + 6, expected.end() - 8}; // 3.4 is inside the oldest frame, and the newest begins at 8
    for (const std::size_t doubles : {4U, 7U, 22U, 1000U}) {
        std::vector<double> block(doubles), got;
        double from = 3.4;
        while (const std::uint64_t count = buffer.GetSamplesBetween(from, 8.0, 0, 1, true, 1.0, kPart, block)) {
            ASSERT_LE(2 * count, doubles);
            got.insert(got.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(2 * count));
            from = got.end()[-2];
        }
        EXPECT_TRUE(sameBits(got, expected));
    }
}

} // namespace
