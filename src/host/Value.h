#pragma once

#include "host/Payload.h"

#include <tracery/host/DataType.h>
#include <tracery/host/HostArray.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tracery::binding {

/// The data type of a text, made once.
template <class Tag>
const hostobj::COSDataTypePtr& dataTypeOf()
{
    static const hostobj::COSDataTypePtr type = hostobj::COSDataType::fromString(Tag::type());
    return type;
}

/// How a C++ type of arguments and results crosses to the host: its type text, and conversions both ways. What is read
/// from is borrowed; what is written is new. read throws  InvalidArgumentType, InvalidObject
template <class T>
struct Value;

template <>
struct Value<double> {
    static std::string type() { return "double scalar"; }
    static double read(const HostArray* array);
    static HostArrayPtr write(double value);
};
template <>
struct Value<bool> {
    static std::string type() { return "logical scalar"; }
    static bool read(const HostArray* array);
    static HostArrayPtr write(bool value);
};
template <>
struct Value<std::uint32_t> {
    static std::string type() { return "uint32 scalar"; }
    static std::uint32_t read(const HostArray* array);
    static HostArrayPtr write(std::uint32_t value) { return Value<double>::write(value); }
};
template <>
struct Value<std::uint64_t> {
    static std::string type() { return "uint32 scalar"; }
    static HostArrayPtr write(std::uint64_t value) { return Value<double>::write(static_cast<double>(value)); }
};
/// Written as a row.
template <>
struct Value<std::vector<double>> {
    static std::string type() { return "double vector"; }
    static std::vector<double> read(const HostArray* array);
    static HostArrayPtr write(const std::vector<double>& values);
};
/// Counts must be whole numbers that doubles hold exactly.
template <>
struct Value<std::vector<std::uint64_t>> {
    static std::string type() { return "double vector"; }
    static std::vector<std::uint64_t> read(const HostArray* array);
    static HostArrayPtr write(const std::vector<std::uint64_t>& values);
};
template <>
struct Value<std::vector<std::uint8_t>> {
    static std::string type() { return "logical vector"; }
    static std::vector<std::uint8_t> read(const HostArray* array);
};
template <>
struct Value<std::vector<bool>> {
    static std::string type() { return "logical vector"; }
    static HostArrayPtr write(const std::vector<bool>& values);
};
template <>
struct Value<std::string> {
    static std::string type() { return "any"; }
    static std::string read(const HostArray* array);
    static HostArrayPtr write(const std::string& text) { return HostArrayPtr(createString(text.c_str())); }
};
/// Passed through, null included.
template <>
struct Value<const HostArray*> {
    static std::string type() { return "any"; }
    static const HostArray* read(const HostArray* array) { return array; }
};
template <>
struct Value<HostArray*> {
    static std::string type() { return "any"; }
    static HostArrayPtr write(HostArray* array) { return HostArrayPtr(array); }
};
template <>
struct Value<HostArrayPtr> {
    static std::string type() { return "any"; }
    static HostArrayPtr write(HostArrayPtr array) { return array; }
};
/// Any object.
template <>
struct Value<HostObjectRef> {
    static std::string type() { return "object"; }
    static HostArrayPtr write(const HostObjectRef& object)
    {
        return object != nullptr ? hostobj::omCreateScalar(object) : nullptr;
    }
};
/// An object of a published class.
template <class T>
struct Value<std::shared_ptr<T>> {
    static std::string type() { return std::string(Published<T>::name) + " scalar"; }
    static std::shared_ptr<T> read(const HostArray* array) { return payloadOf<T>(array); }
};
/// An argument that may be left out.
template <class T>
struct Value<std::optional<T>> : Value<T> {};

/// The value that a text names. throws  InvalidArgumentType
int readEnumeration(const hostobj::COSDataType& type, const HostArray* array);

template <class T>
inline constexpr bool mayBeLeftOut = false;
template <class T>
inline constexpr bool mayBeLeftOut<std::optional<T>> = true;

} // namespace tracery::binding
