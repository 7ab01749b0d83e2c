// A SpectrumBuffer beside the plain rules; its power statistics beside the formulas; or alone, with huge parameters.

#include "Bytes.h"
#include "Floor.h"
#include "buffers/NaiveCcdf.h"
#include "buffers/SpectrumBufferModel.h"

#include <random>

using namespace tracery;
using namespace tracery::test;
using fuzz::Bytes;

namespace {

Samples numbers(Bytes& bytes, std::size_t count)
{
    Samples values(count);
    for (double& value : values)
        value = bytes.number();
    return values;
}

/// Powers about a level, now and then one of any kind.
Samples powers(Bytes& bytes, std::size_t count)
{
    std::mt19937 random(bytes());
    const double center = static_cast<double>(bytes.below(12)) - 8;
    const unsigned oddIn = bytes.below(3) == 0 ? 10 : 1000;
    std::normal_distribution<> decades(center, 0.8);
    Samples values(count);
    for (double& value : values)
        value = random() % oddIn == 0 ? bytes.number() : std::pow(10.0, decades(random));
    return values;
}

fuzz::Floor binned("powers in bins", 500000), carriedOver("frames after a reset that kept peaks", 500);
fuzz::Floor statisticsShort("statistics short of memory", 1000);

void comparePowers(Bytes& bytes)
{
    constexpr double kResolutions[] = {0.5,  0.1,  0.01, 0.37, 3.0,  3.0102999566398121,
                                       10.0, 47.0, 1e-4, 1e-6, 1e-9, 400.0};
    constexpr int kBins[] = {0, 1, 5, 7, 20, 40, 100, 3000};
    TestBuffer buffer(8, 0);
    NaiveCcdf naive;
    ScarceMemory memory(bytes);
    int bins = bytes.oneOf(kBins);
    double resolution = bytes.oneOf(kResolutions);
    std::size_t columns = 1 + bytes.below(3);
    while (!bytes.isEmpty()) {
        if (bytes.below(8) == 0) {
            memory.withoutMemory([&] { buffer.resetCCDF(); });
            naive.reset();
            bins = bytes.oneOf(kBins);
            ++carriedOver;
        }
        if (bytes.below(6) == 0 && bins > 0)
            columns = 1 + bytes.below(3);
        if (bytes.below(8) == 0)
            resolution = bytes.oneOf(kResolutions);
        const std::size_t rows = bytes.flag() ? bytes.below(4) : bytes.below(256);
        const Samples power = bytes.flag() ? powers(bytes, rows * columns) : numbers(bytes, rows * columns);
        const HostArrayPtr array = matrix(rows, columns, power);
        HostArray* out[4] = {};
        const auto compare = [&] {
            const HostArrayPtr histogram(buffer.getCCDFHistogram()), unbinned(buffer.getCCDFTotalUnbinned());
            EXPECT_TRUE(sameBits(realOf(histogram.get()), naive.histogram));
            EXPECT_TRUE(sameBits(realOf(unbinned.get()), naive.totals(naive.unbinned)));
        };
        memory.attempt(
            "none",
            [&] {
                return refusal(
                    [&] { buffer.updateCCDF(array.get(), bins, resolution, out[0], out[1], out[2], out[3]); });
            },
            compare);
        naive.update(power.data(), rows, columns, bins, resolution);
        compare();
        const HostArrayPtr peaks(out[0]), averages(out[1]), counts(out[2]), tables(out[3]);
        EXPECT_TRUE(sameBits(realOf(peaks.get()), naive.totals(naive.peak)));
        EXPECT_TRUE(sameBits(realOf(counts.get()), naive.totals(naive.count)));
        for (std::size_t c = 0; c < columns; ++c) {
            const double average = naive.sum[c] / naive.count[c];
            EXPECT_TRUE(sameBits(getRealData(averages.get()) + c, &average, 1));
            EXPECT_TRUE(sameBits(realOf(getCell(tables.get(), c)), naive.distribution(c)));
        }
        binned += bins > 0 ? power.size() : 0;
    }
    statisticsShort += memory.failures();
}

/// Parameters and frames of any size. What cannot be done is refused, and has not happened.
void askForAnything(Bytes& bytes)
{
    const auto count = [&] {
        return bytes.below(8) != 0 ? static_cast<std::uint32_t>(bytes.below(20)) : std::uint32_t{1} << bytes.below(32);
    };
    TestBuffer buffer(count(), bytes.number(), bytes.flag() ? kReal : kComplex, 1 + count() % 5);
    while (!bytes.isEmpty()) {
        const std::uint32_t processed = buffer.getNumProcessedSamples(), segments = buffer.getNumSegments();
        const std::string refused = refusal([&] {
            switch (bytes.below(9)) {
            case 0:
                return buffer.setSegmentLength(count());
            case 1:
                return buffer.setOverlapPercent(bytes.number());
            case 2:
                return buffer.setNumChannels(count());
            case 3:
                return buffer.setSegmentsPerBlock(count());
            case 4:
                return bytes.flag() ? buffer.rebuffer() : buffer.clear();
            case 5:
                return void(buffer.segments());
            case 6: {
                HostArray* out[4] = {};
                buffer.updateCCDF(matrix(2, 2, numbers(bytes, 4)).get(), static_cast<int>(count()), bytes.number(),
                                  out[0], out[1], out[2], out[3]);
                for (HostArray* each : out)
                    destroyArray(each);
                return;
            }
            default: {
                const std::size_t rows = bytes.below(20), columns = bytes.below(4);
                const HostArrayPtr frame = matrix(rows, columns, numbers(bytes, rows * columns));
                return bytes.flag() ? buffer.AddValue(frame.get(), 0, true) : buffer.addtoBuffer(frame.get());
            }
            }
        });
        if (refused != "none") {
            EXPECT_EQ(buffer.getNumProcessedSamples(), processed) << refused;
            EXPECT_EQ(buffer.getNumSegments(), segments) << refused;
        }
    }
}

} // namespace

void fuzz::runInput(Bytes& bytes)
{
    static Floor shortages("operations short of memory", 5000), recuts("samples cut anew", 3000);
    static Floor refusals("refusals", 1000);
    const std::size_t before = getNumberOfLiveArrays();
    switch (bytes.below(3)) {
    case 0:
        comparePowers(bytes);
        break;
    case 1:
        askForAnything(bytes);
        break;
    default:
        RandomSpectrum run(bytes);
        while (!bytes.isEmpty())
            run.step();
        shortages += run.shortages(), recuts += run.recuts(), refusals += run.refusals();
    }
    EXPECT_EQ(getNumberOfLiveArrays(), before);
}
