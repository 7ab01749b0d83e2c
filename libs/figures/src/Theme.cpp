#include <tracery/figures/Theme.h>

namespace tracery::figures {

namespace {

constexpr Colour colour(unsigned rgb)
{
    return {(rgb >> 16U) / 255.0, (rgb >> 8U & 0xFFU) / 255.0, (rgb & 0xFFU) / 255.0};
}
constexpr Colour grey(double level) { return {level, level, level}; }

// Well apart for every usual kind of colour vision: the least distance in CIELAB between any two is 26, and
// 16 with protanopia, deuteranopia or tritanopia. All stand out from white.
constexpr Theme kLight = {.paper = grey(1),
                          .ink = grey(0.13),
                          .frame = grey(0.35),
                          .grid = grey(0.87),
                          .zeroLine = grey(0.66),
                          .marker = grey(0.30),
                          .traces = {colour(0x0072B2), colour(0xD55E00), colour(0x009E73), colour(0xCC79A7),
                                     colour(0x332288), colour(0xE69F00), colour(0x56B4E9), colour(0x882255)},
                          .everyTraceDashed = false};

// The same hues where they are light enough, lighter ones else.
constexpr Theme kDark = {.paper = colour(0x14171C),
                         .ink = grey(0.90),
                         .frame = grey(0.62),
                         .grid = grey(0.22),
                         .zeroLine = grey(0.42),
                         .marker = grey(0.72),
                         .traces = {colour(0x56B4E9), colour(0xF28A3C), colour(0x2FD39B), colour(0xE79AC3),
                                    colour(0xA99CF0), colour(0xF0C84B), colour(0x8FD3FF), colour(0xE06C8F)},
                         .everyTraceDashed = false};

// Greys that a copier keeps apart, and dashes for the rest.
constexpr Theme kPrint = {
    .paper = grey(1),
    .ink = grey(0),
    .frame = grey(0),
    .grid = grey(0.85),
    .zeroLine = grey(0.60),
    .marker = grey(0.15),
    .traces = {grey(0), grey(0.42), grey(0.20), grey(0.55), grey(0), grey(0.42), grey(0.20), grey(0.55)},
    .everyTraceDashed = true};

} // namespace

const Theme& themeOf(ThemeEnum theme)
{
    return theme == ThemeEnum::Dark ? kDark : theme == ThemeEnum::Print ? kPrint : kLight;
}

} // namespace tracery::figures
