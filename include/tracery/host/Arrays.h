#pragma once

#include <tracery/host/Error.h>
#include <tracery/host/HostArray.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <tuple>

namespace tracery {

// ---- Arrays of doubles, made and read in a word each. Whoever makes one owns it; it lives for the current call.

/// A matrix of zeros.
inline HostArrayPtr makeMatrix(std::uint64_t rows, std::uint64_t columns,
                               HostComplexity complexity = HostComplexity::real)
{
    return HostArrayPtr(createDoubleMatrix(rows, columns, complexity));
}

/// The real parts of all elements, to read or to write while the array lives; none where getRealData gives null, and
/// for no array.
inline std::span<double> realValues(HostArray* array)
{
    double* data = array != nullptr ? getRealData(array) : nullptr;
    return data != nullptr ? std::span(data, getNumberOfElements(array)) : std::span<double>();
}
/// The same, to be read.
inline std::span<const double> realValues(const HostArray* array) { return realValues(const_cast<HostArray*>(array)); }
/// The imaginary parts, likewise.
inline std::span<double> imagValues(HostArray* array)
{
    double* data = array != nullptr ? getImagData(array) : nullptr;
    return data != nullptr ? std::span(data, getNumberOfElements(array)) : std::span<double>();
}
/// The same, to be read.
inline std::span<const double> imagValues(const HostArray* array) { return imagValues(const_cast<HostArray*>(array)); }

/// A real matrix of these values, column by column. throws  InvalidArray when they are not rows x columns many
inline HostArrayPtr makeMatrix(std::uint64_t rows, std::uint64_t columns, std::span<const double> values)
{
    HostArrayPtr array = makeMatrix(rows, columns);
    if (getNumberOfElements(array.get()) != values.size())
        throw Error(errors::InvalidArray);
    std::ranges::copy(values, realValues(array.get()).begin());
    return array;
}
/// The same, of values that are written out.
inline HostArrayPtr makeMatrix(std::uint64_t rows, std::uint64_t columns, std::initializer_list<double> values)
{
    return makeMatrix(rows, columns, std::span(values.begin(), values.size()));
}

/// A row of these values.
inline HostArrayPtr makeRow(std::span<const double> values) { return makeMatrix(1, values.size(), values); }
inline HostArrayPtr makeRow(std::initializer_list<double> values) { return makeMatrix(1, values.size(), values); }

/// A number.
inline HostArrayPtr makeScalar(double value) { return makeRow({value}); }

/// Owns what a call hands out through `count` references, null at first; times and values of a read, for example:
///     const auto [times, values] = outputsOf<2>([&](auto&... out) { buffer.GetTimeAndValue(port, out...); });
template <std::size_t count, class Call>
std::array<HostArrayPtr, count> outputsOf(Call&& call)
{
    std::array<HostArray*, count> outputs{};
    std::apply(call, outputs);
    std::array<HostArrayPtr, count> owned;
    std::ranges::transform(outputs, owned.begin(), [](HostArray* array) { return HostArrayPtr(array); });
    return owned;
}

} // namespace tracery
