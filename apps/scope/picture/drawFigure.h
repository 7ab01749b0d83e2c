#pragma once

#include "picture/Canvas.h"
#include "picture/Figure.h"

namespace scope {

/// Draws the whole figure onto a canvas of its size.
void drawFigure(Canvas& canvas, const Figure& figure);

} // namespace scope
