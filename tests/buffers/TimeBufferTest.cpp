#include "support/Expect.h"

#include <tracery/TimeBuffer.h>

#include <cmath>
#include <limits>
#include <numeric>

using namespace tracery;
using namespace tracery::test;
using Counts = TimeBuffer::Counts;

namespace {

constexpr auto kReal = HostComplexity::real;
constexpr auto kComplex = HostComplexity::complex;

/// One port of scalar steps.
struct ScalarBuffer : TimeBuffer {
    explicit ScalarBuffer(std::uint64_t capacity) : TimeBuffer(Counts{capacity}, Counts{1}, 1) {}
    void add(const std::vector<double>& times, const std::vector<double>& values)
    {
        addTimeAndValue(row(times).get(), row(values).get(), 0, true);
    }
};

struct Steps {
    std::vector<double> times, values, imag;
};
Steps stepsOf(const TimeBuffer& buffer, std::uint64_t port = 0)
{
    HostArray *time = nullptr, *value = nullptr;
    buffer.GetTimeAndValue(port, time, value);
    const HostArrayPtr t(time), v(value);
    return {realOf(time), realOf(value), imagOf(value)};
}
std::vector<double> timesOf(const TimeBuffer& buffer, std::uint64_t port = 0) { return stepsOf(buffer, port).times; }
std::vector<double> valuesOf(const TimeBuffer& buffer, std::uint64_t port = 0) { return stepsOf(buffer, port).values; }

std::string add(TimeBuffer& buffer, const HostArrayPtr& times, const HostArrayPtr& values, bool refresh = true)
{
    return failure([&] { buffer.addTimeAndValue(times.get(), values.get(), 0, refresh); });
}

TEST(TimeBufferTest, BeforeSetUpNothingHappensWhateverTheArguments)
{
    TimeBuffer buffer;
    buffer.AddTime(static_cast<const double*>(nullptr), 5, 77);
    buffer.addTimeAndValue(nullptr, nullptr, 9, false);
    buffer.AddValue(static_cast<const double*>(nullptr), {3}, 9, kReal);
    buffer.ClearBackTo(0);
    buffer.SetMaxNumTimeSteps({});
    buffer.SetMaxDimensions({-1}, 5);
    buffer.SetMaxDimensions(nullptr);
    HostArray* pairs = nullptr;
    std::vector<double> noLimits;
    buffer.GetTimeAndValueInterleaved(3, pairs, noLimits, 0, 0, 1, 0, 0, 7, true, 1, -1, false, false);
    EXPECT_EQ(pairs, nullptr);
    EXPECT_TRUE(timesOf(buffer, 3).empty());
    EXPECT_FALSE(buffer.GetIsReady() || buffer.GetIsFull());
    EXPECT_EQ(buffer.GetLastTime(), -INFINITY);
    EXPECT_EQ(buffer.GetNPorts(), 0U);
}

TEST(TimeBufferTest, SetUpRefusesWhatDoesNotFitAndKeepsTheOldBuffer)
{
    ScalarBuffer buffer(4);
    buffer.add({1, 2}, {10, 20});
    const auto reset = [&](Counts steps, Counts extents, Counts nDim, std::uint64_t ports, std::size_t flags) {
        return failure([&] {
            buffer.ResetBuffer(steps, extents, nDim, ports, BufferType::MultipleRate,
                               std::vector<HostComplexity>(flags, kComplex), true);
        });
    };
    EXPECT_EQ(reset({5}, {2, 3, 4}, {1, 1}, 2, 2), "InvalidMaxDimensions");
    EXPECT_EQ(reset({5}, {2}, {1}, 2, 2), "InvalidMaxDimensions");
    EXPECT_EQ(reset({5, 6}, {2, 2, 2}, {1, 1, 1}, 3, 3), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(reset({5}, {2, 2}, {1, 1}, 2, 1), "InvalidComplexityDimension");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1}, 0); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1, 1}, 2); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5, 6}, {}, 1ULL << 50); }), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(failure([&] { buffer.SetMaxNumTimeSteps({1ULL << 61}); }), "InvalidMaxNumTimeStepsValue");
    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2}));
    EXPECT_FALSE(buffer.getIsThreadSafe());

    buffer.resetInitialized();
    EXPECT_FALSE(buffer.isInitialized());
    EXPECT_EQ(buffer.GetMaxNumTimeSteps(), Counts{4});
    EXPECT_TRUE(timesOf(buffer).empty());
}

