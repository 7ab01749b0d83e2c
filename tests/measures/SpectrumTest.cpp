// Spectra and power statistics against direct transforms, plain counting, and signals of known power.

#include <tracery/measures/LevelUnit.h>
#include <tracery/measures/PowerStatistics.h>
#include <tracery/measures/SpectrumEstimate.h>
#include <tracery/measures/peaks.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>

using namespace tracery::measures;

namespace {

using Complex = std::complex<double>;
constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Interleaved steps of a few channels.
struct Signal {
    std::size_t width = 1;
    std::vector<double> real;
    std::vector<double> imag; ///< empty for a real signal

    Complex at(std::size_t step, std::size_t channel) const
    {
        const std::size_t i = step * width + channel;
        return {real[i], imag.empty() ? 0 : imag[i]};
    }
};

Signal signalOf(std::size_t steps, bool complex, const std::function<Complex(std::size_t)>& value,
                std::size_t width = 1)
{
    Signal signal{width, {}, {}};
    for (std::size_t i = 0; i < steps * width; ++i) {
        signal.real.push_back(value(i).real());
        if (complex)
            signal.imag.push_back(value(i).imag());
    }
    return signal;
}

Signal noise(std::size_t steps, bool complex, std::mt19937_64& random, std::size_t width = 1, double mean = 0.1)
{
    std::normal_distribution<double> part(mean, 1);
    Signal signal = signalOf(
        steps, complex, [&](std::size_t) { return part(random); }, width);
    for (double& each : signal.imag)
        each = part(random);
    return signal;
}

/// Calls take(real, imag) with the signal in blocks of random lengths.
template <class Take>
void inBlocks(const Signal& signal, std::mt19937_64& random, std::size_t longest, Take&& take)
{
    const std::span<const double> real(signal.real), imag(signal.imag);
    for (std::size_t at = 0; at < real.size();) {
        const std::size_t count = std::min((1 + random() % longest) * signal.width, real.size() - at);
        take(real.subspan(at, count), imag.empty() ? imag : imag.subspan(at, count));
        at += count;
    }
}

double windowAt(WindowFunction window, double turn) // n/L of a period
{
    const double x = 2 * kPi * turn;
    switch (window) {
    case WindowFunction::Rectangular:
        return 1;
    case WindowFunction::Hann:
        return std::pow(std::sin(x / 2), 2);
    case WindowFunction::Hamming:
        return 0.08 + 0.92 * std::pow(std::sin(x / 2), 2);
    case WindowFunction::BlackmanHarris:
        return 0.35875 - 0.48829 * std::cos(x) + 0.14128 * std::cos(2 * x) - 0.01168 * std::cos(3 * x);
    case WindowFunction::FlatTop:
        break;
    }
    return 0.21557895 - 0.41663158 * std::cos(x) + 0.277263158 * std::cos(2 * x) - 0.083578947 * std::cos(3 * x) +
           0.006947368 * std::cos(4 * x);
}

/// Mean power by frequency in turns a sample, -1/2 to 1/2, by the definition; `used` counts the segments averaged.
std::vector<double> directSpectrum(const Signal& signal, std::size_t channel, const SpectrumSettings& s, double turns,
                                   std::uint64_t& used)
{
    const std::size_t length = s.segment, steps = signal.real.size() / signal.width;
    const std::size_t overlap = std::min<std::size_t>(
        length - 1, static_cast<std::size_t>(std::floor(s.overlapPercent * s.segment / 100 + 0.5)));
    double power = 0, sum = 0, squares = 0;
    used = 0;
    for (std::size_t n = 0; n < length; ++n) {
        const double w = windowAt(s.window, static_cast<double>(n) / static_cast<double>(length));
        sum += w;
        squares += w * w;
    }
    for (std::size_t start = 0; start + length <= steps && used < s.mostAverages; start += length - overlap) {
        Complex bin = 0;
        bool whole = true;
        for (std::size_t n = 0; n < length; ++n) {
            const Complex x = signal.at(start + n, channel);
            whole = whole && std::isfinite(x.real()) && std::isfinite(x.imag());
            bin += x * windowAt(s.window, static_cast<double>(n) / static_cast<double>(length)) *
                   std::polar(1.0, -2 * kPi * turns * static_cast<double>(n));
        }
        power += whole ? std::norm(bin) : 0;
        used += whole ? 1 : 0;
    }
    return {power / (static_cast<double>(used) * sum * sum), power / (static_cast<double>(used) * s.rate * squares)};
}

TEST(SpectrumTest, AgreesWithTheDefinitionWhateverTheBlocksAndWithoutSegmentsThatMissAValue)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 60; ++i) {
        SpectrumSettings settings{.width = 1 + random() % 3, .channels = {}, .complex = i % 2 == 1};
        for (std::size_t c = settings.width; c-- > 0;)
            settings.channels.push_back(c);
        settings.rate = 1000;
        settings.centerFrequency = 5e4;
        settings.segment = static_cast<std::uint32_t>(5 + random() % 40);
        settings.overlapPercent = static_cast<double>(random() % 100);
        settings.window = static_cast<WindowFunction>(i / 2 % 5);
        if (i % 3 == 0)
            settings.mostAverages = 3;
        Signal signal = noise(300, settings.complex, random, settings.width);
        for (const double bad : {kNaN, kInfinity, -kInfinity})
            (settings.complex && random() % 2 == 0 ? signal.imag : signal.real)[random() % signal.real.size()] = bad;

        SpectrumEstimate fine(settings), coarse(settings);
        inBlocks(signal, random, 20, [&](auto real, auto imag) { fine.add(real, imag); });
        inBlocks(signal, random, 1000, [&](auto real, auto imag) { coarse.add(real, imag); });
        const std::vector<double> frequencies = fine.frequencies();
        for (std::size_t c = 0; c < settings.channels.size(); ++c) {
            const std::vector<double> power = fine.power(c, SpectrumScale::Power);
            const std::vector<double> density = fine.power(c, SpectrumScale::Density);
            ASSERT_EQ(power, coarse.power(c, SpectrumScale::Power));
            ASSERT_EQ(power.size(), frequencies.size());
            for (std::size_t k = 0; k < power.size(); ++k) {
                const double turns = (frequencies[k] - (settings.complex ? 5e4 : 0)) / settings.rate;
                ASSERT_TRUE(turns >= (settings.complex ? -0.5 : 0) && turns <= 0.5);
                std::uint64_t used = 0;
                const auto expected = directSpectrum(signal, settings.channels[c], settings, turns, used);
                const double sides = settings.complex || turns == 0 || turns == 0.5 ? 1 : 2;
                ASSERT_EQ(fine.averages(c), used);
                ASSERT_NEAR(power[k], sides * expected[0], 1e-11) << i << ' ' << k;
                ASSERT_NEAR(density[k], sides * expected[1], 1e-11) << i << ' ' << k;
            }
        }
    }
}

