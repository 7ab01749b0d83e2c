#pragma once

#include "Canvas.h"

#include <tracery/figures/Figure.h>

namespace tracery::figures {

/// Draws the whole figure onto a canvas of its size.
void drawFigure(Canvas& canvas, const Figure& figure);

} // namespace tracery::figures
