#pragma once

#include <array>
#include <cstdint>

namespace tracery::figures {

struct Colour {
    double red;
    double green;
    double blue;
};

/// Which colours a figure is drawn in: on white, on near-black for dark surroundings, or for paper, where lines must stay
/// apart without colour.
enum class ThemeEnum { Light, Dark, Print };

struct Theme {
    Colour paper;
    Colour ink;   ///< text
    Colour frame; ///< and its ticks; references
    Colour grid;
    Colour zeroLine; ///< the grid line at 0
    Colour marker;
    std::array<Colour, 8> traces;
    bool everyTraceDashed; ///< differently, from the second trace on, and not only when the colours come round again
};

const Theme& themeOf(ThemeEnum theme);

} // namespace tracery::figures