TEST(TimeBufferTest, MissingExtentsCountAsOneWhereTheLastMaximumIsOne)
{
    TimeBuffer flat({4}, {4, 1}, 1);
    const double two[] = {7, 8};
    flat.AddTime(row({1}).get(), 0);
    flat.AddValue(two, {2}, 0, kReal);
    const std::vector<double> values = valuesOf(flat);
    EXPECT_TRUE(values[0] == 7 && values[1] == 8 && std::isnan(values[2]) && std::isnan(values[3]));

    // A matrix is one step of such a port, not steps laid end to end.
    TimeBuffer deep({4}, {2, 1, 1}, 1);
    EXPECT_EQ(add(deep, row({1, 2}), matrix(2, 2, {1, 2, 3, 4})), "AddValueInputFormatError");
    EXPECT_EQ(add(deep, row({1}), matrix(2, 1, {5, 6})), "none");
    EXPECT_TRUE(sameBits(valuesOf(deep), {5, 6}));
}

TEST(TimeBufferTest, RefusedWritesChangeNothing)
{
    TimeBuffer buffer({8}, {2, 2}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kComplex}, false);
    buffer.addTimeAndValue(row({1, 2}).get(), row({4, 5}).get(), 0, true); // extents (1, 2): two steps of one element
    const double value[] = {1, 2, 3, 4};
    EXPECT_EQ(failure([&] { buffer.AddTime(row({9}).get(), 2); }), "InvalidPortID");
    EXPECT_EQ(failure([&] { buffer.AddTime(HostArrayPtr(createLogicalScalar(true)).get(), 0); }), "AddTimeError");
    EXPECT_EQ(failure([&] { buffer.AddValue(value, {2}, 0, kReal); }), "AddValueError");
    EXPECT_EQ(failure([&] { buffer.AddValue(value, {2}, 0, kComplex); }), "AddComplexDataError");
    EXPECT_EQ(failure([&] { buffer.AddValue(value, {3}, 1, kReal); }), "AddValueInputFormatError");
    EXPECT_EQ(failure([&] { buffer.AddValue(value, {1, 1, 1}, 1, kReal); }), "AddValueInputFormatError");
    EXPECT_EQ(failure([&] { buffer.AddValue(HostArrayPtr(createString("ab")).get(), 0, true); }),
              "AddValueDataTypeError");

    // As one operation with their times, too: neither the times nor the cached extents may change.
    EXPECT_EQ(add(buffer, row({3}), matrix(3, 1, {1, 2, 3})), "AddValueInputFormatError");
    EXPECT_EQ(add(buffer, row({3}), matrix(2, 2, {1, 2, 3, 4})), "AddValueError");
    EXPECT_EQ(add(buffer, row({3, 4}), matrix(1, 1, {1}), false), "AddValueInputFormatError")
        << "smaller than the cached (1, 2)";
    EXPECT_EQ(add(buffer, row({3}), matrix(0, 0, {})), "AddValueError") << "no elements are no steps";
    EXPECT_EQ(add(buffer, row({}), matrix(0, 0, {})), "none");
    EXPECT_EQ(add(buffer, row({3, 4}), matrix(4, 1, {6, 7, 8, 9}), false), "none") << "the cached (1, 2) still holds";
    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2, 3, 4}));
    std::vector<double> values = valuesOf(buffer);
    EXPECT_EQ((std::vector<double>{values[0], values[2], values[4], values[6]}), (std::vector<double>{4, 5, 6, 7}));
    EXPECT_TRUE(buffer.GetIsReady());
}

