#include "buffers/SpectrumFixtures.h"

#include <functional>
#include <limits>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(SpectrumBufferTest, TheOverlapIsThePercentageRoundedAndLeavesASample)
{
    const struct {
        std::uint32_t length;
        double percent;
        std::uint32_t overlap;
    } cases[] = {
        {1024, 50, 512},    {100, 37.5, 38}, {10, 96, 9},   {10, -5, 0}, {10, std::nan(""), 0},        {10, 400, 9},
        {1000, 99.94, 999}, {1, 50, 0},      {10, kInf, 9}, {0, 50, 0},  {0xFFFFFFFF, 100, 0xFFFFFFFE}};
    for (const auto& c : cases)
        EXPECT_EQ(TestBuffer(c.length, c.percent).getNumOverlapSamples(), c.overlap) << c.percent << "% " << c.length;
}

TEST(SpectrumBufferTest, SegmentsWaitForTheTimerUnlessToldOtherwise)
{
    TestBuffer buffer(4, 0);
    EXPECT_EQ(buffer.timer.timeout, 0.05);
    buffer.add(ramp(40));
    buffer.restartTimer();
    EXPECT_FALSE(buffer.isTimeUp() || buffer.isReady());
    EXPECT_EQ(buffer.segments(), nullptr);
    buffer.setReduceUpdatesOverride(true);
    EXPECT_TRUE(!buffer.isTimeUp() && buffer.isReady());
    buffer.setReduceUpdatesOverride(false);
    buffer.setReduceUpdates(false);
    EXPECT_TRUE(buffer.isTimeUp() && buffer.isReady());
    buffer.setReduceUpdates(true);
    buffer.timer.up = true;
    EXPECT_TRUE(buffer.isReady());
    EXPECT_TRUE(SpectrumBuffer().isTimeUp()); // a timer of its own that has not been started
}

TEST(SpectrumBufferTest, OddAnswersAreKeptOnPurpose)
{
    TestBuffer buffer(8, 50);
    EXPECT_EQ(buffer.getNumUnprocessedSamples(), 0U - 4U); // wraps
    buffer.setNPorts(4);
    EXPECT_EQ(buffer.getNPorts(), 1);
    EXPECT_EQ(buffer.GetLastTime(), -kInf);
    const double times[] = {3, 4};
    buffer.AddTime(times, 2, 0);
    EXPECT_EQ(buffer.GetLastTime(), 3);
    buffer.add(ramp(12));
    buffer.clearBackTo(row({1, 2}).get());
    EXPECT_EQ(buffer.GetLastTime(), 1);
    EXPECT_EQ(buffer.getNumSegments(), 3U); // clearBackTo discards no samples
    buffer.flush();
    EXPECT_EQ(buffer.GetLastTime(), -kInf);
}

TEST(SpectrumBufferTest, BadInputIsRefusedAndChangesNothing)
{
    TestBuffer used(8, 50, kComplex, 2);
    used.AddValue(arrayOf({ramp(21), ramp(21, 50), ramp(21, 100), ramp(21, 150)}, 2).get(), 0, true);
    used.AddTime(row({3}).get(), 0);
    updateCCDF(used, matrix(2, 2, {1, 2, 3, 4}).get());
    TestBuffer real(0xFFFFFFFF, 100), none(4, 50, kReal, 0), unequal(4, 0, kReal, 2);
    const Samples before = realOf(used.segments().get()), counts = realOf(HostArrayPtr(used.getCCDFHistogram()).get());
    const HostArrayPtr narrow = matrix(3, 1, ramp(3)), flag(createLogicalScalar(true)), empty = matrix(0, 1, {});
    const HostArrayPtr complex(createDoubleMatrix(1, 1, kComplex)), power = matrix(2, 2, {1, 2, 3, 4});
    const double sample = 1, *noSamples = nullptr;
    const HostArray* null = nullptr;
    unequal.addtoBuffer(ramp(4).data(), 4, false, 0);
    const auto statistics = [&](const HostArray* of, int bins, double resolution) {
        return [=, &used] { updateCCDF(used, of, bins, resolution); };
    };
    const struct {
        const char* refusal;
        std::vector<std::function<void()>> calls;
    } cases[] = {
        {"invalid vector<T> subscript",
         {[&] { used.AddValue(narrow.get(), 0, true); }, [&] { used.addtoBuffer(&sample, 1, false, 2); },
          [&] { real.addtoBuffer(&sample, 1, true, 0); },
          [&] { unequal.getAvailableSegments(); }, // the second channel has none
          [&] { unequal.clear(); }, statistics(power.get(), 49, 0.5), statistics(power.get(), 0, 0.5)}},
        {"AddValueDataTypeError", {[&] { used.AddValue(flag.get(), 0, true); }}},
        {"EmptyInput",
         {[&] { used.addtoBuffer(null); }, [&] { used.addtoBuffer(noSamples, 1, true, 1); },
          [&] { used.AddTime(null, 0); }, [&] { used.AddTime(noSamples, 1, 0); },
          [&] { used.clearBackTo(empty.get()); },
          [&] { used.setupBufferParams(narrow.get(), null, null, null, false); }, statistics(null, 50, 0.5)}},
        {"AddTimeError", {[&] { used.AddTime(flag.get(), 0); }}},
        {"InvalidArgumentType",
         {statistics(complex.get(), 50, 0.5), statistics(flag.get(), 50, 0.5), statistics(power.get(), 50, 0),
          statistics(power.get(), 50, -1), statistics(power.get(), 50, std::nan("")), statistics(power.get(), 50, kInf),
          statistics(power.get(), 50, 1e-320)}},
        {"vector<T> too long",
         {[&] { real.addtoBuffer(&sample, 0xFFFFFFFF, false, 0); }, statistics(power.get(), -1, 0.5)}},
        {"none", {[&] { none.AddValue(narrow.get(), 0, true), none.setSegmentLength(3), none.clear(); }}},
    };
    for (const auto& c : cases)
        for (const auto& call : c.calls)
            EXPECT_EQ(refusal(call), c.refusal) << "call " << &call - c.calls.data();
    EXPECT_TRUE(sameBits(realOf(used.segments().get()), before));
    EXPECT_TRUE(sameBits(realOf(HostArrayPtr(used.getCCDFHistogram()).get()), counts));
    EXPECT_TRUE(used.getNumProcessedSamples() == 21 && used.GetLastTime() == 3);
    EXPECT_FALSE(none.isReady());
}

} // namespace
