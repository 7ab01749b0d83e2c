#pragma once

#include <boost/circular_buffer.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace tracery {

/// The newest values of a stream, up to a capacity. Indexes count from the oldest.
///
/// Memory grows on demand, by doubling, and only in reserveFor: an append that was reserved for cannot fail, and neither
/// can dropping values, which keeps the memory. So several rings that belong together change together or not at all.
class Ring {
public:
    using Storage = boost::circular_buffer<double>;

    /// Read access by index, through the ring's two contiguous spans. Valid until the ring changes.
    class View {
    public:
        explicit View(const Storage& storage) : one_(storage.array_one()), two_(storage.array_two()) {}

        double operator[](std::uint64_t index) const
        {
            return index < one_.second ? one_.first[index] : two_.first[index - one_.second];
        }

        /// Copies count values from index `first` on.
        void copy(std::uint64_t first, std::uint64_t count, double* out) const
        {
            const std::uint64_t inOne = first < one_.second ? std::min<std::uint64_t>(count, one_.second - first) : 0;
            if (inOne > 0)
                std::memcpy(out, one_.first + first, inOne * sizeof(double));
            if (count > inOne)
                std::memcpy(out + inOne, two_.first + (first + inOne - one_.second), (count - inOne) * sizeof(double));
        }

        /// Index of the first value that is not below `bound`, the size when there is none; values must not decrease.
        std::uint64_t lowerBound(double bound) const
        {
            const auto search = [bound](Storage::const_array_range span) {
                return static_cast<std::uint64_t>(std::lower_bound(span.first, span.first + span.second, bound) -
                                                  span.first);
            };
            const std::uint64_t index = search(one_);
            return index < one_.second ? index : one_.second + search(two_);
        }

    private:
        Storage::const_array_range one_;
        Storage::const_array_range two_;
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
    View view() const { return View(storage_); }
    double newest() const { return storage_.back(); }

    /// Makes room for appending `count` values. throws  std::bad_alloc; the ring is then as before
    void reserveFor(std::uint64_t count)
    {
        const std::uint64_t room = storage_.capacity();
        if (room < capacity_ && count > room - size())
            storage_.set_capacity(roomFor(size() + std::min(count, capacity_ - size()), room, capacity_));
    }
    /// Appends `count` values that there is room for; what passes the capacity is dropped from the oldest.
    void append(const double* values, std::uint64_t count) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity_);
        values += count - kept;
        if (kept > 0 && storage_.full()) {
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
    void dropNewest(std::uint64_t count) noexcept
    {
        const auto dropped = static_cast<std::ptrdiff_t>(std::min(count, size()));
        if (dropped > 0)
            storage_.erase(storage_.end() - dropped, storage_.end());
    }
    /// Drops the oldest values until `count` are left.
    void keepNewest(std::uint64_t count) noexcept
    {
        if (count < size())
            storage_.rerase(storage_.begin(), storage_.end() - static_cast<std::ptrdiff_t>(count));
    }
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
