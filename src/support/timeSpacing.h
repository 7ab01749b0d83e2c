#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace tracery {

/// eps(t): the spacing of doubles at t, 2^(e - 53) with e from frexp, at least 2^-1074; NaN for infinite or NaN t.
/// Finite even at the largest double, where nextafter(t) - t is not.
inline double timeSpacing(double t)
{
    if (!std::isfinite(t))
        return std::numeric_limits<double>::quiet_NaN();
    int exponent = std::numeric_limits<int>::min();
    if (t != 0)
        std::frexp(t, &exponent);
    return std::ldexp(1.0, std::max(exponent, -1074 + 53) - 53);
}

} // namespace tracery
