#include <tracery/basics/cleanText.h>

#include <array>
#include <cstddef>

namespace tracery::basics {

namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

struct CodePoint {
    char32_t value;
    std::size_t length; ///< bytes it takes, or that are skipped with it
};

/// The code point at the start of `text`, which is not empty.
CodePoint decode(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return {kInvalid, 1};
    char32_t value = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80)
            return {kInvalid, 1};
        value = value << 6U | (byte(i) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000}; // by length
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    const bool noCharacter = (value >= 0xFDD0 && value <= 0xFDEF) || (value & 0xFFFEU) == 0xFFFE;
    if (value < kLeast[length] || value > 0x10FFFF || surrogate || noCharacter)
        return {kInvalid, length};
    return {value, length};
}

} // namespace

std::string cleanText(std::string_view text)
{
    constexpr std::size_t kMostCharacters = 400; // more than fits any figure in any readable size
    std::string clean;
    for (std::size_t count = 0; !text.empty() && count < kMostCharacters; ++count) {
        const auto [value, length] = decode(text);
        if (value == kInvalid)
            clean += "\uFFFD";
        else if (value < 0x20 || (value >= 0x7F && value < 0xA0))
            clean += ' ';
        else
            clean += text.substr(0, length);
        text.remove_prefix(length);
    }
    return clean;
}

} // namespace tracery::basics
