#pragma once

#include <tracery/figures/Figure.h>

#include <string>
#include <string_view>
#include <vector>

namespace tracery::figures {

struct Tick {
    double at;
    std::string label;
};

/// The scale of one axis. A tick's value is its label in `unit`, plus `offset`.
struct Axis {
    std::vector<Tick> ticks; ///< ascending, all within the limits, labels pairwise different
    int divisions = 1;       ///< how many equal parts a step between ticks is well divided into
    double step = 1;         ///< distance of neighbouring ticks
    std::string unit;        ///< "ms", "×10⁶", empty
    std::string offset;      ///< "+863 s"; empty for none
    bool decades = false;    ///< neighbouring ticks are `step` powers of ten apart, and smaller ones not even
};

/// Ticks at round numbers, in at most `wished` steps over the limits (at most kMostSteps), but with at least
/// two ticks. The labels share one SI prefix and number of decimals. Where they would need many digits only
/// to say where the range lies, they count from an offset. Seconds become min, h and d over spans of more
/// than three of these, with steps that divide a minute, an hour or a day.
Axis makeAxis(Limits limits, int wished, std::string_view unit);

/// Ticks of a logarithmic axis, at powers of ten: all within the limits, or every second and so on.
Axis makeDecadeAxis(const Limits& limits, int wished, std::string_view unit);

inline constexpr int kMostSteps = 20;

} // namespace tracery::figures
