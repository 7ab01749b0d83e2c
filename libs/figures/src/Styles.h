#pragma once

#include "Canvas.h"

#include <tracery/figures/Figure.h>

#include <span>
#include <string>
#include <vector>

namespace tracery::figures {

/// How one trace is drawn.
struct TraceStyle {
    Colour colour;
    std::span<const double> dashes; ///< in line widths; empty: solid
};

/// Well told-apart styles, by number: the theme's colours, then lighter ones dashed.
TraceStyle traceStyle(std::size_t number, const Theme& theme);

/// Which style every trace of a figure has. Traces of several panels that share a label share a style; within
/// a panel all differ.
class Styles {
public:
    Styles(const Figure& figure, const Theme& theme);

    TraceStyle of(std::size_t panel, std::size_t trace) const { return styles_[numbers_[panel][trace]]; }
    /// The labels, for the legend; some may be empty.
    const std::vector<std::string>& labels() const { return labels_; }
    /// The style that goes with a label.
    TraceStyle ofLabel(std::size_t number) const { return styles_[number]; }

private:
    std::vector<std::vector<std::size_t>> numbers_;
    std::vector<std::string> labels_;
    std::vector<TraceStyle> styles_; ///< one a label
};

} // namespace tracery::figures
