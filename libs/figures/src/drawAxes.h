#pragma once

#include "Canvas.h"
#include "Sizes.h"
#include "drawTrace.h"
#include "ticks.h"

#include <string>
#include <string_view>

namespace tracery::figures {

/// Axes with as many ticks as their labels leave room for.
Axis fittingXAxis(Canvas& canvas, const Limits& limits, std::string_view unit, double pixels, const Sizes& sizes);
Axis fittingYAxis(const Mapping& mapping, std::string_view unit, const Sizes& sizes);

void drawGrid(Canvas& canvas, const Mapping& mapping, const Axis& x, const Axis& y, const Sizes& sizes);
/// The frame of a panel, with its ticks inside.
void drawFrame(Canvas& canvas, const Mapping& mapping, const Axis& x, const Axis& y, const Sizes& sizes);

/// The numbers left of a panel and, turned, the axis label left of these.
void drawYLabels(Canvas& canvas, const Mapping& mapping, const Axis& axis, const std::string& name, const Sizes& sizes);
/// The numbers under the lowest panel and the axis label under these, at the baselines given.
void drawXLabels(Canvas& canvas, const Mapping& mapping, const Axis& axis, const std::string& name, const Sizes& sizes,
                 double tickBaseline, double labelBaseline, double mostRight);

} // namespace tracery::figures
