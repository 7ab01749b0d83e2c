#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tracery::captures {

template <class Number>
bool isGap(Number number)
{
    if constexpr (std::is_floating_point_v<Number>)
        return std::isnan(number);
    return false;
}

/// The extremes of some numbers and where they are. Of equal ones the last counts; where there is a NaN, the last NaN is
/// both.
template <class Number, class Place = std::size_t>
struct Extremes {
    Number low{}, high{};
    Place lowAt{}, highAt{};
    bool any = false;

    /// Takes in what comes behind.
    void fold(Number low2, const Place& low2At, Number high2, const Place& high2At)
    {
        if (any && !isGap(high2)) {
            if (high <= high2) // no number is beside a NaN
                high = high2, highAt = high2At;
            if (low2 <= low)
                low = low2, lowAt = low2At;
            return;
        }
        low = low2, high = high2;
        lowAt = low2At, highAt = high2At;
        any = true;
    }
};

/// So many numbers at once.
template <class Number>
struct Lanes {
    typedef Number Vector __attribute__((vector_size(16)));
    static constexpr std::size_t kCount = sizeof(Vector) / sizeof(Number);

    static Vector load(const Number* from)
    {
        Vector vector;
        std::memcpy(&vector, from, sizeof vector);
        return vector;
    }
    template <class Mask>
    static bool any(const Mask& mask)
    {
        std::uint64_t halves[2];
        std::memcpy(halves, &mask, sizeof halves);
        return (halves[0] | halves[1]) != 0;
    }
};

/// The last place of a number among others; it is there.
template <class Number>
std::size_t lastOf(Number number, const Number* numbers, std::size_t count)
{
    using L = Lanes<Number>;
    for (; count >= L::kCount; count -= L::kCount)
        if (L::any(L::load(numbers + count - L::kCount) == (typename L::Vector{} + number)))
            break;
    do
        --count;
    while (!(numbers[count] == number));
    return count;
}

/// count  one or more
template <class Number>
Extremes<Number> extremesOf(const Number* numbers, std::size_t count)
{
    using L = Lanes<Number>;
    Extremes<Number> result;
    if (count < 2 * L::kCount) {
        for (std::size_t i = 0; i < count; ++i)
            result.fold(numbers[i], i, numbers[i], i);
        return result;
    }
    auto low = L::load(numbers), high = low;
    auto gaps = low != low;
    for (std::size_t i = L::kCount; i < count; i += L::kCount) {
        const auto x = L::load(numbers + (i + L::kCount <= count ? i : count - L::kCount));
        low = x < low ? x : low;
        high = x > high ? x : high;
        if constexpr (std::is_floating_point_v<Number>)
            gaps |= x != x;
    }
    result.any = true;
    if (L::any(gaps)) {
        std::size_t last = count - 1;
        while (!isGap(numbers[last]))
            --last;
        result.low = result.high = numbers[last];
        result.lowAt = result.highAt = last;
        return result;
    }
    Number least = low[0], greatest = high[0];
    for (std::size_t i = 1; i < L::kCount; ++i) {
        least = low[i] < least ? low[i] : least;
        greatest = high[i] > greatest ? high[i] : greatest;
    }
    result.lowAt = lastOf(least, numbers, count);
    result.highAt = lastOf(greatest, numbers, count);
    result.low = numbers[result.lowAt]; // the sign of its zero
    result.high = numbers[result.highAt];
    return result;
}

} // namespace tracery::captures
