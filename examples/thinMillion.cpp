// A million points for a picture 1000 pixels wide: the thinner keeps the first point and the extremes of each column, so
// that a glitch of a single sample is still there.
// Prints:
//    1000000 points become 5995
//    lowest -1, highest 5, glitch at 0.4321 s
#include <tracery/DataThinner.h>
#include <tracery/host/Arrays.h>

#include <cmath>
#include <cstdio>
#include <numbers>

using namespace tracery;

int main()
{
    const int count = 1000000;
    const HostArrayPtr points = makeMatrix(2, count); // time and value in turn
    auto pair = realValues(points.get()).begin();
    for (int i = 0; i < count; ++i, pair += 2) {
        pair[0] = i / 1e6;
        pair[1] = i == 432100 ? 5 : std::sin(2 * std::numbers::pi * 1000 * pair[0]);
    }

    DataThinner thinner;
    const HostArrayPtr thinned(thinner.getArrayThinData(points.get(), count, 1000, false)); // 1000 columns a second

    const std::span<const double> drawn = realValues(thinned.get());
    double lowest = drawn[1], highest = drawn[1], when = 0;
    for (std::uint64_t i = 0; i < getN(thinned.get()); ++i) {
        lowest = std::fmin(lowest, drawn[2 * i + 1]);
        if (drawn[2 * i + 1] > highest) {
            highest = drawn[2 * i + 1];
            when = drawn[2 * i];
        }
    }
    std::printf("%d points become %u\n", count, static_cast<unsigned>(getN(thinned.get())));
    std::printf("lowest %g, highest %g, glitch at %g s\n", lowest, highest, when);
    return lowest == -1 && highest == 5 && when == 0.4321 && getN(thinned.get()) <= 6000 ? 0 : 1;
}
