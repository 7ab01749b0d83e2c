#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace tracery {

/// How a stream is cut: each segment begins with the last `overlap` samples of the one before. A length of 0 cuts none.
struct SegmentCut {
    std::uint64_t length = 0;
    std::uint64_t overlap = 0; ///< below the length, unless that is 0

    /// The overlap (samples) that comes closest to a percentage of the length, halves up; always leaves a segment one
    /// sample of its own. Percentages that are not above 0 count as 0.
    static SegmentCut of(std::uint32_t length, double overlapPercent);

    std::uint64_t segmentsIn(std::uint64_t samples) const { return length == 0 ? 0 : samples / length; }
};

/// What an empty buffer begins with.
enum class SegmentLead { overlapOfZeros, samples };

/// The segments of one channel's stream, end to end; the last one is open and holds its overlap already. Memory is taken
/// in reserve alone, and kept.
class SegmentedSamples {
public:
    std::uint64_t size() const { return size_; }
    std::span<const double> samples() const { return {data_.get(), size_}; }

    /// How long a buffer of `size` samples becomes by appending `count`.
    /// throws  too long
    static std::uint64_t sizeAfter(std::uint64_t size, std::uint64_t count, SegmentCut cut, SegmentLead lead);
    /// Makes room. throws  too long, std::bad_alloc; nothing has changed then
    void reserve(std::uint64_t size);
    /// Appends samples that there is room for.
    void append(std::span<const double> fresh, SegmentCut cut, SegmentLead lead) noexcept;
    /// Drops the oldest `count` samples, of those that there are.
    void dropOldest(std::uint64_t count) noexcept;
    void clear() noexcept { size_ = 0; }

private:
    void put(const double* samples, std::uint64_t count) noexcept;
    void putOverlap(std::uint64_t count) noexcept;

    std::unique_ptr<double[]> data_;
    std::uint64_t size_ = 0;
    std::uint64_t capacity_ = 0;
};

} // namespace tracery
