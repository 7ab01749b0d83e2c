#include <tracery/DataPattern.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace tracery;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// The definition, over the newest 3 N of all values.
bool naive(const std::vector<double>& all, std::size_t n)
{
    if (all.size() < 3 * n)
        return false;
    const double* element = all.data() + (all.size() - 3 * n);
    for (std::size_t i = 0; i < n; ++i)
        if (std::isnan(element[i]) && !std::isnan(element[i + n]) && std::isnan(element[i + 2 * n]))
            return true;
    return false;
}

TEST(DataPatternTest, AgreesWithTheDefinitionAtEveryValue)
{
    std::mt19937 random(5);
    int found = 0;
    for (int round = 0; round < 400; ++round) {
        const int n = static_cast<int>(random() % 6);
        const auto oneIn = 2 + random() % 12;
        DataPattern pattern(n);
        std::vector<double> all;
        for (int k = 0; k < 80; ++k) {
            all.push_back(random() % oneIn == 0 ? kNaN : random() % 5 == 0 ? -kInf : 1.0);
            const bool expected = naive(all, static_cast<std::size_t>(n));
            ASSERT_EQ(pattern.addValueAndCheckPattern(all.back()), expected) << "N " << n << ", value " << k;
            if (all.size() >= 3 * static_cast<std::size_t>(n)) {
                ASSERT_EQ(pattern.hasNaNPattern(), expected);
            }
            found += expected;
        }
    }
    EXPECT_GT(found, 1000) << "the input must make the pattern occur";
}

TEST(DataPatternTest, ACopyGoesOnByItself)
{
    EXPECT_FALSE(DataPattern(-3).addValueAndCheckPattern(kNaN));
    DataPattern first(1);
    first.addValueAndCheckPattern(kNaN);
    first.addValueAndCheckPattern(1);
    DataPattern second(first);
    EXPECT_TRUE(second.addValueAndCheckPattern(kNaN));
    EXPECT_FALSE(first.addValueAndCheckPattern(2));
    EXPECT_TRUE(second.hasNaNPattern());
}

} // namespace
