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

std::vector<double> timesOf(const TimeBuffer& buffer, std::uint64_t port = 0)
{
    HostArray* time = nullptr;
    HostArray* value = nullptr;
    buffer.GetTimeAndValue(port, time, value);
    const HostArrayPtr t(time), v(value);
    return realOf(time);
}

std::vector<double> valuesOf(const TimeBuffer& buffer, std::uint64_t port = 0)
{
    HostArray* time = nullptr;
    HostArray* value = nullptr;
    buffer.GetTimeAndValue(port, time, value);
    const HostArrayPtr t(time), v(value);
    return realOf(value);
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
    EXPECT_FALSE(buffer.GetIsReady());
    EXPECT_FALSE(buffer.GetIsFull());
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
    EXPECT_EQ(reset({5}, {1ULL << 40, 1ULL << 40}, {2}, 1, 1), "InvalidMaxDimensions");
    EXPECT_EQ(reset({1ULL << 60}, {1ULL << 10}, {1}, 1, 1), "InvalidMaxNumTimeStepsValue");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1}, 0); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {1, 1, 1}, 2); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([] { TimeBuffer({5, 6}, {}, 1ULL << 50); }), "InvalidMaxNumTimeStepsSize");
    EXPECT_EQ(failure([] { TimeBuffer({5}, {}, 1ULL << 50); }), "InvalidMaxDimensions");
    EXPECT_EQ(failure([&] { buffer.SetMaxNumTimeSteps({1ULL << 61}); }), "InvalidMaxNumTimeStepsValue");
    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2}));
    EXPECT_FALSE(buffer.getIsThreadSafe());

    buffer.resetInitialized();
    EXPECT_FALSE(buffer.isInitialized());
    EXPECT_EQ(buffer.GetMaxNumTimeSteps(), Counts{4});
    EXPECT_TRUE(timesOf(buffer).empty());
}

TEST(TimeBufferTest, AFullPortKeepsTheNewestSteps)
{
    ScalarBuffer buffer(3);
    buffer.add({1, 2, 3, 4, 5}, {10, 20, 30, 40, 50});
    EXPECT_TRUE(sameBits(timesOf(buffer), {3, 4, 5}));
    EXPECT_TRUE(sameBits(valuesOf(buffer), {30, 40, 50}));
    EXPECT_TRUE(buffer.GetIsFull());
    EXPECT_EQ(buffer.GetLastTime(), 5.0);
}

TEST(TimeBufferTest, ASmallerInputIsWidenedWithNaN)
{
    TimeBuffer buffer({2}, {4, 3}, 1);
    buffer.addTimeAndValue(row({0}).get(), matrix(2, 1, {7, 8}).get(), 0, true);
    std::vector<double> expected(12, std::bit_cast<double>(std::uint64_t{0xFFF8000000000000}));
    expected[0] = 7, expected[1] = 8;
    EXPECT_TRUE(sameBits(valuesOf(buffer), expected));
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
    EXPECT_EQ(failure([&] {
                  deep.addTimeAndValue(row({1, 2}).get(), matrix(2, 2, {1, 2, 3, 4}).get(), 0, true);
              }),
              "AddValueInputFormatError");
    deep.addTimeAndValue(row({1}).get(), matrix(2, 1, {5, 6}).get(), 0, true);
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
    const auto add = [&](const HostArrayPtr& times, const HostArrayPtr& values, bool refresh) {
        return failure([&] { buffer.addTimeAndValue(times.get(), values.get(), 0, refresh); });
    };
    EXPECT_EQ(add(row({3}), matrix(3, 1, {1, 2, 3}), true), "AddValueInputFormatError");
    EXPECT_EQ(add(row({3}), matrix(2, 2, {1, 2, 3, 4}), true), "AddValueError");
    EXPECT_EQ(add(row({3, 4}), matrix(1, 1, {1}), false), "AddValueInputFormatError")
        << "smaller than the cached (1, 2)";
    EXPECT_EQ(add(row({3}), matrix(0, 0, {}), true), "AddValueError") << "no elements are no steps";
    EXPECT_EQ(add(row({}), matrix(0, 0, {}), true), "none");
    EXPECT_EQ(add(row({3, 4}), matrix(4, 1, {6, 7, 8, 9}), false), "none") << "the cached (1, 2) still holds";
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
    EXPECT_EQ(failure([&] { buffer.addTimeAndValue(row({2}).get(), row({4}).get(), 0, true); }), "AddValueError");
    EXPECT_EQ(buffer.GetLastTime(), 1);
    buffer.AddValue(&value, {1}, 0, kComplex);
    HostArray* t = nullptr;
    HostArray* v = nullptr;
    buffer.GetTimeAndValue(0, t, v, 1, 1, false);
    const HostArrayPtr times(t), values(v);
    EXPECT_TRUE(sameBits(realOf(v), {2}));
    EXPECT_TRUE(sameBits(imagOf(v), {3}));
    EXPECT_TRUE(isComplex(v));
    EXPECT_FALSE(isComplex(t));
    EXPECT_EQ(failure([&] { timesOf(buffer, 1); }), "InvalidPortID");
}

