// Frames of any powers: fuzz/spectrum_buffer.cpp.

#include "buffers/NaiveCcdf.h"
#include "buffers/SpectrumFixtures.h"

#include <algorithm>
#include <cmath>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kOctave = 3.0102999566398121; // dB

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
                     ++ulp, below = std::nextafter(below, 0), above = std::nextafter(above, INFINITY)) {
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
            updateCCDF(buffer, matrix(power.size(), 1, power).get(), bins, resolution);
            naive.update(power.data(), power.size(), 1, bins, resolution);
            EXPECT_TRUE(sameBits(realOf(HostArrayPtr(buffer.getCCDFHistogram()).get()), naive.histogram));
            EXPECT_TRUE(sameBits(realOf(HostArrayPtr(buffer.getCCDFTotalUnbinned()).get()), naive.unbinned));
            if (HasFailure())
                FAIL() << resolution << " dB below " << peak;
        }
}

} // namespace