TEST(TimeBufferTest, AComplexPortTakesBothPartsAndSaysWhenOneIsMissing)
{
    TimeBuffer buffer({8}, {1}, {1}, 1, BufferType::SingleRate, {kComplex}, false);
    const double time = 1;
    const std::complex<double> value(2, 3);
    buffer.AddTime(&time, 1, 0);
    EXPECT_EQ(failure([&] { timesOf(buffer); }), "AddValueError");
    buffer.AddValue(&value, {1}, 0, kReal);
    EXPECT_EQ(failure([&] { timesOf(buffer); }), "GetComplexDataError");
    EXPECT_FALSE(buffer.GetIsReady());
    // A write of both parts that its imaginary part alone cannot take: the times stay, too.
    EXPECT_EQ(add(buffer, row({2}), row({4})), "AddValueError");
    EXPECT_EQ(buffer.GetLastTime(), 1);
    buffer.AddValue(&value, {1}, 0, kComplex);
    EXPECT_EQ(stepsOf(buffer).values, std::vector<double>{2});
    EXPECT_EQ(stepsOf(buffer).imag, std::vector<double>{3});
    EXPECT_EQ(failure([&] { timesOf(buffer, 1); }), "InvalidPortID");
}

TEST(TimeBufferTest, CapacitiesAreRefusedThatPortsWithSharedTimesCannotHave)
{
    TimeBuffer shared({9}, {1, 1}, 2);
    EXPECT_EQ(failure([&] { shared.SetMaxNumTimeSteps({9, 8}); }), "InvalidMaxNumTimeStepsChange");
    EXPECT_EQ(failure([&] { shared.SetMaxNumTimeSteps({9, 8, 7}); }), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(failure([&] { shared.SetMaxNumTimeSteps({0}); }), "InvalidMaxNumTimeStepsValue");
    shared.SetToMaximumCapacity();
    EXPECT_EQ(shared.GetMaxNumTimeSteps(), (Counts{20000, 20000}));
    EXPECT_EQ(shared.GetType(), "SingleRate");
}

// Values are their times x 10, so that a value that slipped to another step's time shows.
TEST(TimeBufferTest, ValuesThatLagBehindNeverSlipToAnotherTime)
{
    // Three times run ahead, `change` happens, then the values of the times still `pending` arrive.
    const auto timesAfter = [](auto&& change, std::vector<double> pending) {
        ScalarBuffer buffer(5);
        buffer.add({1, 2, 3, 4, 5}, {10, 20, 30, 40, 50});
        const double times[] = {6, 7, 8};
        buffer.AddTime(times, 3, 0);
        change(buffer);
        for (double& t : pending)
            t *= 10;
        buffer.AddValue(pending.data(), {1, pending.size()}, 0, kReal);
        std::vector<double> expected = timesOf(buffer);
        for (double& t : expected)
            t *= 10;
        EXPECT_TRUE(sameBits(valuesOf(buffer), expected));
        return timesOf(buffer);
    };
    EXPECT_TRUE(sameBits(timesAfter([](TimeBuffer&) {}, {6, 7, 8}), {4, 5, 6, 7, 8}));
    EXPECT_TRUE(sameBits(timesAfter([](TimeBuffer& b) { b.SetMaxNumTimeSteps({9}); }, {6, 7, 8}), {4, 5, 6, 7, 8}));
    const auto shrinkAndGrow = [](TimeBuffer& b) { b.SetMaxNumTimeSteps({2}), b.SetMaxNumTimeSteps({6}); };
    EXPECT_TRUE(sameBits(timesAfter(shrinkAndGrow, {6, 7, 8}), {7, 8}));
    EXPECT_TRUE(sameBits(timesAfter([](TimeBuffer& b) { b.ClearBackTo(7); }, {6, 7}), {4, 5, 6, 7}));
    EXPECT_TRUE(sameBits(timesAfter([](TimeBuffer& b) { b.ClearBackTo(4); }, {}), {4}));
    EXPECT_TRUE(sameBits(timesAfter([](TimeBuffer& b) { b.clearUptoLastTime(); }, {8}), {8}));
    EXPECT_TRUE(timesAfter([](TimeBuffer& b) { b.Clear(); }, {}).empty());
}

TEST(TimeBufferTest, ClearingUpToTheLastTimeKeepsExactlyTwoOnPurpose)
{
    ScalarBuffer buffer(9);
    for (const auto& [time, left] : {std::pair{1.0, 1U}, {2.0, 2U}, {3.0, 1U}}) {
        buffer.add({time}, {10 * time});
        buffer.clearUptoLastTime();
        EXPECT_EQ(timesOf(buffer).size(), left);
    }
}

TEST(TimeBufferTest, WindowEdgesAreWidenedByTheSpacingOfDoubles)
{
    // Around zero and among the denormals it is the smallest denormal; infinite edges have none.
    constexpr double d = std::numeric_limits<double>::denorm_min(), largest = std::numeric_limits<double>::max();
    ScalarBuffer buffer(9);
    buffer.add({-2 * d, -d, 0, d, 2 * d, 3 * d, 4 * d, 5 * d}, std::vector<double>(8));
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

TEST(TimeBufferTest, ADisplayReadRefusesALayoutThatCannotBe)
{
    ScalarBuffer buffer(4);
    buffer.add({1, 2}, {10, 20});
    const auto read = [&](std::vector<double> limits, std::uint64_t channels, int samplesPerFrame) {
        HostArray* pairs = nullptr;
        return failure([&] {
            buffer.GetTimeAndValueInterleaved(0, pairs, limits, 0, 0, 9, 0, channels, 0, true, 1, samplesPerFrame,
                                              false, false);
        });
    };
    EXPECT_EQ(read({0, 0, 0}, 1, 1), "InvalidLimits");
    EXPECT_EQ(read({0, 0, 0, 0}, 1, 0), "InvalidChannelID");
    EXPECT_EQ(read({0, 0, 0, 0}, 0, 1), "InvalidChannelID");
}

TEST(TimeBufferTest, NewExtentsRestartTheRingsThatShareTimes)
{
    TimeBuffer buffer({4}, {2, 3}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kReal}, false);
    buffer.addTimeAndValue(row({1}).get(), matrix(2, 1, {1, 2}).get(), 0, true);
    buffer.addTimeAndValue(row({1}).get(), matrix(3, 1, {1, 2, 3}).get(), 1, true);
    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions({2, 2}, 0); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions({-2}, 0); }), "InvalidMaxDimensions");
    buffer.SetMaxDimensions({4}, 0);
    EXPECT_TRUE(timesOf(buffer, 0).empty());
    EXPECT_EQ(timesOf(buffer, 1).size(), 1U);
    EXPECT_EQ(buffer.GetMaxDimensions(0), std::vector<int>{4});
    EXPECT_EQ(realOf(HostArrayPtr(buffer.GetMaxDimensions()).get()), (std::vector<double>{4, 3}));

    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions(matrix(0, 2, {}).get()); }), "EmptyInput");
    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions(matrix(1, 1, {2}).get()); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions(matrix(2, 1, {2, NAN}).get()); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([&] { buffer.SetMaxDimensions(matrix(2, 2, {5, 6, 1, 2}).get()); }), "InvalidMaxDimensions");
    buffer.SetMaxDimensions(matrix(2, 2, {5.9, 6, 1, 1}).get());
    EXPECT_EQ(realOf(HostArrayPtr(buffer.GetMaxDimensions()).get()), (std::vector<double>{5, 6}));
    EXPECT_TRUE(timesOf(buffer, 1).empty());

    Counts flat;
    TimeBuffer::TransposeMaxDimensions(matrix(2, 3, {1, 4, 2, 5, 3, 6}).get(), flat);
    EXPECT_EQ(flat, (Counts{1, 2, 3, 4, 5, 6}));

    TimeBuffer wide({4}, {2, 2}, 1);
    constexpr int kLargest = std::numeric_limits<int>::max();
    EXPECT_EQ(failure([&] { wide.SetMaxDimensions({kLargest, kLargest}, 0); }), "InvalidMaxNumTimeStepsValue");
}

