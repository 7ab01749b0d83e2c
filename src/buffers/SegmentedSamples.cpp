#include "buffers/SegmentedSamples.h"

#include "support/containerErrors.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace tracery {

namespace {

constexpr std::uint64_t kMaxSize = std::numeric_limits<std::int64_t>::max() / sizeof(double);

/// How many samples go into the segment that is open before the samples come.
std::uint64_t roomInOpenSegment(std::uint64_t size, SegmentCut cut, SegmentLead lead)
{
    const std::uint64_t filled = size % cut.length;
    return filled != 0 || (size == 0 && lead == SegmentLead::samples) ? cut.length - filled : 0;
}

} // namespace

SegmentCut SegmentCut::of(std::uint32_t length, double overlapPercent)
{
    const double exact = length * overlapPercent / 100;
    if (length == 0 || !(exact > 0))
        return {length, 0};
    if (exact >= length)
        return {length, length - 1U};
    const double below = std::floor(exact), above = std::ceil(exact);
    const double nearest = std::abs(exact - below) < std::abs(exact - above) ? below : above;
    return {length, std::min(static_cast<std::uint32_t>(nearest), length - 1)};
}

std::uint64_t SegmentedSamples::sizeAfter(std::uint64_t size, std::uint64_t count, SegmentCut cut, SegmentLead lead)
{
    if (cut.length == 0)
        return size;
    const std::uint64_t room = roomInOpenSegment(size, cut, lead);
    if (count < room)
        return size + count;
    size += room;
    count -= room;
    const std::uint64_t step = cut.length - cut.overlap;
    std::uint64_t whole = 0; // samples of whole segments, then of the open one
    if (__builtin_mul_overflow(count / step, cut.length, &whole) || whole > kMaxSize ||
        (size += whole + cut.overlap + count % step) > kMaxSize)
        throw TooLong();
    return size;
}

void SegmentedSamples::reserve(std::uint64_t size)
{
    if (size <= capacity_)
        return;
    if (size > kMaxSize)
        throw TooLong();
    const std::uint64_t room = std::max(size, std::min(2 * capacity_, kMaxSize));
    std::unique_ptr<double[]> fresh(new double[room]); // not filled
    if (size_ > 0)
        std::memcpy(fresh.get(), data_.get(), size_ * sizeof(double));
    data_ = std::move(fresh);
    capacity_ = room;
}

void SegmentedSamples::append(std::span<const double> fresh, SegmentCut cut, SegmentLead lead) noexcept
{
    if (cut.length == 0)
        return;
    const std::uint64_t room = roomInOpenSegment(size_, cut, lead);
    std::uint64_t taken = std::min<std::uint64_t>(room, fresh.size());
    put(fresh.data(), taken);
    if (taken < room)
        return;
    if (cut.overlap == 0) {
        put(fresh.data() + taken, fresh.size() - taken);
        return;
    }
    const std::uint64_t step = cut.length - cut.overlap;
    for (bool whole = true; whole;) {
        const std::uint64_t count = std::min(step, fresh.size() - taken);
        if (taken < cut.overlap) {
            putOverlap(cut.overlap);
            put(fresh.data() + taken, count);
        } else { // the overlap lies just before, in the input
            put(fresh.data() + taken - cut.overlap, cut.overlap + count);
        }
        taken += count;
        whole = count == step;
    }
}

void SegmentedSamples::dropOldest(std::uint64_t count) noexcept
{
    size_ -= count;
    if (count > 0 && size_ > 0)
        std::memmove(data_.get(), data_.get() + count, size_ * sizeof(double));
}

void SegmentedSamples::put(const double* samples, std::uint64_t count) noexcept
{
    if (count > 0)
        std::memcpy(data_.get() + size_, samples, count * sizeof(double));
    size_ += count;
}

/// Repeats the newest `count` samples; zeros when there are none.
void SegmentedSamples::putOverlap(std::uint64_t count) noexcept
{
    if (size_ == 0)
        std::fill_n(data_.get(), count, 0.0);
    else
        std::memcpy(data_.get() + size_, data_.get() + size_ - count, count * sizeof(double));
    size_ += count;
}

} // namespace tracery