/// The peaks as the program finds them.
std::vector<SpectrumPeak> peaksOf(const SpectrumSettings& settings, const Signal& signal)
{
    SpectrumEstimate estimate(settings);
    estimate.add(signal.real, signal.imag);
    const std::vector<double> power = estimate.power(0, SpectrumScale::Power);
    const double prominence = noiseProminence(estimate.independentAverages(0), power.size());
    return findPeaks(estimate.frequencies(), power,
                     {.window = settings.window,
                      .segment = settings.segment,
                      .complex = settings.complex,
                      .prominence = std::max(4.0, prominence),
                      .most = 9});
}

SpectrumSettings anySettings(std::mt19937_64& random)
{
    constexpr std::uint32_t lengths[] = {64, 100, 101, 512, 1000};
    return {.complex = random() % 2 == 1,
            .rate = 8000,
            .segment = lengths[random() % 5],
            .overlapPercent = static_cast<double>(random() % 80),
            .window = static_cast<WindowFunction>(random() % 5)};
}

TEST(SpectrumTest, ASineReadsTrueBetweenTheBinsWithEveryWindowAndNothingElseIsAPeak)
{
    std::mt19937_64 random(2);
    const auto uniform = [&](double low, double high) { return std::uniform_real_distribution(low, high)(random); };
    for (int i = 0; i < 1000; ++i) {
        SpectrumSettings settings = anySettings(random);
        settings.centerFrequency = settings.complex ? 1e6 : 0;
        const double half = settings.segment / 2.0, amplitude = std::pow(10, uniform(-3, 3)), start = uniform(0, 7);
        const double bin = settings.complex ? uniform(-half, half - 1)
                           : i % 4 == 0     ? (random() % 2 == 0 ? uniform(0.6, 6) : half - uniform(0.6, 6))
                                            : uniform(6, half - 6);
        const bool nearEnd = !settings.complex && (bin < 2.5 || bin > half - 2.5); // where both frequencies meet
        const double constant = bin > 16 ? 2 * amplitude : 0;                  // is no peak
        const Signal sine = signalOf(settings.segment * (1 + random() % 4), settings.complex, [&](std::size_t step) {
            const Complex turning =
                std::polar(amplitude, start + 2 * kPi * bin / settings.segment * static_cast<double>(step));
            return settings.complex ? turning : turning.real() + constant;
        });
        SCOPED_TRACE(testing::Message() << nameOf(settings.window) << ' ' << bin << " of " << settings.segment);
        const std::vector<SpectrumPeak> peaks = peaksOf(settings, sine);
        ASSERT_FALSE(peaks.empty());
        const double level = levelOf(peaks[0].power / (amplitude * amplitude), LevelUnit::FullScale, settings.complex);
        ASSERT_NEAR(level, 0, nearEnd ? 6 : 0.01);
        double off = std::abs((peaks[0].frequency - settings.centerFrequency) * settings.segment / 8000 - bin);
        off = std::min(off, settings.segment - off); // a complex spectrum goes on at its other end
        ASSERT_LT(off, nearEnd ? 2 : 0.02);
        if (nearEnd)
            continue;
        ASSERT_EQ(peaks.size(), 1U) << peaks[1].frequency << ' ' << peaks[1].power / peaks[0].power;
    }
}