TEST(TimeBufferTest, TimesAreSharedOnlyAtOneRateOneCapacityAndOneThread)
{
    const auto portsFed = [](Counts capacities, BufferType type, bool threadSafe) {
        TimeBuffer buffer(capacities, {1, 1}, {1, 1}, 2, type, {kReal, kReal}, threadSafe);
        buffer.AddTime(row({1}).get(), 0);
        const double value = 5;
        int fed = 0;
        for (std::uint64_t port : {0U, 1U})
            fed += failure([&] { buffer.AddValue(&value, {1}, port, kReal); }) == "none" ? 1 : 0;
        return fed;
    };
    EXPECT_EQ(portsFed({9, 9}, BufferType::SingleRate, false), 2);
    EXPECT_EQ(portsFed({5, 9}, BufferType::SingleRate, false), 2) << "two time lines, both fed";
    EXPECT_EQ(portsFed({9, 9}, BufferType::SingleRate, true), 1);
    EXPECT_EQ(portsFed({9, 9}, BufferType::MultipleRate, false), 1);

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
    buffer.add({1, 2}, {10, 20});
    buffer.clearUptoLastTime();
    EXPECT_TRUE(sameBits(timesOf(buffer), {1, 2}));
    buffer.add({3}, {30});
    buffer.clearUptoLastTime();
    EXPECT_TRUE(sameBits(timesOf(buffer), {3}));
    EXPECT_TRUE(sameBits(valuesOf(buffer), {30}));
}

TEST(TimeBufferTest, WindowEdgesAreWidenedByTheSpacingOfDoubles)
{
    ScalarBuffer buffer(9);
    buffer.add({0, 1, 2, 3}, {0, 10, 20, 30});
    int s = 0, e = 0;
    EXPECT_TRUE(buffer.GetIndexRange(0, 1 + 2e-16, 2, false, s, e));
    EXPECT_EQ(s, 1);
    EXPECT_EQ(e, 2);
    EXPECT_TRUE(buffer.GetIndexRange(0, 0.5, 2.5, true, s, e));
    EXPECT_EQ(s, 0);
    EXPECT_EQ(e, 3);
    EXPECT_FALSE(buffer.GetIndexRange(0, 3.5, 9, true, s, e));
    EXPECT_FALSE(buffer.GetIndexRange(0, -9, -1, true, s, e));
    EXPECT_FALSE(buffer.GetIndexRange(0, 1.2, 1.8, false, s, e));
    // Infinite edges have no spacing: a start finds the oldest step, an end finds nothing.
    EXPECT_TRUE(buffer.GetIndexRange(0, -INFINITY, std::numeric_limits<double>::max(), false, s, e));
    EXPECT_EQ(e - s, 3);
    EXPECT_FALSE(buffer.GetIndexRange(0, 0, INFINITY, false, s, e));

    // Around zero and among the denormals the spacing is the smallest denormal.
    constexpr double d = std::numeric_limits<double>::denorm_min();
    ScalarBuffer tiny(9);
    tiny.add({-2 * d, -d, 0, d, 2 * d, 3 * d, 4 * d, 5 * d}, std::vector<double>(8));
    EXPECT_TRUE(tiny.GetIndexRange(0, 0, 0, false, s, e));
    EXPECT_EQ(s, 1) << "one spacing early is inside";
    EXPECT_EQ(e, 2) << "one spacing late is not";
    EXPECT_TRUE(tiny.GetIndexRange(0, 3 * d, 3 * d, false, s, e));
    EXPECT_EQ(s, 4);
    EXPECT_EQ(e, 5);
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
    EXPECT_EQ(read({0, 0, 0, 0}, 1, -1), "InvalidChannelID");
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
    EXPECT_EQ(buffer.GetMaxDimensions(0), std::vector<int>{5});
    EXPECT_EQ(buffer.GetMaxDimensions(1), std::vector<int>{6});
    EXPECT_TRUE(timesOf(buffer, 1).empty());

    Counts flat;
    TimeBuffer::TransposeMaxDimensions(matrix(2, 3, {1, 4, 2, 5, 3, 6}).get(), flat);
    EXPECT_EQ(flat, (Counts{1, 2, 3, 4, 5, 6}));

    TimeBuffer wide({4}, {2, 2}, 1);
    constexpr int kLargest = std::numeric_limits<int>::max();
    EXPECT_EQ(failure([&] { wide.SetMaxDimensions({kLargest, kLargest}, 0); }), "InvalidMaxNumTimeStepsValue");
    EXPECT_EQ(failure([&] { wide.SetMaxDimensions({kLargest / 2, 1}, 0); }), "InvalidMaxDimensions");
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
    none.addTimeAndValue(row({1}).get(), matrix(1, 1, {9}).get(), 0, true);
    EXPECT_TRUE(timesOf(none).empty());
    none.ClearBackTo(0);
    none.clearUptoLastTime();
    TimeBuffer flat({4}, {0}, 1);
    EXPECT_EQ(failure([&] { flat.addTimeAndValue(row({1}).get(), matrix(1, 1, {9}).get(), 0, true); }),
              "AddValueInputFormatError");
    EXPECT_TRUE(timesOf(flat).empty());
    TimeBuffer portless({4}, {}, {}, 0, BufferType::SingleRate, {}, false);
    EXPECT_TRUE(portless.GetIsReady());
    EXPECT_EQ(failure([&] { portless.AddTime(row({1}).get(), 0); }), "InvalidPortID");
}

