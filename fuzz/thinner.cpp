// Both thinners beside their rules, on lines of any points.

#include "Bytes.h"
#include "Floor.h"
#include "display/NaiveThinner.h"
#include "support/Expect.h"

#include <array>
#include <random>

using namespace tracery;
using fuzz::Bytes;
using naive::Doubles;
using test::sameBits;

namespace {

/// Mostly times that move on a little.
double nextTime(Bytes& bytes, double& now)
{
    const std::uint8_t choice = bytes.byte();
    if (choice < 240)
        return now += choice / 64.0;
    return choice < 248 ? bytes.number() : now = bytes.number();
}

fuzz::Floor longLines("long lines with columns of many points", 200), columns("columns closed in the stream", 10000);

/// Thousands of points, on a few levels, rising, falling, or noise; now and then one that is odd.
Doubles longLine(Bytes& bytes, double& now)
{
    std::mt19937 random(bytes());
    const auto pick = [&](std::initializer_list<double> from) { return from.begin()[random() % from.size()]; };
    const std::size_t kind = bytes.below(4), oddIn = std::array<std::size_t, 4>{3, 40, 2000, 0}[bytes.below(4)];
    const auto odd = [&] { return oddIn != 0 && random() % oddIn == 0; };
    Doubles pairs(2 * (5000 + random() % 15000));
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        now += odd() ? pick({0.0, 0.0, -0.3, -2.0, 5.0}) : 0.01 * (1 + static_cast<double>(random() % 20));
        const double slope[] = {0, 0, 0.1, -0.1}, noise = static_cast<double>(random() % (kind == 0 ? 7 : 1U << 30));
        pairs[i] = odd() ? pick({naive::kNaN, naive::kInf, -naive::kInf, 0.0}) : now;
        pairs[i + 1] = odd()      ? pick({naive::kNaN, naive::kInf, -naive::kInf, -0.0})
                       : kind < 2 ? noise
                                  : slope[kind] * now;
    }
    return pairs;
}

void thinLines(Bytes& bytes)
{
    DataThinner thinner;
    double now = 0, pixelStart = -naive::kInf, ratio = bytes.number();
    while (!bytes.isEmpty()) {
        Doubles pairs;
        for (std::size_t k = bytes.byte(); k > 0 && !bytes.isEmpty(); --k) {
            pairs.push_back(nextTime(bytes, now));
            pairs.push_back(bytes.number());
        }
        const bool isLong = bytes.below(16) == 0;
        if (isLong) {
            pairs = longLine(bytes, now);
            ratio = std::array{0.0005, 0.01, 0.1, 0.15, 0.3, 2.5}[bytes.below(6)];
        }
        const bool continued = bytes.below(4) != 0;
        if (!continued)
            pixelStart = -naive::kInf;
        if (bytes.below(8) == 0)
            ratio = bytes.number();
        const auto points = static_cast<int>(pairs.size() / 2);
        const HostArrayPtr thin(
            thinner.getArrayThinData(test::matrix(2, pairs.size() / 2, pairs).get(), points, ratio, continued));
        EXPECT_TRUE(sameBits(test::realOf(thin.get()), naive::thinBatch(pairs, ratio, pixelStart)));
        longLines += isLong && getN(thin.get()) > 4 && getN(thin.get()) < pairs.size() / 20 ? 1 : 0;
    }
}

void thinStream(Bytes& bytes)
{
    const bool complex = bytes.flag();
    std::vector<naive::ThinnedChannel> model(1 + bytes.below(4));
    DataThinner thinner;
    for (std::size_t c = 0; c < model.size(); ++c)
        thinner.initDataThinningMinMax();
    const double ratio = bytes.number();
    thinner.setPixelTimeRatio(ratio);
    Doubles out(9, 77.0), expected = out;
    double last = -naive::kInf, now = 0;
    while (!bytes.isEmpty()) {
        if (bytes.below(64) == 0) {
            thinner.reset();
            model.assign(model.size(), naive::ThinnedChannel());
        }
        double time = nextTime(bytes, now);
        const double d = time - last;
        const bool opens = last == -naive::kInf || d * ratio >= 0.5 || d == 0.0;
        bool needUpdate = !opens;
        for (std::size_t c = 0; c < model.size(); ++c) {
            const bool enabled = bytes.below(16) != 0;
            Doubles real{99, bytes.number()}, imag{99, bytes.number()};
            const bool expectedHad = !opens || model[c].hasData;
            if (opens) {
                columns += model[c].hasData ? 1 : 0;
                if (model[c].hasData)
                    model[c].emit(expected, complex, enabled);
                model[c].open(expected, time, real[1], imag[1], complex);
                last = time;
            } else if (enabled) {
                model[c].fold(time, real[1], imag[1], complex);
            }
            bool had = true;
            const int position = static_cast<int>(c);
            thinner.thinData(position, time, real, imag, out, 0, complex, enabled, 1, had, position, needUpdate);
            EXPECT_EQ(needUpdate, opens);
            EXPECT_EQ(had, expectedHad);
            EXPECT_TRUE(sameBits(out, expected));
            EXPECT_TRUE(sameBits(naive::accumulators(thinner, c), model[c].accumulators()));
            if (opens) {
                EXPECT_TRUE(sameBits({thinner.getLastUpdateTime(), thinner.getLastSampleDataAdded()},
                                     {time, complex ? imag[1] : real[1]}));
            }
        }
    }
}

} // namespace

void fuzz::runInput(Bytes& bytes) { bytes.flag() ? thinLines(bytes) : thinStream(bytes); }
