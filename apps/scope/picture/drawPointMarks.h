#pragma once

#include "picture/Canvas.h"
#include "picture/Figure.h"
#include "picture/Sizes.h"
#include "picture/Styles.h"
#include "picture/drawTrace.h"

#include <span>

namespace scope {

/// Draws the marks of the traces of a panel that lie within it: triangles in the traces' colours, and those labels for
/// which there is a place near by that meets no trace, no other mark and no label drawn before.
/// panel  number of the panel, for the styles
void drawPointMarks(Canvas& canvas, std::span<const Trace> traces, std::size_t panel, const Styles& styles,
                    const Mapping& mapping, const Sizes& sizes);

} // namespace scope
