#pragma once

#include <tracery/recordings/SampleLayout.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tracery::captures {

using recordings::SampleLayout;
using recordings::SampleType;

/// How the bytes of steps are read. A line is what is drawn as one: a channel, or a part of a complex one.
struct StepFormat {
    StepFormat(const SampleLayout& layout, std::size_t channels, bool complex);

    SampleLayout layout;
    std::size_t channels;
    bool complex;
    std::size_t stepBytes;
    std::size_t blockSteps; ///< that an overview takes together
    /// Whether two numbers may have one value, so that overviews hold values.
    bool holdsValues = false;
    /// Whether greater numbers have lesser values.
    bool falls = false;

    std::size_t lines() const { return complex ? 2 * channels : channels; }
    std::size_t lineOf(std::size_t channel, bool imaginary) const
    {
        return complex ? 2 * channel + (imaginary ? 1 : 0) : channel;
    }

    /// The numbers of a line in so many steps as they are stored.
    template <class Number>
    void numbers(std::size_t line, const std::byte* steps, std::size_t count, Number* into) const;
    /// The same as values, `stride` steps from one to the next.
    void values(std::size_t line, const std::byte* steps, std::size_t count, std::size_t stride, double* into) const;
    /// Stores the values of a line. False when one has no number of its own.
    bool store(std::size_t line, const double* values, std::size_t valueStride, std::size_t count,
               std::byte* steps) const;

    double valueOf(double number) const
    {
        const double scaled = (number - layout.bias) / layout.divisor * layout.scale;
        return layout.offset == 0 ? scaled : scaled + layout.offset;
    }
    bool isPlain() const { return layout.bias == 0 && layout.divisor == 1 && layout.scale == 1 && layout.offset == 0; }
};

/// Calls `action` with a value of the type in which a stored number is handled.
template <class Action>
decltype(auto) withNumber(SampleType type, Action&& action)
{
    switch (type) {
    case SampleType::I8:
        return action(std::int8_t{});
    case SampleType::Bit:
    case SampleType::U8:
        return action(std::uint8_t{});
    case SampleType::I16:
        return action(std::int16_t{});
    case SampleType::U16:
        return action(std::uint16_t{});
    case SampleType::I24:
    case SampleType::U24:
    case SampleType::I32:
        return action(std::int32_t{});
    case SampleType::U32:
        return action(std::uint32_t{});
    case SampleType::F32:
        return action(float{});
    case SampleType::F64:
        break;
    }
    return action(double{});
}

/// The same of what overviews hold: numbers as stored, or values.
template <class Action>
decltype(auto) withHeld(const StepFormat& format, Action&& action)
{
    return withNumber(format.holdsValues ? SampleType::F64 : format.layout.type, action);
}

/// What overviews hold of a line in so many steps.
template <class Held>
void heldOf(const StepFormat& format, std::size_t line, const std::byte* steps, std::size_t count, Held* into)
{
    if constexpr (std::is_same_v<Held, double>)
        if (format.holdsValues)
            return format.values(line, steps, count, 1, into);
    format.numbers(line, steps, count, into);
}

/// The value of what an overview holds.
template <class Held>
double valueOfHeld(const StepFormat& format, Held held)
{
    return format.holdsValues || format.isPlain() ? static_cast<double>(held)
                                                  : format.valueOf(static_cast<double>(held));
}

} // namespace tracery::captures
