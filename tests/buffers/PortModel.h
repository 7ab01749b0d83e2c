#pragma once

#include <tracery/TimeBuffer.h>

#include <bit>
#include <cmath>
#include <optional>
#include <vector>

namespace tracery::test {

using Counts = TimeBuffer::Counts;
using Samples = std::vector<double>;
inline const double kFill = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});

inline std::uint64_t productOf(const Counts& extents)
{
    std::uint64_t product = 1;
    for (const std::uint64_t extent : extents)
        product *= extent;
    return product;
}

/// What a port must hold: every step in full, oldest first.
struct PortModel {
    struct Step {
        double time;
        Samples parts[2]; ///< real, imaginary: the maximum block flattened
    };
    /// How an input of some dims is read: so many steps of so many extents.
    struct Input {
        Counts extents;
        std::uint64_t steps = 0;
        bool fits = true;
    };

    Counts maxExtents;
    bool complex = false, linear = false;
    std::uint64_t capacity = 1;
    Counts arrayDims; ///< of the last array that gave them
    std::vector<Step> steps;
    std::uint64_t pending[2] = {}; ///< the newest times, stored or not, that a part's values have not come for
    std::uint64_t unread = 0;      ///< written since readAfter, dropped again or not
    bool cleared = true;           ///< since readAfter, or new
    TimeBuffer::ReadPosition position;

    std::uint64_t width() const { return productOf(maxExtents); }
    std::size_t numParts() const { return complex ? 2 : 1; }
    bool isLevel() const { return pending[0] == 0 && (!complex || pending[1] == 0); }
    bool isReadable() const { return !steps.empty() && width() > 0; }
    /// What reads are refused with.
    const char* refusal() const
    {
        return pending[0] > 0 ? "AddValueError" : isReadable() && !isLevel() ? "GetComplexDataError" : "none";
    }

    Input inputOf(Counts dims) const
    {
        const std::size_t n = maxExtents.size();
        for (const std::uint64_t dim : dims)
            if (dim == 0)
                return {};
        while (dims.size() < n && maxExtents.back() == 1)
            dims.push_back(1);
        if (!dims.empty() && dims.size() < 3 && dims[0] == width())
            return {maxExtents, dims.size() == 2 ? dims[1] : 1};
        if (dims.size() != n && dims.size() != n + 1)
            return {{}, 0, false};
        Input input{{dims.begin(), dims.begin() + static_cast<std::ptrdiff_t>(n)}, dims.size() == n ? 1 : dims[n]};
        for (std::size_t d = 0; d < n; ++d)
            input.fits = input.fits && dims[d] <= maxExtents[d];
        return input;
    }

    void addTimes(const Samples& times)
    {
        for (const double time : times)
            steps.push_back({time, {}});
        for (std::uint64_t& count : pending)
            count += times.size();
        unread += times.size();
        trim();
    }
    /// Values of all times that the part's are pending for.
    void addValues(std::size_t part, const Input& input, const double* values)
    {
        for (std::uint64_t i = 0; i < input.steps; ++i) {
            Samples block(width(), kFill);
            for (std::uint64_t j = 0; j < productOf(input.extents); ++j) {
                std::uint64_t rest = j, at = 0, stride = 1;
                for (std::size_t d = 0; d < input.extents.size(); ++d) {
                    at += rest % input.extents[d] * stride;
                    rest /= input.extents[d];
                    stride *= maxExtents[d];
                }
                block[at] = *values++;
            }
            if (input.steps - i <= steps.size())
                steps[steps.size() - (input.steps - i)].parts[part] = block;
        }
        pending[part] -= input.steps;
    }

    void trim() { keep(steps.size() - std::min<std::uint64_t>(steps.size(), capacity), steps.size()); }
    void keep(std::size_t first, std::size_t last)
    {
        steps = {steps.begin() + static_cast<std::ptrdiff_t>(first), steps.begin() + static_cast<std::ptrdiff_t>(last)};
    }
    void clearBackTo(double time)
    {
        std::size_t kept = std::isfinite(time) ? steps.size() : 0;
        while (kept > 0 && steps[kept - 1].time > time)
            --kept;
        for (std::uint64_t& count : pending)
            count -= std::min<std::uint64_t>(count, steps.size() - kept);
        keep(0, kept);
    }
    void clearUptoLastTime()
    {
        if (steps.empty() || steps.size() == 2)
            return;
        keep(steps.size() - 1, steps.size());
        for (std::uint64_t& count : pending)
            count = count > 0 ? 1 : 0;
    }
    void clear()
    {
        steps.clear();
        pending[0] = pending[1] = 0;
    }

    Samples times(std::size_t s, std::size_t e) const
    {
        Samples all;
        for (; s < e; ++s)
            all.push_back(steps[s].time);
        return all;
    }
    /// Of steps [s, e): a part's values, zeros for the imaginary part of a real port.
    Samples values(std::size_t part, std::size_t s, std::size_t e) const
    {
        Samples all;
        for (; s < e; ++s) {
            const Samples zeros(width());
            const Samples& block = part < numParts() ? steps[s].parts[part] : zeros;
            all.insert(all.end(), block.begin(), block.end());
        }
        return all;
    }
    /// Index ranges by scanning all times; eps from the neighbouring double.
    bool find(double tStart, double tEnd, bool widen, int& s, int& e) const
    {
        const auto eps = [](double t) { return std::nextafter(std::abs(t), INFINITY) - std::abs(t); };
        const auto time = [this](int i) { return steps[static_cast<std::size_t>(i)].time; };
        s = e = -1;
        const int n = isReadable() ? static_cast<int>(steps.size()) : 0;
        for (int i = n - 1; i >= 0; --i)
            if (time(i) >= tStart - eps(tStart))
                s = i;
        if (s < 0)
            return false;
        for (int i = 0; i < n; ++i)
            if (time(i) < tEnd + eps(tEnd))
                e = i;
        if (e < 0)
            return false;
        if (widen && s > 0 && time(s) > tStart)
            --s;
        if (widen && e < n - 1 && tEnd > time(e))
            ++e;
        return s <= e;
    }
};

} // namespace tracery::test
