#include "buffers/NaiveCcdf.h"
#include "buffers/SpectrumFixtures.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kOctave = 3.0102999566398121; // dB

struct Report {
    HostArrayPtr peaks, averages, counts, tables;
};

Report update(SpectrumBuffer& buffer, const HostArray* power, int bins, double resolution)
{
    HostArray *peaks = nullptr, *averages = nullptr, *counts = nullptr, *tables = nullptr;
    buffer.updateCCDF(power, bins, resolution, peaks, averages, counts, tables);
    return {HostArrayPtr(peaks), HostArrayPtr(averages), HostArrayPtr(counts), HostArrayPtr(tables)};
}

std::vector<double> histogram(const SpectrumBuffer& buffer)
{
    return realOf(HostArrayPtr(buffer.getCCDFHistogram()).get());
}
std::vector<double> unbinned(const SpectrumBuffer& buffer)
{
    return realOf(HostArrayPtr(buffer.getCCDFTotalUnbinned()).get());
}

double sum(const std::vector<double>& values) { return std::accumulate(values.begin(), values.end(), 0.0); }

void expectSame(const SpectrumBuffer& buffer, const Report& report, const NaiveCcdf& naive)
{
    EXPECT_TRUE(sameBits(realOf(report.peaks.get()), naive.peak));
    EXPECT_TRUE(sameBits(realOf(report.counts.get()), naive.count));
    EXPECT_TRUE(sameBits(histogram(buffer), naive.histogram));
    EXPECT_TRUE(sameBits(unbinned(buffer), naive.unbinned));
    const std::vector<double> averages = realOf(report.averages.get());
    for (std::size_t c = 0; c < naive.channels; ++c) {
        const double average = naive.sum[c] / naive.count[c];
        EXPECT_TRUE(sameBits(&averages[c], &average, 1));
        EXPECT_TRUE(sameBits(realOf(getCell(report.tables.get(), c)), naive.distribution(c)));
    }
}

/// Powers around 10^center, with all that is not a usual power among them.
class RandomPower {
public:
    explicit RandomPower(unsigned seed) : random_(seed) {}
    double operator()(double center, double decades, double odd)
    {
        if (std::bernoulli_distribution(odd)(random_)) {
            const double odds[] = {kNan, -kNan,  kInf,   -kInf, 0.0,  -0.0, -1e-300,
                                   -3.0, 5e-324, 1e-310, 1.0,   10.0, 1e300};
            return odds[random_() % std::size(odds)];
        }
        return std::pow(10.0, std::normal_distribution<>(center, decades)(random_));
    }
    std::uint64_t below(std::uint64_t bound) { return random_() % bound; }

private:
    std::mt19937_64 random_;
};

TEST(CcdfTest, RandomFramesAgreeWithTheFormulasBitForBit)
{
    const double resolutions[] = {0.5, 0.1, 0.01, 0.37, 3.0, 3.0102999566398121, 10.0, 47.0, 1e-4, 1e-6, 1e-9, 400.0};
    for (unsigned seed = 1; seed <= 120; ++seed) {
        RandomPower random(seed);
        TestBuffer buffer(8, 0);
        NaiveCcdf naive;
        double resolution = resolutions[seed % std::size(resolutions)];
        const int binCounts[] = {0, 1, 7, 100, 3000};
        int bins = binCounts[random.below(5)];
        std::size_t columns = random.below(3) + 1;
        for (int frame = 0; frame < 12; ++frame) {
            if (random.below(6) == 0) { // with the old number of columns, peaks and counts carry over
                buffer.resetCCDF();
                naive.reset();
                EXPECT_EQ(histogram(buffer).size() + unbinned(buffer).size(), 0U);
                bins = binCounts[random.below(5)];
            }
            if (random.below(6) == 0 && bins > 0)
                columns = random.below(3) + 1;
            if (random.below(6) == 0)
                resolution = resolutions[random.below(std::size(resolutions))];
            const std::size_t rows = random.below(5) == 0 ? random.below(3) : random.below(300);
            const double center = static_cast<double>(random.below(12)) - 8, odd = random.below(3) == 0 ? 0.1 : 0.001;
            std::vector<double> power(rows * columns);
            for (double& p : power)
                p = random(center, 0.8, odd);
            const Report report = update(buffer, matrix(rows, columns, power).get(), bins, resolution);
            naive.update(power.data(), rows, columns, bins, resolution);
            // A reset leaves more channels' totals behind than are in use.
            NaiveCcdf used = naive;
            for (auto* totals : {&used.peak, &used.sum, &used.count, &used.unbinned})
                totals->resize(columns);
            expectSame(buffer, report, used);
            if (HasFailure())
                FAIL() << "seed " << seed << ", frame " << frame << ", " << resolution << " dB, " << bins << " bins";
        }
    }
}

