#include "StepFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace tracery::captures {

namespace {

std::size_t bytesOf(SampleType type)
{
    switch (type) {
    case SampleType::I24:
    case SampleType::U24:
        return 3;
    default:
        return withNumber(type, [](auto number) { return sizeof number; });
    }
}

struct Bounds {
    double least, greatest;
};

/// Of the numbers of a type; those of floating point have none.
Bounds boundsOf(SampleType type)
{
    switch (type) {
    case SampleType::Bit:
        return {0, 1};
    case SampleType::I24:
        return {-0x1p23, 0x1p23 - 1};
    case SampleType::U24:
        return {0, 0x1p24 - 1};
    default:
        return withNumber(type, [](auto number) {
            using Limits = std::numeric_limits<decltype(number)>;
            return Bounds{static_cast<double>(Limits::lowest()), static_cast<double>(Limits::max())};
        });
    }
}

bool isFloating(SampleType type) { return type == SampleType::F32 || type == SampleType::F64; }

template <class Number>
Number swapped(Number number)
{
    auto bytes = std::bit_cast<std::array<std::byte, sizeof(Number)>>(number);
    std::ranges::reverse(bytes);
    return std::bit_cast<Number>(bytes);
}

std::int32_t threeBytes(const std::byte* from, bool bigEndian, bool isSigned)
{
    const auto byte = [&](int i) { return std::to_integer<std::uint32_t>(from[bigEndian ? 2 - i : i]); };
    const std::uint32_t bits = byte(0) | byte(1) << 8 | byte(2) << 16;
    return isSigned && (bits >> 23) != 0 ? static_cast<std::int32_t>(bits) - (1 << 24)
                                         : static_cast<std::int32_t>(bits);
}

/// Calls `action` with the i-th number of a line.
template <class Number, class Action>
void forNumbers(const StepFormat& format, std::size_t line, const std::byte* steps, std::size_t count,
                std::size_t stride, Action&& action)
{
    const std::size_t pace = stride * format.stepBytes;
    const SampleType type = format.layout.type;
    if (type == SampleType::Bit) {
        for (std::size_t i = 0; i < count; ++i)
            action(i, static_cast<Number>(std::to_integer<unsigned>(steps[i * pace + line / 8]) >> line % 8 & 1U));
        return;
    }
    steps += line * bytesOf(type);
    if (bytesOf(type) == 3) {
        for (std::size_t i = 0; i < count; ++i)
            action(i,
                   static_cast<Number>(threeBytes(steps + i * pace, format.layout.bigEndian, type == SampleType::I24)));
        return;
    }
    const bool swap = format.layout.bigEndian != (std::endian::native == std::endian::big);
    for (std::size_t i = 0; i < count; ++i) {
        Number number;
        std::memcpy(&number, steps + i * pace, sizeof number);
        action(i, swap ? swapped(number) : number);
    }
}

/// Whether numbers that differ have values that differ: their distance is more than rounding takes.
bool tellsApart(const StepFormat& format)
{
    const SampleLayout& layout = format.layout;
    const auto [least, greatest] = boundsOf(layout.type);
    if (isFloating(layout.type))
        return format.isPlain();
    const double unit = std::abs(layout.scale / layout.divisor);
    const double values = std::max(std::abs(format.valueOf(least)), std::abs(format.valueOf(greatest)));
    constexpr double kRounding = 16 * std::numeric_limits<double>::epsilon();
    return std::isfinite(values) && unit > 1e-280 && unit > kRounding * values &&
           1 > kRounding * (std::abs(layout.bias) + greatest) && std::abs(layout.divisor) > 1e-280;
}

} // namespace

StepFormat::StepFormat(const SampleLayout& stored, std::size_t channelCount, bool isComplex)
    : layout(stored), channels(channelCount), complex(isComplex)
{
    const bool bits = layout.type == SampleType::Bit;
    stepBytes = bits ? (lines() + 7) / 8 : lines() * bytesOf(layout.type);
    blockSteps = bits ? 4096 : 256;
    holdsValues = !tellsApart(*this);
    falls = !holdsValues && layout.scale / layout.divisor < 0;
}

template <class Number>
void StepFormat::numbers(std::size_t line, const std::byte* steps, std::size_t count, Number* into) const
{
    if (stepBytes == sizeof(Number) && !layout.bigEndian && layout.type != SampleType::Bit)
        std::memcpy(into, steps, count * sizeof(Number));
    else
        forNumbers<Number>(*this, line, steps, count, 1, [into](std::size_t i, Number number) { into[i] = number; });
}

template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::int8_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::uint8_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::int16_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::uint16_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::int32_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, std::uint32_t*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, float*) const;
template void StepFormat::numbers(std::size_t, const std::byte*, std::size_t, double*) const;

void StepFormat::values(std::size_t line, const std::byte* steps, std::size_t count, std::size_t stride,
                        double* into) const
{
    withNumber(layout.type, [&](auto type) {
        using Number = decltype(type);
        if (isPlain())
            forNumbers<Number>(*this, line, steps, count, stride,
                               [into](std::size_t i, Number number) { into[i] = static_cast<double>(number); });
        else
            forNumbers<Number>(*this, line, steps, count, stride, [this, into](std::size_t i, Number number) {
                into[i] = valueOf(static_cast<double>(number));
            });
    });
}

bool StepFormat::store(std::size_t line, const double* values, std::size_t valueStride, std::size_t count,
                       std::byte* steps) const
{
    const auto same = [](double a, double b) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    };
    const SampleType type = layout.type;
    const Bounds bounds = boundsOf(type);
    const bool plain = isPlain();
    const std::size_t size = bytesOf(type);
    return withNumber(type, [&](auto kind) {
        using Number = decltype(kind);
        bool all = true;
        for (std::size_t i = 0; i < count; ++i) {
            const double value = values[i * valueStride];
            double number = plain ? value : (value - layout.offset) / layout.scale * layout.divisor + layout.bias;
            if constexpr (std::is_integral_v<Number>)
                number = std::isnan(number) ? 0 : std::clamp(std::nearbyint(number), bounds.least, bounds.greatest);
            const auto kept = static_cast<Number>(number);
            all = all && same(plain ? static_cast<double>(kept) : valueOf(static_cast<double>(kept)), value);
            std::byte* at = steps + i * stepBytes;
            if (type == SampleType::Bit) {
                const auto bit = std::byte{1} << static_cast<int>(line % 8);
                at[line / 8] = kept != Number{} ? at[line / 8] | bit : at[line / 8] & ~bit;
                continue;
            }
            auto bytes = std::bit_cast<std::array<std::byte, sizeof(Number)>>(kept);
            if constexpr (std::endian::native == std::endian::big)
                std::ranges::reverse(bytes); // the lowest byte first, of three as of four
            if (layout.bigEndian)
                std::reverse(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            std::memcpy(at + line * size, bytes.data(), size);
        }
        return all;
    });
}

} // namespace tracery::captures
