#pragma once

#include <tracery/host/Error.h>
#include <tracery/host/HostArray.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
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

/// A real matrix from values in column-major order.
inline HostArrayPtr matrix(std::uint64_t rows, std::uint64_t columns, const std::vector<double>& values)
{
    HostArrayPtr array(createDoubleMatrix(rows, columns, HostComplexity::real));
    if (!values.empty())
        std::memcpy(getRealData(array.get()), values.data(), values.size() * sizeof(double));
    return array;
}

inline HostArrayPtr row(const std::vector<double>& values) { return matrix(1, values.size(), values); }

/// One part of an array as a vector; empty for null.
inline std::vector<double> part(const HostArray* array, const double* data)
{
    return data != nullptr ? std::vector<double>(data, data + getNumberOfElements(array)) : std::vector<double>();
}
inline std::vector<double> realOf(const HostArray* array)
{
    return array ? part(array, getRealData(array)) : part(nullptr, nullptr);
}
inline std::vector<double> imagOf(const HostArray* array)
{
    return array ? part(array, getImagData(array)) : part(nullptr, nullptr);
}

} // namespace tracery::test
