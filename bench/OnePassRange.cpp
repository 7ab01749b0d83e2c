#include "OnePassRange.h"

#include <algorithm>
#include <limits>

namespace tracery::bench {

double onePassRange(std::span<const double> data)
{
    double least = std::numeric_limits<double>::max();
    double greatest = std::numeric_limits<double>::lowest();
    for (const double x : data) {
        least = std::min(least, x);
        greatest = std::max(greatest, x);
    }
    return greatest - least;
}

} // namespace tracery::bench
