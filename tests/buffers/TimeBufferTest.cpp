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

/// All that takes a port: nothing before set-up, an error when there is no such port.
std::vector<std::string> askOfPort(TimeBuffer& buffer, std::uint64_t port)
{
    const HostArrayPtr one = row({1});
    const double* const values = getRealData(one.get());
    HostArray *time = nullptr, *value = nullptr;
    std::vector<double> pairs, block(8), limits(4);
    TimeBuffer::ReadPosition position;
    TimeBuffer::ReadSteps steps;
    int first = 0, last = 0;
    const std::function<void()> calls[] = {
        [&] { buffer.AddTime(one.get(), port); },
        [&] { buffer.AddTime(values, 1, port); },
        [&] { buffer.AddValue(one.get(), port, true); },
        [&] { buffer.AddValue(values, {1}, port, kReal); },
        [&] { buffer.addTimeAndValue(one.get(), nullptr, port, true); },
        [&] { buffer.SetMaxDimensions({-1}, port); },
        [&] { buffer.SetSampleTimes(port, {}); },
        [&] { EXPECT_TRUE(buffer.GetSampleTimes(port).empty()); },
        [&] { EXPECT_TRUE(buffer.GetMaxDimensions(port).empty()); },
        [&] { EXPECT_FALSE(buffer.GetIndexRange(port, 0, 1, false, first, last)); },
        [&] { buffer.GetTimeAndValue(port, time, value); },
        [&] { buffer.GetTimeAndValue(port, time, value, 0, 1, false); },
        [&] { buffer.readAfter(port, position, steps); },
        [&] { buffer.GetTimeAndValueInterleaved(port, value, limits, 0, 0, 1, 0, 0, 7, true, 1, -1, false, false); },
        [&] { buffer.GetSamplesAfter(0, port, 0, false, 1, kPart, pairs); },
        [&] { buffer.GetSamplesBetween(0, 9, port, 0, false, 1, kPart, block); },
    };
    std::vector<std::string> errors;
    for (const auto& call : calls)
        errors.push_back(failure(call));
    EXPECT_TRUE(time == nullptr && value == nullptr);
    return errors;
}

TEST(TimeBufferTest, BeforeSetUpNothingHappensWhateverTheArguments)
{
    TimeBuffer buffer;
    for (const std::uint64_t ports : {0U, 2U}) {
        EXPECT_EQ(askOfPort(buffer, 7), std::vector<std::string>(16, "none"));
        buffer.Clear(), buffer.ClearBackTo(0), buffer.clearUptoLastTime();
        buffer.reserveCapacity(), buffer.SetMaxNumTimeSteps({}), buffer.SetMaxDimensions(nullptr);
        buffer.setIsLinearInterpolation({1, 1, 1});
        EXPECT_FALSE(buffer.isInitialized() || buffer.GetIsReady() || buffer.GetIsFull());
        EXPECT_EQ(buffer.GetLastTime(), -INFINITY);
        EXPECT_EQ(buffer.GetNPorts(), ports);
        // … and after it was set up: capacities and sample times stay readable.
        EXPECT_EQ(buffer.GetMaxNumTimeSteps(), Counts(ports, 4));
        EXPECT_TRUE(ports == 0 || buffer.GetSampleTimes(1) == (std::vector{0.5, 0.25}));
        buffer.ResetBuffer({4}, {1, 1}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kReal}, true);
        buffer.addTimeAndValue(row({1}).get(), row({1}).get(), 1, true);
        buffer.SetSampleTimes(1, {0.5, 0.25});
        EXPECT_EQ(askOfPort(buffer, 2), std::vector<std::string>(16, "InvalidPortID"));
        buffer.resetInitialized();
    }
    TimeBuffer portless({4}, {}, {}, 0, BufferType::SingleRate, {}, false);
    EXPECT_TRUE(portless.GetIsReady());
}

