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
    } cases[] = {{1024, 50, 512},
                 {100, 37.5, 38},
                 {10, 100, 9},
                 {7, 50, 4},
                 {10, 0, 0},
                 {10, 96, 9},
                 {1, 50, 0},
                 {10, -5, 0},
                 {10, std::nan(""), 0},
                 {10, 400, 9},
                 {10, kInf, 9},
                 {0, 50, 0},
                 {1000, 99.94, 999},
                 {0xFFFFFFFF, 100, 0xFFFFFFFE}};
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
    const auto used = usedBuffer();
    TestBuffer real(0xFFFFFFFF, 100), none(4, 50, kReal, 0), unequal(4, 0, kReal, 2);
    const Samples before = contents(*used);
    const HostArrayPtr narrow = matrix(3, 1, ramp(3)), flag(createLogicalScalar(true)), empty = matrix(0, 1, {});
    const double sample = 1, *noSamples = nullptr;
    const HostArray* null = nullptr;
    unequal.addtoBuffer(ramp(4).data(), 4, false, 0);
    const struct {
        std::function<void()> call;
        const char* refusal;
    } cases[] = {
        {[&] { used->AddValue(narrow.get(), 0, true); }, "invalid vector<T> subscript"},
        {[&] { used->AddValue(flag.get(), 0, true); }, "AddValueDataTypeError"},
        {[&] { used->addtoBuffer(null); }, "EmptyInput"},
        {[&] { used->addtoBuffer(&sample, 1, false, 2); }, "invalid vector<T> subscript"},
        {[&] { used->addtoBuffer(noSamples, 1, true, 1); }, "EmptyInput"},
        {[&] { used->AddTime(null, 0); }, "EmptyInput"},
        {[&] { used->AddTime(noSamples, 1, 0); }, "EmptyInput"},
        {[&] { used->AddTime(flag.get(), 0); }, "AddTimeError"},
        {[&] { used->clearBackTo(empty.get()); }, "EmptyInput"},
        {[&] { used->setupBufferParams(narrow.get(), null, null, null, false); }, "EmptyInput"},
        {[&] { real.addtoBuffer(&sample, 1, true, 0); }, "invalid vector<T> subscript"},
        {[&] { real.addtoBuffer(&sample, 0xFFFFFFFF, false, 0); }, "vector<T> too long"},
        {[&] { unequal.getAvailableSegments(); }, "invalid vector<T> subscript"}, // the second channel has none
        {[&] { unequal.clear(); }, "invalid vector<T> subscript"},
        {[&] { none.AddValue(narrow.get(), 0, true), none.setSegmentLength(3), none.clear(); }, "none"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(refusal(c.call), c.refusal) << "case " << &c - cases;
    EXPECT_TRUE(sameBits(contents(*used), before));
    EXPECT_FALSE(none.isReady());
}

} // namespace
