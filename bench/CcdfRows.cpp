#include "Harness.h"
#include "buffers/NaiveCcdf.h"

#include <tracery/SpectrumBuffer.h>
#include <tracery/host/Arrays.h>

#include <algorithm>
#include <complex>
#include <random>

namespace tracery::bench {

namespace {

/// Powers of complex noise, of a carrier of constant envelope, or of bursts with silence between.
std::vector<double> powersOf(const std::string& signal, std::size_t count)
{
    std::mt19937_64 random(1);
    std::normal_distribution<> normal;
    std::vector<double> powers(count);
    for (std::size_t i = 0; i < count; ++i)
        if (signal == "carrier")
            powers[i] = std::norm(std::polar(0.8, 0.1 * static_cast<double>(i)));
        else if (signal == "noise" || i / 64 % 2 == 1)
            powers[i] = std::norm(std::complex(normal(random), normal(random)));
    return powers;
}

/// Histograms span 100 dB.
constexpr int kSpanDecibels = 100;

Row row(const std::string& signal, std::size_t frame, int binsPerDecibel, Target target)
{
    char data[64];
    std::snprintf(data, sizeof data, "%s, %g dB, frames of %zu", signal.c_str(), 1.0 / binsPerDecibel, frame);
    return {"CCDF update", data, target, [=] {
                const int bins = kSpanDecibels * binsPerDecibel;
                const double resolution = 1.0 / binsPerDecibel;
                const std::vector<double> powers = powersOf(signal, frame);
                const std::shared_ptr<HostArray> column = makeMatrix(frame, 1, powers);
                Work work;
                work.items = static_cast<double>(frame);
                work.ours = [=, buffer = std::make_shared<SpectrumBuffer>()] {
                    outputsOf<4>([&](auto&... out) { buffer->updateCCDF(column.get(), bins, resolution, out...); });
                };
                work.plain = [=, plain = std::make_shared<test::NaiveCcdf>()] {
                    plain->update(getRealData(column.get()), frame, 1, bins, resolution);
                    keep(plain->distribution(0));
                };
                return work;
            }};
}

} // namespace

Rows ccdfRows()
{
    constexpr std::size_t kLong = 1 << 18, kShort = 1024;
    Rows rows;
    for (const char* signal : {"noise", "carrier", "bursts"})
        rows.push_back(row(signal, kLong, 10, {{}, 6.0, {}}));
    for (const char* signal : {"noise", "carrier", "bursts"})
        rows.push_back(row(signal, kLong, 100, {{}, 5.0, {}}));
    rows.push_back(row("noise", kLong, 2, {}));
    for (const int binsPerDecibel : {10, 2, 100}) // with the finest, there are more bins to report than powers to count
        rows.push_back(row("noise", kShort, binsPerDecibel, {{}, 4.0, {}}));
    return rows;
}

} // namespace tracery::bench
