#include "OnePassRange.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace tracery::bench {

namespace {

using Lanes [[gnu::vector_size(32)]] = double;

/// Eight chains, because each minimum waits for the one before.
[[gnu::always_inline]] inline double rangeOf(std::span<const double> data)
{
    constexpr std::size_t kWidth = 4, kChains = 8;
    constexpr double kMost = std::numeric_limits<double>::max();
    Lanes least[kChains], greatest[kChains];
    for (std::size_t k = 0; k < kChains; ++k) {
        least[k] = Lanes{kMost, kMost, kMost, kMost};
        greatest[k] = -least[k];
    }
    std::size_t i = 0;
    for (; i + kWidth * kChains <= data.size(); i += kWidth * kChains)
        for (std::size_t k = 0; k < kChains; ++k) {
            Lanes x;
            std::memcpy(&x, &data[i + kWidth * k], sizeof x);
            least[k] = x < least[k] ? x : least[k];
            greatest[k] = x > greatest[k] ? x : greatest[k];
        }
    double low = kMost, high = -kMost;
    for (std::size_t k = 0; k < kChains; ++k)
        for (std::size_t lane = 0; lane < kWidth; ++lane) {
            low = std::min(low, least[k][lane]);
            high = std::max(high, greatest[k][lane]);
        }
    for (; i < data.size(); ++i) {
        low = std::min(low, data[i]);
        high = std::max(high, data[i]);
    }
    return high - low;
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] double rangeAvx2(std::span<const double> data) { return rangeOf(data); }
#endif
double rangeBaseline(std::span<const double> data) { return rangeOf(data); }

} // namespace

double onePassRange(std::span<const double> data)
{
#if defined(__x86_64__)
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2)
        return rangeAvx2(data);
#endif
    return rangeBaseline(data);
}

} // namespace tracery::bench
