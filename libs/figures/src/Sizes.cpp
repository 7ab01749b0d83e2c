#include "Sizes.h"

#include <tracery/figures/Figure.h>

#include <algorithm>
#include <cmath>

namespace tracery::figures {

namespace {

constexpr double kLeftMargin = 76;
constexpr double kRightMargin = 20;

/// With the square root of the size; text stays readable in small figures, and shrinks further in the
/// smallest only.
double growth(double ratio) { return std::clamp(std::sqrt(ratio), std::min(0.84, 0.6 + ratio), 3.0); }
double widthGrowth(int width) { return growth(width / 1200.0); }
double halves(double size) { return std::round(2 * size) / 2; }

} // namespace

Sizes::Sizes(int width, int height)
    : scale(std::min(widthGrowth(width), growth(height / 600.0))), tick{halves(11.5 * scale)},
      label{halves(12.5 * scale)}, title{halves(15 * scale), true}, hairline(std::max(1.0, std::round(scale))),
      traceLine(std::clamp(1.25 * scale, 1.0, 1.5))
{}

int leftMargin(int width) { return static_cast<int>(std::lround(kLeftMargin * widthGrowth(width))); }
int rightMargin(int width) { return static_cast<int>(std::lround(kRightMargin * widthGrowth(width))); }

int plotWidth(int width) { return std::max(1, width - leftMargin(width) - rightMargin(width)); }

} // namespace tracery::figures