TEST(TimeBufferTest, ARegularPatternOfNaNIsLearnedUntilTheNextSetUp)
{
    ScalarBuffer buffer(9);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(buffer.dataHasNaNPattern());
        buffer.add({double(i)}, {i % 2 == 0 ? NAN : 1.0});
    }
    EXPECT_TRUE(buffer.dataHasNaNPattern());
    buffer.ResetBuffer({9}, {1}, {1}, 1, BufferType::SingleRate, {kReal}, false);
    EXPECT_FALSE(buffer.dataHasNaNPattern());
}

TEST(TimeBufferTest, ThePatternIsLookedForInTheFirstValueOfEachWriteOfEitherPart)
{
    ScalarBuffer blocks(9);
    blocks.add({1, 2}, {NAN, 5});
    blocks.add({3, 4}, {5, NAN});
    EXPECT_FALSE(blocks.dataHasNaNPattern());
    blocks.add({5, 6}, {NAN, 5});
    EXPECT_TRUE(blocks.dataHasNaNPattern());

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
    buffer.setIsLinearInterpolation({0, 7, 1});
    EXPECT_EQ(buffer.getIsLinearInterpolation(), (std::vector<bool>{false, true}));
    const HostArrayPtr flags(buffer.GetComplexityFlags());
    EXPECT_EQ(getLogicals(flags.get())[0], 0);
    EXPECT_EQ(getLogicals(flags.get())[1], 1);
    EXPECT_EQ(buffer.GetBufferType(), BufferType::MultipleRate);
}

TEST(TimeBufferTest, BlocksOfOneChannelGoThroughFramesWithoutGapsOrRepeats)
{
    // Channel 1 of two, frames of 5 samples a second: the sample at time t has the value 10 t + i (t + 2).
    TimeBuffer buffer({6}, {5, 2}, {2}, 1, BufferType::MultipleRate, {HostComplexity::complex}, true);
    for (int frame = 0; frame < 9; ++frame) {
        const HostArrayPtr values(createDoubleMatrix(10, 1, HostComplexity::complex));
        for (int j = 0; j < 5; ++j) {
            getRealData(values.get())[5 + j] = 10 * (frame + 0.2 * j);
            getImagData(values.get())[5 + j] = 2 + frame + 0.2 * j;
        }
        buffer.addTimeAndValue(row({static_cast<double>(frame)}).get(), values.get(), 0, true);
    }
    const double after = 3.4, upTo = 8.0; // the first is inside the oldest frame
    for (const auto part : {TimeBuffer::SamplePart::real, TimeBuffer::SamplePart::imaginary,
                            TimeBuffer::SamplePart::magnitude, TimeBuffer::SamplePart::phase})
        for (const std::size_t doubles : {4U, 7U, 22U, 1000U}) {
            std::vector<double> block(doubles), got;
            double from = after;
            while (const std::uint64_t count = buffer.GetSamplesBetween(from, upTo, 0, 1, true, 1.0, part, block)) {
                ASSERT_LE(2 * count, doubles);
                got.insert(got.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(2 * count));
                from = got.end()[-2];
            }
            ASSERT_EQ(got.size(), 2 * 23U);
            for (std::size_t i = 0; i < 23; ++i) {
                const double t = 3.4 + 0.2 * static_cast<double>(i + 1), re = 10 * t, im = t + 2;
                EXPECT_NEAR(got[2 * i], t, 1e-12);
                EXPECT_NEAR(got[2 * i + 1],
                            part == TimeBuffer::SamplePart::real        ? re
                            : part == TimeBuffer::SamplePart::imaginary ? im
                            : part == TimeBuffer::SamplePart::magnitude ? std::hypot(re, im)
                                                                        : std::atan2(im, re) * 180 / M_PI,
                            1e-9);
            }
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
    };
    const auto check = [&] {
        HostArray *time = nullptr, *value = nullptr;
        buffer.GetTimeAndValue(0, time, value);
        const HostArrayPtr t(time), v(value);
        std::vector<double> expected(static_cast<std::size_t>(next - oldest));
        std::iota(expected.begin(), expected.end(), oldest);
        EXPECT_TRUE(sameBits(realOf(time), expected));
        EXPECT_TRUE(sameBits(realOf(value), expected));
    };
    for (const std::size_t count : {3U, 700U, 20'000U, 9'000U, 25'000U, 70'000U, 60'000U, 250'000U, 1U}) {
        add(count);
        check();
        if (count == 9'000 || count == 70'000) { // the oldest go; those that come next wrap
            buffer.clearUptoLastTime();
            oldest = next - 1;
            add(count / 2);
            check();
        }
    }
}

} // namespace
