#include <tracery/basics/units.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace tracery::basics {

namespace {

struct Prefix {
    int exponent;
    std::string_view text;
};
constexpr std::array kPrefixes = {
    Prefix{-24, "y"}, Prefix{-21, "z"}, Prefix{-18, "a"}, Prefix{-15, "f"}, Prefix{-12, "p"}, Prefix{-9, "n"},
    Prefix{-6, "µ"},  Prefix{-3, "m"},  Prefix{0, ""},    Prefix{3, "k"},   Prefix{6, "M"},   Prefix{9, "G"},
    Prefix{12, "T"},  Prefix{15, "P"},  Prefix{18, "E"},  Prefix{21, "Z"},  Prefix{24, "Y"},
};
// Other ways to write micro: the Greek letter, and the letter that looks like it.
constexpr std::array kMicroSpellings = {Prefix{-6, "\u03bc"}, Prefix{-6, "u"}};

// Units in front of which a letter is known to be a prefix. Any other unit gets prefixes too, but what it
// begins with is taken as its own.
constexpr std::array<std::string_view, 26> kKnownBases = {
    "V", "A", "W", "Hz", "s", "\u03a9", "\u2126", "Ohm", "ohm", "F",  "H",    "Pa",   "m",
    "g", "K", "N", "J",  "T", "C",      "S",      "bar", "rad", "VA", "Sa/s", "Vrms", "bit/s",
};

constexpr std::array<std::string_view, 17> kWithoutPrefix = {
    "", "%", "‰", "ppm", "ppb", "°", "°C", "°F", "deg", "min", "h", "d", "LSB", "counts", "count", "rpm", "samples",
};

constexpr int kLeastPlain = -3; // plain numbers from 0.001
constexpr int kMostPlain = 4;   // to 99999

bool contains(const auto& texts, std::string_view text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

bool takesNoPrefix(std::string_view text)
{
    // A prefix before a power ("km²") would be raised to it as well, and one before "1/Hz" looks like another number.
    const auto has = [&](std::string_view part) { return text.find(part) != std::string_view::npos; };
    return contains(kWithoutPrefix, text) || text.starts_with("dB") || text.starts_with("1/") || has("^") || has("²") ||
           has("³");
}

} // namespace

std::string superscript(int number)
{
    constexpr std::array<std::string_view, 10> kDigits = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = number < 0 ? "⁻" : "";
    for (const char digit : std::to_string(std::abs(number)))
        text += kDigits[static_cast<std::size_t>(digit - '0')];
    return text;
}

int multipleOfThree(int exponent) { return exponent - (exponent % 3 + 3) % 3; }

Unit parseUnit(std::string_view text)
{
    if (takesNoPrefix(text))
        return {std::string(text), 0, Scaling::Powers};
    if (text == "s")
        return {"s", 0, Scaling::Seconds};
    if (!contains(kKnownBases, text)) {
        const auto split = [&](const auto& prefixes) -> const Prefix* {
            for (const Prefix& prefix : prefixes)
                if (text.starts_with(prefix.text) && contains(kKnownBases, text.substr(prefix.text.size())))
                    return &prefix;
            return nullptr;
        };
        const Prefix* prefix = split(kPrefixes);
        if (prefix == nullptr)
            prefix = split(kMicroSpellings);
        if (prefix != nullptr)
            return {std::string(text.substr(prefix->text.size())), prefix->exponent, Scaling::Prefixes};
    }
    return {std::string(text), 0, Scaling::Prefixes};
}

int displayExponent(Scaling scaling, int leading)
{
    switch (scaling) {
    case Scaling::Prefixes:
        return multipleOfThree(leading);
    case Scaling::Seconds:
        return std::min(0, multipleOfThree(leading));
    case Scaling::Powers:
        break;
    }
    return leading >= kLeastPlain && leading <= kMostPlain ? 0 : multipleOfThree(leading);
}

std::string unitText(const Unit& unit, int exponent)
{
    if (unit.scaling != Scaling::Powers) {
        const auto prefix = std::find_if(kPrefixes.begin(), kPrefixes.end(),
                                         [&](const Prefix& each) { return each.exponent == exponent; });
        if (prefix != kPrefixes.end())
            return std::string(prefix->text) + unit.base;
    }
    if (exponent == 0)
        return unit.base;
    return "×10" + superscript(exponent) + (unit.base.empty() ? "" : " " + unit.base);
}

std::string decimalText(std::int64_t digits, int exponent)
{
    std::string text = std::to_string(std::abs(digits));
    if (exponent >= 0) {
        if (digits != 0)
            text.append(static_cast<std::size_t>(exponent), '0');
    } else {
        const auto decimals = static_cast<std::size_t>(-exponent);
        if (text.size() <= decimals)
            text.insert(0, decimals + 1 - text.size(), '0');
        text.insert(text.size() - decimals, 1, '.');
    }
    return digits < 0 ? "\u2212" + text : text;
}

int leadingDigit(std::int64_t digits) { return static_cast<int>(std::to_string(std::abs(digits)).size()) - 1; }

} // namespace tracery::basics