TEST(TimeBufferTest, NewExtentsOfOnePortRestartAllThatShareItsTimes)
{
    TimeBuffer buffer({9}, {1, 2}, {1, 1}, 2, BufferType::SingleRate, {kReal, kReal}, false);
    buffer.setIsLinearInterpolation({1, 0});
    const auto add = [&](double time) {
        buffer.AddTime(&time, 1, 0);
        buffer.AddValue(row({NAN}).get(), 0, false);
        buffer.AddValue(row({time}).get(), 1, false); // extents (1, 1): half a step
    };
    add(1);
    buffer.setDataHasNaNPattern(true);
    buffer.SetMaxDimensions({3}, 0);
    EXPECT_TRUE(timesOf(buffer, 0).empty());
    EXPECT_TRUE(timesOf(buffer, 1).empty());
    EXPECT_TRUE(buffer.GetIsReady());
    EXPECT_FALSE(buffer.dataHasNaNPattern());
    EXPECT_EQ(buffer.getIsLinearInterpolation(), (std::vector<bool>{true, false}));

    // The other port still has the shape of its last array, and takes a larger one in that shape.
    const double time = 2;
    buffer.AddTime(&time, 1, 0);
    buffer.AddValue(matrix(3, 1, {4, 5, 6}).get(), 0, false);
    buffer.AddValue(matrix(2, 1, {7, 8}).get(), 1, false);
    EXPECT_TRUE(sameBits(valuesOf(buffer, 0), {4, 5, 6}));
    EXPECT_EQ(valuesOf(buffer, 1)[0], 7);
    EXPECT_TRUE(std::isnan(valuesOf(buffer, 1)[1]));
}

