#include "host/Value.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace tracery::binding {

namespace {

template <class T>
HostArrayPtr converted(const HostArray* array)
{
    return dataTypeOf<Value<T>>()->convert(array);
}

template <class T>
std::span<const double> numbers(const T& array)
{
    return {getRealData(array.get()), static_cast<std::size_t>(getNumberOfElements(array.get()))};
}

template <class T>
HostArrayPtr writeRow(const std::vector<T>& values)
{
    HostArrayPtr row(createDoubleMatrix(1, values.size(), HostComplexity::real));
    std::ranges::transform(values, getRealData(row.get()), [](T value) { return static_cast<double>(value); });
    return row;
}

} // namespace

double Value<double>::read(const HostArray* array) { return numbers(converted<double>(array))[0]; }
HostArrayPtr Value<double>::write(double value)
{
    HostArrayPtr array(createDoubleMatrix(1, 1, HostComplexity::real));
    getRealData(array.get())[0] = value;
    return array;
}

bool Value<bool>::read(const HostArray* array) { return getLogicals(converted<bool>(array).get())[0] != 0; }
HostArrayPtr Value<bool>::write(bool value) { return HostArrayPtr(createLogicalScalar(value)); }

std::uint32_t Value<std::uint32_t>::read(const HostArray* array)
{
    return static_cast<std::uint32_t>(numbers(converted<std::uint32_t>(array))[0]);
}

std::vector<double> Value<std::vector<double>>::read(const HostArray* array)
{
    const HostArrayPtr row = converted<std::vector<double>>(array);
    const std::span<const double> values = numbers(row);
    return {values.begin(), values.end()};
}
HostArrayPtr Value<std::vector<double>>::write(const std::vector<double>& values) { return writeRow(values); }

std::vector<std::uint64_t> Value<std::vector<std::uint64_t>>::read(const HostArray* array)
{
    constexpr double kExact = 9007199254740992.0; // 2^53
    std::vector<std::uint64_t> counts;
    for (const double value : Value<std::vector<double>>::read(array)) {
        if (!(value >= 0 && value <= kExact && value == std::floor(value)))
            throw Error(errors::InvalidArgumentType, "needed: whole numbers from 0");
        counts.push_back(static_cast<std::uint64_t>(value));
    }
    return counts;
}
HostArrayPtr Value<std::vector<std::uint64_t>>::write(const std::vector<std::uint64_t>& values)
{
    return writeRow(values);
}

std::vector<std::uint8_t> Value<std::vector<std::uint8_t>>::read(const HostArray* array)
{
    const HostArrayPtr row = converted<std::vector<std::uint8_t>>(array);
    const std::uint8_t* flags = getLogicals(row.get());
    return {flags, flags + getNumberOfElements(row.get())};
}
HostArrayPtr Value<std::vector<bool>>::write(const std::vector<bool>& values)
{
    const std::uint64_t extents[] = {1, values.size()};
    HostArrayPtr row(createLogicalArray(2, extents));
    std::ranges::copy(values, getLogicals(row.get()));
    return row;
}

int readEnumeration(const hostobj::COSDataType& type, const HostArray* array)
{
    const HostArrayPtr name = type.convert(array);
    return *type.getEnumeration()->valueOf(
        {getChars(name.get()), static_cast<std::size_t>(getNumberOfElements(name.get()))});
}

std::string Value<std::string>::read(const HostArray* array)
{
    static const hostobj::COSDataTypePtr type = hostobj::COSDataType::fromString("asciiString");
    const HostArrayPtr text = type->convert(array);
    return {getChars(text.get()), static_cast<std::size_t>(getNumberOfElements(text.get()))};
}

} // namespace tracery::binding
