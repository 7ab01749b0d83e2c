#pragma once

#include <tracery/TimeBuffer.h>

#include <bit>
#include <cmath>
#include <complex>
#include <vector>

namespace tracery::test {

using Counts = TimeBuffer::Counts;
inline const double kFill = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});
using Block = std::vector<std::complex<double>>; // one step, the maximum block flattened

/// What a port must hold: every step in full, oldest first.
struct PortModel {
    Counts maxExtents;
    bool complex = false;
    std::uint64_t capacity = 1;
    std::vector<double> times;
    std::vector<Block> steps;
    std::uint64_t unread = 0; ///< written since readAfter, dropped again or not
    bool cleared = false;     ///< since readAfter
    TimeBuffer::ReadPosition position;

    std::uint64_t width() const
    {
        std::uint64_t product = 1;
        for (const std::uint64_t extent : maxExtents)
            product *= extent;
        return product;
    }
    void trim()
    {
        while (times.size() > capacity) {
            times.erase(times.begin());
            steps.erase(steps.begin());
        }
    }
    void keepFirst(std::size_t count)
    {
        times.resize(count);
        steps.resize(count);
    }
    /// Index ranges by scanning all times; eps from the neighbouring double.
    bool find(double tStart, double tEnd, bool widen, int& s, int& e) const
    {
        const auto eps = [](double t) { return std::nextafter(std::abs(t), INFINITY) - std::abs(t); };
        s = e = -1;
        const int n = static_cast<int>(times.size());
        for (int i = n - 1; i >= 0; --i)
            if (times[static_cast<std::size_t>(i)] >= tStart - eps(tStart))
                s = i;
        if (s < 0)
            return false;
        for (int i = 0; i < n; ++i)
            if (times[static_cast<std::size_t>(i)] < tEnd + eps(tEnd))
                e = i;
        if (e < 0)
            return false;
        if (widen && s > 0 && times[static_cast<std::size_t>(s)] > tStart)
            --s;
        if (widen && e < n - 1 && tEnd > times[static_cast<std::size_t>(e)])
            ++e;
        return s <= e;
    }
};

} // namespace tracery::test
