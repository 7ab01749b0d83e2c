#pragma once

#include "libraries.h"

#include <tracery/figures/Figure.h>

#include <string>

namespace scope {

/// What pictures have in common over all commands.
struct PictureOptions {
    int width = 1200;
    int height = 600;
    ThemeEnum theme = ThemeEnum::Light;
    std::string title; ///< empty: the file's name

    void applyTo(Figure& figure) const
    {
        figure.width = width;
        figure.height = height;
        figure.theme = theme;
    }
};

} // namespace scope