TEST(SpectrumTest, NoiseIsNoPeakAndASineWellAboveItIs)
{
    std::mt19937_64 random(4);
    int alarms = 0, missed = 0;
    constexpr int kRounds = 500;
    for (int i = 0; i < kRounds; ++i) {
        const SpectrumSettings settings = anySettings(random);
        const std::size_t steps = settings.segment * (i % 4 == 0 ? 1 : 1 + random() % 30);
        Signal signal = noise(steps, settings.complex, random, 1, 0);
        alarms += peaksOf(settings, signal).empty() ? 0 : 1;
        const double bin = std::round(settings.segment * 0.29) + 0.3;
        for (std::size_t k = 0; k < steps; ++k) {
            const Complex turning = std::polar(3.0, 2 * kPi * bin / settings.segment * static_cast<double>(k));
            signal.real[k] += turning.real();
            if (settings.complex)
                signal.imag[k] += turning.imag();
        }
        const auto found = peaksOf(settings, signal);
        missed += found.empty() || std::abs(found[0].frequency * settings.segment / 8000 - bin) > 0.5 ? 1 : 0;
    }
    EXPECT_LE(alarms, kRounds / 100);
    EXPECT_LE(missed, kRounds / 50);
}

TEST(SpectrumTest, PeaksAreHillsWithAValleyBetweenTheStrongestFirst)
{
    const std::vector<double> power = {90, 50, 9, 20, 9, 2, 7, 3, 8, 3, 2, 1, 6, 6, 1, 3, 9};
    std::vector<double> frequencies(power.size());
    std::iota(frequencies.begin(), frequencies.end(), 0.0);
    PeakSearch search{.segment = 17, .complex = true, .prominence = 0, .most = 9};
    const auto found = [&] {
        std::vector<double> bins;
        for (const SpectrumPeak& peak : findPeaks(frequencies, power, search))
            bins.push_back(std::round(peak.frequency));
        return bins;
    };
    EXPECT_EQ(found(), (std::vector<double>{0, 8, 12})); // not 3 and 6, which hardly rise; 16 leads up to 0
    search.most = 1;
    EXPECT_EQ(found(), std::vector<double>{0});
    search.most = 9;
    search.prominence = 9;
    EXPECT_EQ(found(), std::vector<double>{0}) << "most around have 2 or 3";
    EXPECT_TRUE(findPeaks(frequencies, std::vector<double>(power.size()), search).empty());
}

TEST(SpectrumTest, PowerStatisticsAreThoseOfPlainCounting)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 20; ++i) {
        const bool complex = i % 2 == 1;
        const std::vector<std::size_t> channels = {2, 0};
        Signal signal = noise(3000, complex, random, 3);
        for (int k = 0; k < 30; ++k)
            signal.real[random() % signal.real.size()] = k % 3 == 0 ? kNaN : k % 3 == 1 ? -kInfinity : 0;
        PowerStatistics fine(3, channels, 200, 0.1), coarse(3, channels, 200, 0.1);
        for (PowerStatistics* each : {&fine, &coarse}) {
            const std::size_t longest = each == &fine ? 50 : 5000;
            inBlocks(signal, random, longest, [&](auto real, auto imag) { each->add(real, imag); });
            inBlocks(signal, random, longest, [&](auto real, auto imag) { each->countAbove(real, imag); });
        }
        for (std::size_t c = 0; c < channels.size(); ++c) {
            std::vector<double> powers;
            double sum = 0;
            for (std::size_t step = 0; step < 3000; ++step)
                if (const double power = std::norm(signal.at(step, channels[c])); std::isfinite(power)) {
                    powers.push_back(power);
                    sum += power;
                }
            const auto count = static_cast<double>(powers.size());
            const auto above = [&](double level) {
                return std::count_if(powers.begin(), powers.end(), [&](double power) { return power > level; });
            };
            const PowerStatistics::Channel& totals = fine.channel(c);
            EXPECT_EQ(totals.samples, powers.size());
            EXPECT_EQ(totals.leftOut, 3000 - powers.size());
            EXPECT_EQ(totals.peak, *std::max_element(powers.begin(), powers.end()));
            EXPECT_EQ(totals.average(), sum / count);
            EXPECT_EQ(totals.above, static_cast<std::uint64_t>(above(sum / count)));
            EXPECT_EQ(totals.above, coarse.channel(c).above);
            EXPECT_EQ(totals.sum, coarse.channel(c).sum);
            const auto curve = fine.curve(c), other = coarse.curve(c);
            ASSERT_TRUE(curve.size() > 50 && curve.size() == other.size());
            EXPECT_TRUE(curve.front().level <= 0 && curve.back().percent == 0);
            for (std::size_t k = 0; k < curve.size(); ++k) {
                const double level = sum / count * std::pow(10, curve[k].level / 10);
                ASSERT_NEAR(curve[k].percent, 100 * static_cast<double>(above(level)) / count, 1e-9);
                ASSERT_NEAR(curve[k].level, other[k].level, 1e-9);
            }
        }
    }
}

} // namespace