TEST(TimeBufferTest, NothingIsStoredWithoutRoom)
{
    TimeBuffer none({0}, {3, 2}, 1);
    EXPECT_EQ(add(none, row({1}), row({9})), "none");
    EXPECT_TRUE(timesOf(none).empty());
    none.ClearBackTo(0), none.clearUptoLastTime();
    TimeBuffer flat({4}, {0}, 1);
    EXPECT_EQ(add(flat, row({1}), row({9})), "AddValueInputFormatError");
    EXPECT_TRUE(timesOf(flat).empty());
    TimeBuffer portless({4}, {}, {}, 0, BufferType::SingleRate, {}, false);
    EXPECT_TRUE(portless.GetIsReady());
    EXPECT_EQ(failure([&] { portless.AddTime(row({1}).get(), 0); }), "InvalidPortID");
}

TEST(TimeBufferTest, APatternOfNaNIsLookedForInTheFirstValueOfEachWriteUntilTheNextSetUp)
{
    ScalarBuffer blocks(9);
    blocks.add({1, 2}, {NAN, 5});
    blocks.add({3, 4}, {5, NAN});
    EXPECT_FALSE(blocks.dataHasNaNPattern());
    blocks.add({5, 6}, {NAN, 5});
    EXPECT_TRUE(blocks.dataHasNaNPattern());
    blocks.ResetBuffer({9}, {1}, {1}, 1, BufferType::SingleRate, {kReal}, false);
    EXPECT_FALSE(blocks.dataHasNaNPattern());

    TimeBuffer complex({9}, {1}, {1}, 1, BufferType::SingleRate, {kComplex}, false);
    for (double time : {1.0, 2.0}) {
        EXPECT_FALSE(complex.dataHasNaNPattern());
        complex.addTimeAndValue(row({time}).get(), row({NAN}).get(), 0, true); // NaN, then the imaginary 0
    }
    EXPECT_TRUE(complex.dataHasNaNPattern());
}

