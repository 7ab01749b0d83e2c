#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace tracery::fuzz {

/// Choices made by the bytes of an input, one after the other. It is a generator of random numbers too, for tests that
/// are written for one. Behind the input's end it goes on with numbers of its own, so that no loop waits for luck.
class Bytes {
public:
    using result_type = std::uint32_t;
    static constexpr result_type min() { return 0; }
    static constexpr result_type max() { return 0xFFFF; }

    Bytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool isEmpty() const { return next_ == end_; }
    std::uint8_t byte()
    {
        if (next_ != end_)
            return *next_++;
        further_ = further_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::uint8_t>(further_ >> 56);
    }
    result_type operator()()
    {
        const result_type low = byte();
        return low | static_cast<result_type>(byte()) << 8;
    }
    /// One of 0 to n - 1, of at most 256.
    std::size_t below(std::size_t n) { return byte() % n; }
    bool flag() { return (byte() & 1) != 0; }
    template <class List>
    auto& oneOf(List& list)
    {
        return list[(std::size(list) > 256 ? (*this)() : byte()) % std::size(list)];
    }
    /// A number of any kind: small, odd, or of any bits.
    double number()
    {
        constexpr double kInf = std::numeric_limits<double>::infinity();
        constexpr double kOdd[] = {0,           -0.0,    std::numeric_limits<double>::quiet_NaN(),
                                   kInf,        -kInf,   1e308,
                                   -1e9,        1e-300,  5e-324,
                                   1e15,        1e300,   std::numeric_limits<double>::lowest(),
                                   0x1p31,      0x1p32,  0x1p53,
                                   0x1p63,      0x1p64,  0x1p31 - 1,
                                   0x1p32 - 1,  -0x1p31, -0x1p63,
                                   1 + 0x1p-52, 0.1,     1e5};
        const std::uint8_t kind = byte();
        if (kind < 192)
            return (kind / 4 - 16) * (kind % 4 == 3 ? 0.25 : 1);
        if (kind < 192 + std::size(kOdd))
            return kOdd[kind - 192];
        std::uint64_t bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = bits << 8 | byte();
        return std::bit_cast<double>(bits);
    }
    std::string text(std::size_t longest)
    {
        std::string made(below(longest + 1), '\0');
        for (char& c : made)
            c = static_cast<char>(byte());
        return made;
    }
    /// All bytes that are left.
    std::string rest()
    {
        std::string left(next_, end_);
        next_ = end_;
        return left;
    }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
    std::uint64_t further_ = 1;
};

/// What a target does with an input; it ends the program when something is wrong.
void runInput(Bytes& bytes);

} // namespace tracery::fuzz
