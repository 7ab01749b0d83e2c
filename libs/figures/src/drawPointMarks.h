#pragma once

#include "Canvas.h"
#include "Sizes.h"
#include "Styles.h"
#include "drawTrace.h"

#include <tracery/figures/Figure.h>

#include <span>

namespace tracery::figures {

/// Draws the marks of the traces of a panel that lie within it: triangles in the traces' colours, and those labels for
/// which there is a place near by that meets no trace, no other mark and no label drawn before.
/// panel  number of the panel, for the styles
void drawPointMarks(Canvas& canvas, std::span<const Trace> traces, std::size_t panel, const Styles& styles,
                    const Mapping& mapping, const Sizes& sizes);

} // namespace tracery::figures