TEST(TimeBufferTest, PerPortSettingsAreKept)
{
    TimeBuffer buffer({9}, {1, 1}, {1, 1}, 2, BufferType::MultipleRate, {kReal, kComplex}, true);
    EXPECT_EQ(buffer.GetSampleTimes(), std::vector<double>(4, 0.0));
    buffer.SetSampleTimes(1, {0.5, 0.25});
    EXPECT_EQ(buffer.GetSampleTimes(1), (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(failure([&] { buffer.SetSampleTimes({1, 2, 3}); }), "InvalidSampleTimes");
    buffer.setIsLinearInterpolation({0, 7});
    for (const std::vector<std::uint8_t>& flags : {std::vector<std::uint8_t>{1}, {1, 1, 1}})
        EXPECT_EQ(failure([&] { buffer.setIsLinearInterpolation(flags); }), "InvalidArgumentType");
    EXPECT_EQ(buffer.getIsLinearInterpolation(), (std::vector<bool>{false, true}));
    const HostArrayPtr flags(buffer.GetComplexityFlags());
    EXPECT_EQ(getLogicals(flags.get())[0], 0);
    EXPECT_EQ(getLogicals(flags.get())[1], 1);
    EXPECT_EQ(buffer.GetBufferType(), BufferType::MultipleRate);
    buffer.resetInitialized();
    EXPECT_EQ(buffer.GetSampleTimes(), (std::vector<double>{0, 0, 0.5, 0.25}));
    EXPECT_EQ(buffer.GetSampleTimes(1), (std::vector<double>{0.5, 0.25}));
    buffer.setIsLinearInterpolation({1});
}

TEST(TimeBufferTest, BlocksOfOneChannelGoThroughFramesThatLastWithoutGapsOrRepeats)
{
    // Channel 1 of two, frames of 5 samples a second.
    constexpr auto kPart = TimeBuffer::SamplePart::magnitude;
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
    std::vector<double> block(8);
    EXPECT_EQ(buffer.GetSamplesBetween(0, 9, 0, 1, true, 1.0, TimeBuffer::SamplePart::real, {}), 0U);
    EXPECT_EQ(failure([&] { buffer.GetSamplesBetween(0, 9, 0, 2, true, 1.0, TimeBuffer::SamplePart::real, block); }),
              "InvalidChannelID");
}

// Large room changes hands without a copy, and also while the oldest values lie behind the newest.
TEST(TimeBufferTest, StepsStayInPlaceWhileTheRingGrowsFarAndWraps)
{
    TimeBuffer buffer({300'000}, {}, {0}, 1, BufferType::MultipleRate, {HostComplexity::real}, false);
    double next = 0, oldest = 0;
    const auto add = [&](std::size_t count) {
        std::vector<double> steps(count);
        std::iota(steps.begin(), steps.end(), next);
        next += static_cast<double>(count);
        oldest = std::max(oldest, next - 300'000);
        buffer.addTimeAndValue(row(steps).get(), row(steps).get(), 0, true);
        std::vector<double> expected(static_cast<std::size_t>(next - oldest));
        std::iota(expected.begin(), expected.end(), oldest);
        EXPECT_TRUE(sameBits(timesOf(buffer), expected));
        EXPECT_TRUE(sameBits(valuesOf(buffer), expected));
    };
    for (const std::size_t count : {3U, 700U, 20'000U, 9'000U, 25'000U, 70'000U, 60'000U, 250'000U, 1U}) {
        add(count);
        if (count == 9'000 || count == 70'000) { // the oldest go; those that come next wrap
            buffer.clearUptoLastTime();
            oldest = next - 1;
            add(count / 2);
        }
    }
}

} // namespace
