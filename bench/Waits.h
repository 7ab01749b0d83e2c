#pragma once

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdint>
#include <vector>

namespace tracery::bench {

/// Durations, counted in classes a sixteenth of their size wide, so that any number of them takes the same memory.
class Waits {
public:
    void add(std::chrono::nanoseconds wait)
    {
        const auto nanoseconds = static_cast<std::uint64_t>(std::max<std::int64_t>(wait.count(), 0));
        ++counts_[classOf(nanoseconds)];
        ++count_;
        longest_ = std::max(longest_, nanoseconds);
    }
    std::uint64_t count() const { return count_; }
    /// Microseconds that `share` of the durations do not exceed.
    double quantile(double share) const
    {
        const auto rank = static_cast<std::uint64_t>(share * static_cast<double>(count_));
        std::uint64_t passed = 0;
        for (std::size_t i = 0; i < counts_.size(); ++i)
            if ((passed += counts_[i]) > rank)
                return std::min(endOf(i), static_cast<double>(longest_)) * 1e-3;
        return longest();
    }
    double longest() const { return static_cast<double>(longest_) * 1e-3; }

private:
    static constexpr unsigned kBits = 4;

    static std::size_t classOf(std::uint64_t nanoseconds)
    {
        const auto width = static_cast<unsigned>(std::bit_width(nanoseconds));
        const unsigned shift = width > kBits + 1 ? width - kBits - 1 : 0;
        return (std::size_t{shift} << kBits) + static_cast<std::size_t>(nanoseconds >> shift);
    }
    static double endOf(std::size_t index)
    {
        const std::size_t shift = index < (2U << kBits) ? 0 : (index >> kBits) - 1;
        return static_cast<double>((index - (shift << kBits) + 1) << shift);
    }

    std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(std::size_t{64} << kBits);
    std::uint64_t count_ = 0;
    std::uint64_t longest_ = 0;
};

} // namespace tracery::bench