TEST(CcdfTest, EveryDoubleNearAnEdgeLandsInTheBinOfTheFormula)
{
    for (const double resolution : {0.5, 0.1, 0.01, 0.003, 1.0, 13.0, kOctave, kOctave * (1 + 1e-15), kOctave / 3})
        for (const double peak : {1.0, 10.0, 7.3e5, 1e-12, 4e-300, 1.7e308}) {
            const double K = (10 / std::log(10.0)) / resolution;
            const auto bins = static_cast<int>(std::min(6200.0 / resolution, 4000.0));
            const auto top = NaiveCcdf::indexOf(peak, K);
            std::vector<double> power{peak};
            const auto add = [&](double value) {
                if (value <= peak)
                    power.push_back(value);
            };
            for (std::int64_t i = top - bins - 1; i <= top; ++i) {
                const double edge = std::exp(static_cast<double>(i) / K);
                double below = edge, above = edge;
                for (int ulp = 0; ulp < 4;
                     ++ulp, below = std::nextafter(below, 0), above = std::nextafter(above, kInf)) {
                    add(below);
                    add(above);
                }
                for (const double distance : {0x1p-40, 0x1p-33, 0x1.01p-32, 0x1p-31, 0x1p-20}) {
                    add(edge * (1 + distance));
                    add(edge * (1 - distance));
                }
            }
            for (int exponent = -1074; exponent < 1024; ++exponent) // ends of octaves, where tables have theirs
                for (const double value : {std::ldexp(1, exponent), std::nextafter(std::ldexp(1, exponent), 0)})
                    add(value);
            TestBuffer buffer(8, 0);
            NaiveCcdf naive;
            const Report report = update(buffer, matrix(power.size(), 1, power).get(), bins, resolution);
            naive.update(power.data(), power.size(), 1, bins, resolution);
            expectSame(buffer, report, naive);
            if (HasFailure())
                FAIL() << resolution << " dB below " << peak;
        }
}

TEST(CcdfTest, APowerAboveThePeakWithinItsBinIsNotReportedOnPurpose)
{
    TestBuffer buffer(8, 0); // the peak is the power that set the bin, of 10 dB
    for (const double power : {500, 900})
        EXPECT_EQ(realOf(update(buffer, row({power}).get(), 5, 10).peaks.get()), std::vector<double>{500});
}

TEST(CcdfTest, AResetKeepsPeaksAndCountsUnlessTheChannelsChangeOnPurpose)
{
    TestBuffer buffer(8, 0);
    update(buffer, matrix(2, 2, {1, 100, 1, 1000}).get(), 5, 10);
    buffer.resetCCDF();
    const Report report = update(buffer, matrix(1, 2, {1, 1}).get(), 5, 10);
    EXPECT_EQ(realOf(report.peaks.get()), (std::vector<double>{100, 1000}));
    EXPECT_EQ(realOf(report.counts.get()), (std::vector<double>{3, 3}));
    EXPECT_EQ(sum(histogram(buffer)), 2);
    update(buffer, row({1, 1, 1}).get(), 6, 10); // three channels: the histogram starts anew, of any number of bins
    EXPECT_EQ(sum(histogram(buffer)), 3);
}

TEST(CcdfTest, BadInputIsRefusedAndChangesNothing)
{
    TestBuffer buffer(8, 0);
    const HostArrayPtr power = matrix(3, 1, {1, 2, 3});
    update(buffer, power.get(), 10, 0.5);
    const std::vector<double> before = histogram(buffer);
    HostArrayPtr complex(createDoubleMatrix(1, 1, HostComplexity::complex)), flag(createLogicalScalar(true));
    EXPECT_EQ(failure([&] { update(buffer, nullptr, 10, 0.5); }), "EmptyInput");
    EXPECT_EQ(failure([&] { update(buffer, complex.get(), 10, 0.5); }), "InvalidArgumentType");
    EXPECT_EQ(failure([&] { update(buffer, flag.get(), 10, 0.5); }), "InvalidArgumentType");
    for (const double resolution : {0.0, -1.0, kNan, kInf, 1e-320})
        EXPECT_EQ(failure([&] { update(buffer, power.get(), 10, resolution); }), "InvalidArgumentType");
    for (const int bins : {9, 11, 0})
        EXPECT_THROW(update(buffer, power.get(), bins, 0.5), std::out_of_range);
    EXPECT_THROW(update(buffer, power.get(), -1, 0.5), std::length_error);
    EXPECT_EQ(histogram(buffer), before);
    EXPECT_EQ(realOf(update(buffer, power.get(), 10, 0.5).counts.get()), std::vector<double>{6});
}

} // namespace
