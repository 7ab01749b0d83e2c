// The spectrum and the power statistics of a file of doubles: of the one given, or of one made here, a sine of 3 kHz at
// 48 kHz with some noise. The buffer cuts samples into segments; transforming them is the program's own business.
// Prints:
//    strongest at 3000 Hz
//    16384 powers, the peak 3.9 dB over the average
#include <tracery/SpectrumBuffer.h>
#include <tracery/host/Arrays.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <numbers>
#include <random>
#include <string>
#include <vector>

using namespace tracery;

int main(int argc, char** argv)
{
    const double rate = 48000, turn = 2 * std::numbers::pi;
    std::mt19937 random(1);
    std::ofstream made(argc < 2 ? "samples.f64" : "", std::ios::binary);
    for (int n = 0; n < 16384; ++n) {
        const double value = std::sin(turn * 3000 * n / rate) + static_cast<double>(random()) / 2e10 - 0.1;
        made.write(reinterpret_cast<const char*>(&value), sizeof value);
    }
    made.close();
    std::ifstream file(argc < 2 ? "samples.f64" : argv[1], std::ios::binary);
    std::vector<double> samples;
    for (double value = 0; file.read(reinterpret_cast<char*>(&value), sizeof value);)
        samples.push_back(value);

    SpectrumBuffer buffer(256, 0, HostComplexity::real, 1); // segments of 256 samples, no overlap, one channel
    buffer.setReduceUpdates(false);                         // there is no display to spare
    buffer.addtoBuffer(samples.data(), static_cast<std::uint32_t>(samples.size()), false, 0);
    const HostArrayPtr segments(buffer.getAvailableSegments()); // null when there is none
    std::vector<double> spectrum(128);
    for (std::size_t n = 0; segments != nullptr && n < std::size_t{256} * buffer.getNumSegments(); n += 256)
        for (std::size_t bin = 1; bin < 128; ++bin) {
            std::complex<double> sum;
            for (std::size_t i = 0; i < 256; ++i)
                sum += realValues(segments.get())[n + i] * std::polar(1.0, -turn * static_cast<double>(bin * i) / 256);
            spectrum[bin] += std::norm(sum);
        }
    const double strongest = rate / 256 * static_cast<double>(std::ranges::max_element(spectrum) - spectrum.begin());

    const HostArrayPtr powers = makeMatrix(samples.size(), 1); // a column a channel
    std::ranges::transform(samples, realValues(powers.get()).begin(), [](double v) { return v * v; });
    const auto [peak, average, count, curves] = outputsOf<4>([&](auto&... out) {
        buffer.updateCCDF(powers.get(), 200, 0.1, out...); // 200 bins of 0.1 dB
    });
    const double papr = 10 * std::log10(realValues(peak.get())[0] / realValues(average.get())[0]);
    std::printf("strongest at %g Hz\n%g powers, the peak %.1f dB over the average\n", strongest,
                realValues(count.get())[0], papr);
    return argc > 1 || (strongest == 3000 && papr > 3) ? 0 : 1;
}