TEST(TimeBufferTest, BadInputIsRefusedAndChangesNothing)
{
    using A = const HostArray*;
    TimeBuffer buffer({8}, {2, 2}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kComplex}, false);
    TimeBuffer shared({9}, {1, 1}, 2), wide({4}, {2, 2}, 1);
    buffer.addTimeAndValue(row({1, 2}).get(), matrix(2, 2, {1, 2, 3, 4}).get(), 0, true);
    const HostArrayPtr one = row({1}), flag(createLogicalScalar(true)), none = row({});

    const auto setUp = [&](Counts capacities, Counts extents, Counts nDim, std::uint64_t ports, std::size_t flags) {
        const std::vector<HostComplexity> complexity(flags, kComplex);
        return failure(
            [&] { buffer.ResetBuffer(capacities, extents, nDim, ports, BufferType::MultipleRate, complexity, true); });
    };
    EXPECT_EQ(setUp({5}, {2, 3, 4}, {1, 1}, 2, 2), "InvalidMaxDimensions");
    EXPECT_EQ(setUp({5}, {2}, {1}, 2, 2), "InvalidMaxDimensions");
    EXPECT_EQ(setUp({5, 6}, {2, 2, 2}, {1, 1, 1}, 3, 3), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(setUp({5}, {2, 2}, {1, 1}, 2, 1), "InvalidComplexityDimension");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1}, 0); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1, 1}, 2); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5, 6}, {}, 1ULL << 50); }), "InvalidMaxNumTimeStepsSize");

    const auto capacities = [&](const Counts& steps) { return failure([&] { shared.SetMaxNumTimeSteps(steps); }); };
    EXPECT_EQ(capacities({9, 8, 7}), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(capacities({0}), "InvalidMaxNumTimeStepsValue");
    EXPECT_EQ(capacities({1ULL << 61}), "InvalidMaxNumTimeStepsValue");
    EXPECT_EQ(capacities({9, 8}), "InvalidMaxNumTimeStepsChange");
    shared.SetToMaximumCapacity();
    EXPECT_EQ(shared.GetMaxNumTimeSteps(), (Counts{20000, 20000}));

    constexpr int kLargest = std::numeric_limits<int>::max();
    const auto extents = [](TimeBuffer& of, std::vector<int> list) {
        return failure([&] { of.SetMaxDimensions(list, 0); });
    };
    const auto allExtents = [&](const HostArrayPtr& matrix) {
        return failure([&] { buffer.SetMaxDimensions(matrix.get()); });
    };
    EXPECT_EQ(extents(buffer, {2, 2}), "InvalidMaxDimensions");
    EXPECT_EQ(extents(buffer, {-2}), "InvalidMaxDimensions");
    EXPECT_EQ(extents(wide, {kLargest, kLargest}), "InvalidMaxNumTimeStepsValue");
    EXPECT_EQ(allExtents(one), "InvalidMaxDimensions");
    EXPECT_EQ(allExtents(matrix(2, 1, {2, NAN})), "InvalidMaxDimensions");
    EXPECT_EQ(allExtents(matrix(2, 2, {5, 6, 1, 2})), "InvalidMaxDimensions");
    EXPECT_EQ(allExtents(matrix(0, 2, {})) + allExtents(nullptr), "EmptyInputEmptyInput");

    const auto add = [&](A times, A values) {
        return failure([&] { buffer.addTimeAndValue(times, values, 0, true); });
    };
    EXPECT_EQ(add(nullptr, one.get()) + add(one.get(), nullptr), "EmptyInputEmptyInput");
    EXPECT_EQ(add(flag.get(), one.get()), "AddTimeError");
    EXPECT_EQ(add(one.get(), flag.get()), "AddValueDataTypeError");
    EXPECT_EQ(add(none.get(), none.get()), "none") << "an empty array is no step";
    EXPECT_EQ(failure([&] { buffer.AddTime(static_cast<const double*>(nullptr), 1, 0); }), "EmptyInput");
    wide.AddTime(one.get(), 0);
    EXPECT_EQ(failure([&] { wide.AddValue(static_cast<const double*>(nullptr), {4}, 0, kReal); }), "EmptyInput");

    EXPECT_EQ(failure([&] { buffer.SetSampleTimes({1, 2, 3}); }), "InvalidSampleTimes");
    EXPECT_EQ(failure([&] { buffer.SetSampleTimes(0, {1}); }), "InvalidSampleTimes");
    for (const std::size_t flags : {1U, 3U})
        EXPECT_EQ(failure([&] { buffer.setIsLinearInterpolation(std::vector<std::uint8_t>(flags)); }),
                  "InvalidArgumentType");

    const auto drawn = [&](std::vector<double> limits, std::uint64_t channels, int samples) {
        HostArray* out = nullptr;
        return failure([&] {
            buffer.GetTimeAndValueInterleaved(0, out, limits, 0, 0, 9, 0, channels, 0, true, 1, samples, false, false);
        });
    };
    EXPECT_EQ(drawn({0, 0, 0}, 1, 1), "InvalidLimits");
    EXPECT_EQ(drawn({0, 0, 0, 0}, 1, 0), "InvalidChannelID");
    EXPECT_EQ(drawn({0, 0, 0, 0}, 0, 1), "InvalidChannelID");

    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2}));
    EXPECT_FALSE(buffer.getIsThreadSafe());
    EXPECT_EQ(buffer.GetMaxNumTimeSteps(), (Counts{8, 8}));
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
