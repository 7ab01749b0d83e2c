#include "buffers/SpectrumFixtures.h"

#include <functional>
#include <limits>
#include <random>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(SpectrumBufferTest, SegmentsOverlapAndTheFirstBeginsWithZeros)
{
    TestBuffer buffer(8, 50);
    buffer.add(ramp(12));
    const Samples all{0, 0, 0, 0, 1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 5, 6, 7, 8, 9, 10, 11, 12};
    const HostArrayPtr array = buffer.segments();
    EXPECT_EQ(realOf(array.get()), all);
    EXPECT_EQ(getNumberOfDimensions(array.get()), 3U);
    EXPECT_EQ(getDimensions(array.get())[1], 3U);
    buffer.setSegmentsPerBlock(2);
    EXPECT_EQ(realOf(buffer.segments().get()), Samples(all.begin(), all.begin() + 16));
    buffer.clear(); // the third segment stays, and the open one
    EXPECT_FALSE(buffer.isReady());
    buffer.add(ramp(4, 13));
    EXPECT_EQ(realOf(buffer.segments().get()), (Samples{5, 6, 7, 8, 9, 10, 11, 12, 9, 10, 11, 12, 13, 14, 15, 16}));
}

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

// Of the stream with the overlap in zeros ahead, segment k begins at k steps.
TEST(SpectrumBufferTest, SegmentsAreSlicesOfTheStreamHoweverItIsChunked)
{
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        const std::size_t length = random() % 40 + 1, channels = random() % 3 + 1, perBlock = random() % 4 + 1;
        TestBuffer buffer(static_cast<std::uint32_t>(length), static_cast<double>(random() % 101),
                          random() % 2 ? kComplex : kReal, static_cast<std::uint32_t>(channels));
        buffer.setSegmentsPerBlock(static_cast<std::uint32_t>(perBlock));
        const std::size_t overlap = buffer.getNumOverlapSamples(), step = length - overlap;
        std::size_t written = 0, taken = 0;
        for (int i = 0; i < 30; ++i) {
            const std::size_t rows = random() % (random() % 5 == 0 ? 300 : 12);
            Frame frame; // a sample tells its column and its place
            for (std::size_t c = 0; c < 2 * channels; ++c)
                frame.push_back(ramp(rows, static_cast<double>(1000000 * c + written)));
            buffer.AddValue(arrayOf(frame, channels).get(), 0, true);
            written += rows;
            HostArray *time = nullptr, *value = nullptr;
            buffer.GetTimeAndValue(0, time, value);
            const HostArrayPtr segments(value);
            Samples all = realOf(value);
            const Samples imag = imagOf(value);
            all.insert(all.end(), imag.begin(), imag.end());
            const std::size_t count = value != nullptr ? getDimensions(value)[1] : 0;
            ASSERT_EQ(count, (written / step - taken) / perBlock * perBlock);
            for (std::size_t at = 0; at < all.size(); ++at) {
                const std::size_t c = at / (length * count), place = (taken + at / length % count) * step + at % length;
                ASSERT_EQ(all[at], place < overlap ? 0 : static_cast<double>(1000000 * c + place - overlap))
                    << "seed " << seed;
            }
            taken += count;
        }
        EXPECT_EQ(buffer.getNumProcessedSamples(), written);
        EXPECT_EQ(buffer.getNumUnprocessedSamples(), written % step);
    }
}

TEST(SpectrumBufferTest, ARecutKeepsWhatWasNotShownAndLeadsWithSamples)
{
    TestBuffer buffer(8, 50);
    buffer.add(ramp(3));
    buffer.add(ramp(3, 4)); // fills segment 0 with 1 to 4, and opens segment 1 with 5 and 6
    buffer.setSegmentLength(3);
    EXPECT_EQ(buffer.getNumProcessedSamples(), 6U);
    EXPECT_EQ(realOf(buffer.segments().get()), (Samples{4, 5, 6}));
    buffer.clear();
    buffer.setSegmentLength(4); // nothing to cut anew: what is left of the old cut is filled up
    buffer.add(ramp(2, 7));
    EXPECT_EQ(realOf(buffer.segments().get()), (Samples{5, 6, 7, 8}));
}

TEST(SpectrumBufferTest, SegmentsWaitForTheTimerUnlessToldOtherwise)
{
    TestBuffer buffer(4, 0);
    EXPECT_EQ(buffer.timer.seconds, 0.05);
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
