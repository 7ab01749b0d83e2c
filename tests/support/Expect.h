#pragma once

#include <tracery/host/Arrays.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

namespace tracery::test {

/// The name of the identified error that `call` raises, "none" when it raises none.
template <class Call>
std::string failure(Call&& call)
{
    try {
        call();
    } catch (const Error& error) {
        return error.name();
    }
    return "none";
}

/// Equal bit for bit: the payload and sign of a NaN and the sign of a zero count.
inline ::testing::AssertionResult sameBits(const double* actual, const double* expected, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        if (std::bit_cast<std::uint64_t>(actual[i]) != std::bit_cast<std::uint64_t>(expected[i]))
            return ::testing::AssertionFailure()
                   << "at " << i << " of " << count << ": " << actual[i] << " in place of " << expected[i];
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult sameBits(const std::vector<double>& actual, const std::vector<double>& expected)
{
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure() << actual.size() << " values in place of " << expected.size();
    return sameBits(actual.data(), expected.data(), actual.size());
}

/// Short names of what tests make most.
inline HostArrayPtr matrix(std::uint64_t rows, std::uint64_t columns, const std::vector<double>& values)
{
    return makeMatrix(rows, columns, values);
}
inline HostArrayPtr row(const std::vector<double>& values) { return makeRow(values); }

/// One part of an array, to be compared; empty for null.
inline std::vector<double> realOf(const HostArray* array)
{
    return {realValues(array).begin(), realValues(array).end()};
}
inline std::vector<double> imagOf(const HostArray* array)
{
    return {imagValues(array).begin(), imagValues(array).end()};
}

} // namespace tracery::test
