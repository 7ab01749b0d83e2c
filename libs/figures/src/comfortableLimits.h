#pragma once

#include <tracery/figures/Figure.h>

namespace tracery::figures {

/// The limits an axis can really be drawn with: finite, far from overflow, and wide enough that doubles tell
/// its ticks apart. Usable limits come back unchanged.
Limits usableLimits(double low, double high);

/// Likewise of a logarithmic axis: positive, with a power of ten between them. What has no logarithm counts as 1 to 10.
Limits usableDecades(double low, double high);

} // namespace tracery::figures
