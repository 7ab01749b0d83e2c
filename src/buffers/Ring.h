#pragma once

#include "support/vectorUnit.h"

#include <boost/circular_buffer.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <span>

namespace tracery {

/// The newest values of a stream, up to a capacity. Indexes count from the oldest.
///
/// Memory is taken in reserveFor alone: an append that was reserved for cannot fail, and neither can dropping values,
/// which keeps the memory. So several rings that belong together change together or not at all.
///
/// The first append takes room for the whole capacity, which the system backs with memory page by page as values come:
/// the ring never moves, and a write costs no more than its own values and their pages. Where so much room is not to be
/// had, it doubles on demand, and the writes that make it grow copy what there is.
class Ring {
public:
    using Storage = boost::circular_buffer<double>;

    /// Read access by index, through the ring's two contiguous spans. Valid until the ring changes.
    class View {
    public:
        View(std::span<const double> one, std::span<const double> two) : one_(one), two_(two) {}

        double operator[](std::uint64_t index) const
        {
            return index < one_.size() ? one_[index] : two_[index - one_.size()];
        }
        /// The values from index `first` on, as far as they lie side by side; never empty for an index inside.
        std::span<const double> stretch(std::uint64_t first) const
        {
            return first < one_.size() ? one_.subspan(first) : two_.subspan(first - one_.size());
        }

        /// Copies count values from index `first` on.
        void copy(std::uint64_t first, std::uint64_t count, double* out) const
        {
            if constexpr (kPlainKernels) {
                for (std::uint64_t i = 0; i < count; ++i)
                    out[i] = (*this)[first + i];
                return;
            }
            const std::uint64_t inOne = first < one_.size() ? std::min<std::uint64_t>(count, one_.size() - first) : 0;
            if (inOne > 0)
                std::memcpy(out, &one_[first], inOne * sizeof(double));
            if (count > inOne)
                std::memcpy(out + inOne, &two_[first + inOne - one_.size()], (count - inOne) * sizeof(double));
        }

        /// Index of the first value that is not below `bound`, the size when there is none; values must not decrease.
        std::uint64_t lowerBound(double bound) const
        {
            const auto search = [bound](std::span<const double> span) {
                return static_cast<std::uint64_t>(std::lower_bound(span.begin(), span.end(), bound) - span.begin());
            };
            const std::uint64_t index = search(one_);
            return index < one_.size() ? index : one_.size() + search(two_);
        }

    private:
        std::span<const double> one_;
        std::span<const double> two_;
    };

    /// A capacity to come. Takes the memory for it, if any; apply() cannot fail.
    class CapacityChange {
    public:
        CapacityChange(Ring& ring, std::uint64_t capacity) : ring_(&ring), capacity_(capacity)
        {
            // Room above the capacity would let the ring outgrow it. Room below may grow later.
            if (ring.storage_.capacity() <= capacity)
                return;
            const std::uint64_t kept = std::min(capacity, ring.size());
            Storage& fresh = fresh_.emplace(roomFor(kept, 0, capacity));
            fresh.insert(fresh.end(), ring.storage_.end() - static_cast<std::ptrdiff_t>(kept), ring.storage_.end());
        }
        /// Changes the capacity; the newest values stay.
        void apply() noexcept
        {
            ring_->capacity_ = capacity_;
            if (fresh_)
                ring_->storage_.swap(*fresh_);
        }

    private:
        Ring* ring_;
        std::uint64_t capacity_;
        std::optional<Storage> fresh_;
    };

    explicit Ring(std::uint64_t capacity) : capacity_(capacity) {}

    static std::uint64_t largestCapacity() { return Storage().max_size(); }

    std::uint64_t size() const { return storage_.size(); }
    std::uint64_t capacity() const { return capacity_; }
    bool empty() const { return storage_.empty(); }
    View view() const
    {
        const auto one = storage_.array_one(), two = storage_.array_two();
        return {{one.first, one.second}, {two.first, two.second}};
    }
    double newest() const { return storage_.back(); }

    /// Makes room for appending `count` values. throws  std::bad_alloc; the ring is then as before
    void reserveFor(std::uint64_t count)
    {
        const std::uint64_t room = storage_.capacity();
        if (room >= capacity_ || count <= room - size())
            return;
        const std::uint64_t wanted = size() + std::min(count, capacity_ - size());
        try {
            storage_.set_capacity(kPlainKernels ? roomFor(wanted, room, capacity_) : capacity_);
        } catch (const std::bad_alloc&) {
            storage_.set_capacity(roomFor(wanted, room, capacity_));
        }
    }
    /// Appends `count` values that there is room for; what passes the capacity is dropped from the oldest.
    void append(const double* values, std::uint64_t count) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity_);
        values += count - kept;
        if (kPlainKernels || kept == 1) {
            for (std::uint64_t i = 0; i < kept; ++i)
                storage_.push_back(values[i]);
        } else if (kept > 0 && storage_.full()) {
            // Over the oldest values, where they lie; turning a full ring moves nothing.
            const auto one = storage_.array_one();
            const std::uint64_t inOne = std::min<std::uint64_t>(kept, one.second);
            std::memcpy(one.first, values, inOne * sizeof(double));
            if (kept > inOne)
                std::memcpy(storage_.array_two().first, values + inOne, (kept - inOne) * sizeof(double));
            if (kept < storage_.size())
                storage_.rotate(storage_.begin() + static_cast<std::ptrdiff_t>(kept));
        } else if (kept > 0) {
            storage_.insert(storage_.end(), values, values + kept);
        }
    }
    void appendFill(std::uint64_t count, double value) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity_);
        if (kept > 0)
            storage_.insert(storage_.end(), kept, value);
    }
    /// Overwrites the value `back` places before the end (1 is the newest).
    void setFromEnd(std::uint64_t back, double value) noexcept { storage_[storage_.size() - back] = value; }

    /// Drops the newest values, at most all.
    void dropNewest(std::uint64_t count) noexcept { storage_.erase_end(std::min(count, size())); }
    /// Drops the oldest values until `count` are left.
    void keepNewest(std::uint64_t count) noexcept { storage_.erase_begin(size() - std::min(count, size())); }
    /// Drops all values and gives their memory back.
    void clear() noexcept
    {
        Storage fresh;
        storage_.swap(fresh);
    }

private:
    /// Room for `size` values, with a fifth of it to spare, doubled from `room`; `capacity` at most.
    static std::uint64_t roomFor(std::uint64_t size, std::uint64_t room, std::uint64_t capacity)
    {
        room = std::max<std::uint64_t>(room, 1);
        while (room - room / 5 <= size)
            room *= 2;
        return std::min(room, capacity);
    }

    std::uint64_t capacity_;
    Storage storage_; ///< its capacity is the room there is, never above capacity_
};

} // namespace tracery
