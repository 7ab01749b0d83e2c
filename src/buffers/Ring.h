#pragma once

#include <boost/circular_buffer.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tracery {

/// The newest values of a stream, up to a capacity; memory grows on demand, by doubling. Indexes count from the oldest.
class Ring {
public:
    using Storage = boost::circular_buffer_space_optimized<double>;

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

    explicit Ring(std::uint64_t capacity) : storage_(Storage::capacity_type(capacity, 0)) {}

    static std::uint64_t largestCapacity() { return Storage().max_size(); }

    std::uint64_t size() const { return storage_.size(); }
    std::uint64_t capacity() const { return storage_.capacity(); }
    bool empty() const { return storage_.empty(); }
    View view() const { return View(storage_); }
    double newest() const { return storage_.back(); }

    /// Appends `count` values; what no longer fits is dropped from the oldest.
    void append(const double* values, std::uint64_t count)
    {
        const std::uint64_t kept = std::min(count, capacity());
        if (kept > 0)
            storage_.insert(storage_.end(), values + (count - kept), values + count);
    }
    void appendFill(std::uint64_t count, double value)
    {
        const std::uint64_t kept = std::min(count, capacity());
        if (kept > 0)
            storage_.insert(storage_.end(), kept, value);
    }
    /// Overwrites the value `back` places before the end (1 is the newest).
    void setFromEnd(std::uint64_t back, double value) { storage_[storage_.size() - back] = value; }

    /// Drops the newest values, at most all.
    void dropNewest(std::uint64_t count)
    {
        const auto dropped = static_cast<std::ptrdiff_t>(std::min(count, size()));
        if (dropped > 0)
            storage_.erase(storage_.end() - dropped, storage_.end());
    }
    /// Drops the oldest values until `count` are left.
    void keepNewest(std::uint64_t count)
    {
        if (count < size())
            storage_.rerase(storage_.begin(), storage_.end() - static_cast<std::ptrdiff_t>(count));
    }
    void clear()
    {
        Storage fresh(Storage::capacity_type(capacity(), 0));
        storage_.swap(fresh);
    }
    /// Changes the capacity; the newest values stay. A smaller ring is built anew, because shrinking in place would
    /// leave it with the memory, and so the room, of the larger one.
    void setCapacity(std::uint64_t capacity)
    {
        if (capacity >= this->capacity()) {
            storage_.rset_capacity(Storage::capacity_type(capacity, 0));
            return;
        }
        const std::uint64_t kept = std::min(capacity, size());
        Storage fresh(Storage::capacity_type(capacity, 0));
        fresh.insert(fresh.end(), storage_.end() - static_cast<std::ptrdiff_t>(kept), storage_.end());
        storage_.swap(fresh);
    }

private:
    Storage storage_;
};

} // namespace tracery
