#include "display/NaiveThinner.h"
#include "support/Expect.h"

#include <algorithm>
#include <random>

using namespace tracery;
using namespace naive;
using test::sameBits;

namespace {

// ---- Batch

Doubles contents(const HostArray* array)
{
    EXPECT_TRUE(isReal2dMatrix(array));
    EXPECT_EQ(getDimensions(array)[0], 2U);
    return test::realOf(array);
}

Doubles thin(DataThinner& thinner, const HostArray* array, int points, double ratio, bool continued)
{
    const HostArrayPtr result(thinner.getArrayThinData(array, points, ratio, continued));
    return contents(result.get());
}

Doubles thin(DataThinner& thinner, const Doubles& pairs, double ratio, bool continued)
{
    return thin(thinner, test::matrix(2, pairs.size() / 2, pairs).get(), static_cast<int>(pairs.size() / 2), ratio,
                continued);
}

TEST(DataThinnerTest, BatchOpensAColumnAtTheVeryDoubleAtWhichTheRuleDoes)
{
    std::mt19937 random(1);
    for (int round = 0; round < 20'000; ++round) {
        const double ratio =
            std::ldexp(1 + static_cast<double>(random()) * 0x1p-32, static_cast<int>(random() % 2096) - 1074);
        const double distance = 0.5 / ratio; // rounded
        std::vector<double> times;
        for (int k = 1; k <= 40; ++k)
            times.push_back(k / 41.0 * distance);
        for (double t = std::nextafter(std::nextafter(distance, 0), 0); times.size() < 45; t = std::nextafter(t, kInf))
            times.push_back(t);
        if (round % 2 == 1)
            std::shuffle(times.begin(), times.end(), random);
        Doubles pairs{0, 0};
        for (const double t : times)
            pairs.insert(pairs.end(), {t, static_cast<double>(random())});
        pairs.insert(pairs.end(), {kInf, 0});
        DataThinner thinner;
        double pixelStart = -kInf;
        const Doubles expected = thinBatch(pairs, ratio, pixelStart);
        ASSERT_TRUE(sameBits(thin(thinner, pairs, ratio, false), expected)) << "ratio " << ratio;
    }
}

TEST(DataThinnerTest, BatchTakesNoMorePointsThanThereAre)
{
    DataThinner thinner;
    const HostArrayPtr line = makeMatrix(2, 3, {0, 1, 1, 2, 2, 3});
    EXPECT_EQ(thin(thinner, line.get(), 1000, 1, false).size(), 6U);
    EXPECT_EQ(thin(thinner, line.get(), 2, 1, false).size(), 4U);
    EXPECT_EQ(thin(thinner, line.get(), 0, 1, true).size(), 0U);
    EXPECT_EQ(thin(thinner, line.get(), 1, 1, true).size(), 0U) << "an empty call keeps the column that began at 1";
    EXPECT_EQ(thin(thinner, line.get(), -1, 1, false).size(), 0U);
    EXPECT_EQ(thin(thinner, line.get(), 1, 1, true).size(), 2U) << "starting anew forgets it";

    EXPECT_EQ(thin(thinner, nullptr, 3, 1, false).size(), 0U);
    const HostArrayPtr logicals(createNumericMatrix(2, 3, HostClassID::logical, HostComplexity::real));
    EXPECT_EQ(thin(thinner, logicals.get(), 3, 1, false).size(), 0U);
    setRealData(line.get(), nullptr);
    EXPECT_EQ(thin(thinner, line.get(), 3, 1, false).size(), 0U);
}

// ---- Streaming

/// One complex channel at one column a second, fed sample by sample.
struct Stream {
    Stream()
    {
        thinner.initDataThinningMinMax();
        thinner.setPixelTimeRatio(1.0);
    }
    void add(double time, Doubles real, Doubles imag)
    {
        bool hadData = false, needUpdate = false;
        thinner.thinData(0, time, real, imag, out, 0, true, true, 0, hadData, 0, needUpdate);
    }

    DataThinner thinner;
    Doubles out = Doubles(9, 77.0);
};

TEST(DataThinnerTest, AColumnWithoutDataOpensWithNaN)
{
    Stream stream;
    stream.add(0, {}, {});
    EXPECT_TRUE(sameBits(stream.out, {77, 77, 77, 77, 77, 77, 0, kNaN, kNaN}));
    stream.add(0.1, {}, {});
    stream.add(1, {4}, {-kInf});
    EXPECT_TRUE(sameBits(stream.out, {77, 77, 77, 77, 77, 77, 1, 4, kNaN})) << "nothing was accumulated";
    EXPECT_EQ(stream.thinner.getLastSampleDataAdded(), -kInf) << "the imaginary part, as it was";
    stream.add(1.1, {5}, {6});
    stream.add(1.2, {7}, {});
    stream.add(2, {8}, {9});
    EXPECT_TRUE(sameBits(stream.out, {1.1, 5, 6, 1.2, 7, 6, 2, 8, 9})) << "no imaginary part, none accumulated";
}

TEST(DataThinnerTest, CopiesAreIndependentAndChannelsAddedLaterStartEmpty)
{
    using enum ThinDataMinMax;
    DataThinner first;
    first.initDataThinningMinMax();
    first.setPixelMinMaxValue(0, Max, 5);
    first.setPixelMinMaxImgValue(0, Min, 6);
    first.setPixelMinMaxTimeValue(0, Max, 7);
    DataThinner second(first);
    second.initDataThinningMinMax();
    first.resetMinMaxVals(0);
    EXPECT_TRUE(sameBits(accumulators(first, 0), {kInf, -kInf, 6, -kInf, kInf, 7})) << "the real extremes alone";
    EXPECT_TRUE(sameBits(accumulators(second, 0), {kInf, 5, 6, -kInf, kInf, 7}));
    EXPECT_TRUE(sameBits(accumulators(second, 1), {kInf, -kInf, kInf, -kInf, kInf, -kInf}));
}

} // namespace
