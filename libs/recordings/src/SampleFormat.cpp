#include "SampleFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace tracery::recordings {

namespace {

/// Signed integers are fractions of 2^(bits - 1). Unsigned ones stand for a signal around the middle of their
/// range, which lies between two integers, so both ends are reached: 0 is -1 and the greatest is 1.
template <class Number>
double scaled(Number number)
{
    const auto value = static_cast<double>(number);
    constexpr auto kGreatest = static_cast<double>(std::numeric_limits<Number>::max());
    if constexpr (std::is_floating_point_v<Number>)
        return value;
    else if constexpr (std::is_signed_v<Number>)
        return value / (kGreatest + 1);
    else
        return (value - kGreatest / 2) / (kGreatest / 2);
}

template <class Number, std::endian order>
void decodeText(const char* bytes, std::size_t stride, std::span<double> out)
{
    for (double& value : out) {
        std::array<char, sizeof(Number)> raw;
        std::memcpy(raw.data(), bytes, raw.size());
        if constexpr (order != std::endian::native)
            std::ranges::reverse(raw);
        value = scaled(std::bit_cast<Number>(raw));
        bytes += stride;
    }
}

struct Entry {
    std::string_view name;
    std::size_t size;
    void (*decode)(const char*, std::size_t, std::span<double>);
    SampleType type;
    bool bigEndian;
    double middle, greatest; ///< of the scale
};

template <class Number>
constexpr SampleType typeOf()
{
    constexpr bool kSigned = std::is_signed_v<Number>;
    if constexpr (std::is_floating_point_v<Number>)
        return sizeof(Number) == 4 ? SampleType::F32 : SampleType::F64;
    else if constexpr (sizeof(Number) == 1)
        return kSigned ? SampleType::I8 : SampleType::U8;
    else if constexpr (sizeof(Number) == 2)
        return kSigned ? SampleType::I16 : SampleType::U16;
    else
        return kSigned ? SampleType::I32 : SampleType::U32;
}

template <class Number, std::endian order = std::endian::native>
constexpr Entry entry(std::string_view name)
{
    constexpr auto kGreatest = static_cast<double>(std::numeric_limits<Number>::max());
    constexpr bool kFloat = std::is_floating_point_v<Number>, kSigned = std::is_signed_v<Number>;
    return {name,
            sizeof(Number),
            &decodeText<Number, order>,
            typeOf<Number>(),
            order != std::endian::little && sizeof(Number) > 1,
            kSigned ? 0 : kGreatest / 2,
            kFloat ? 1 : (kSigned ? kGreatest + 1 : kGreatest / 2)};
}

constexpr std::array kEntries{
    entry<float, std::endian::little>("f32_le"),
    entry<float, std::endian::big>("f32_be"),
    entry<double, std::endian::little>("f64_le"),
    entry<double, std::endian::big>("f64_be"),
    entry<std::int32_t, std::endian::little>("i32_le"),
    entry<std::int32_t, std::endian::big>("i32_be"),
    entry<std::int16_t, std::endian::little>("i16_le"),
    entry<std::int16_t, std::endian::big>("i16_be"),
    entry<std::uint32_t, std::endian::little>("u32_le"),
    entry<std::uint32_t, std::endian::big>("u32_be"),
    entry<std::uint16_t, std::endian::little>("u16_le"),
    entry<std::uint16_t, std::endian::big>("u16_be"),
    entry<std::int8_t>("i8"),
    entry<std::uint8_t>("u8"),
};

} // namespace

std::optional<SampleFormat> sampleFormat(std::string_view name)
{
    if (!name.starts_with('c') && !name.starts_with('r'))
        return std::nullopt;
    const auto found = std::ranges::find(kEntries, name.substr(1), &Entry::name);
    if (found == kEntries.end())
        return std::nullopt;
    SampleLayout layout;
    layout.type = found->type;
    layout.bigEndian = found->bigEndian;
    layout.bias = found->middle;
    layout.divisor = found->greatest;
    return SampleFormat{name.starts_with('c'), found->size, found->decode, layout};
}

} // namespace tracery::recordings
