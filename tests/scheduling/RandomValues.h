#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>

namespace tracery::test {

/// Values to set at random: such as make sense, and now and then such as hardly do.
class RandomValues {
protected:
    /// A number that makes sense, or one in eight times one that hardly does.
    double number(double low, double high)
    {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        constexpr double kOdd[] = {
            std::numeric_limits<double>::quiet_NaN(), kInfinity, -kInfinity, 0, -1, 1e308, -1e308, 5e-324, 1e-9, -0.0};
        if (random_() % 8 == 0)
            return kOdd[random_() % std::size(kOdd)];
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    template <class Enum>
    Enum choice(int low, int high)
    {
        const int odd = random_() % 16 == 0 ? 3 : 0;
        return static_cast<Enum>(std::uniform_int_distribution<int>(low - odd, high + odd)(random_));
    }
    /// 1 or 2, and sometimes what there is not.
    std::uint32_t source() { return static_cast<std::uint32_t>(random_() % (random_() % 16 == 0 ? 4 : 2) + 1) % 4; }
    bool flip() { return random_() % 2 == 0; }
    std::size_t below(std::size_t end) { return random_() % end; }

private:
    std::mt19937 random_{20};
};

} // namespace tracery::test
