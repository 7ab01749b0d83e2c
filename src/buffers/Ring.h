#pragma once

#include "buffers/RingMemory.h"
#include "support/vectorUnit.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

namespace tracery {

/// The newest values of a stream, up to a capacity. Indexes count from the oldest.
///
/// Memory grows on demand, by doubling, and only in reserveFor: an append that was reserved for cannot fail, and neither
/// can dropping values, which keeps the memory. So several rings that belong together change together or not at all.
class Ring {
public:
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
            if (ring.memory_.room() <= capacity)
                return;
            const std::uint64_t kept = std::min(capacity, ring.size());
            fresh_.emplace(roomFor(kept, 0, capacity));
            ring.view().copy(ring.size() - kept, kept, fresh_->data());
        }
        /// Changes the capacity; the newest values stay.
        void apply() noexcept
        {
            ring_->capacity_ = capacity_;
            if (!fresh_)
                return;
            ring_->memory_.swap(*fresh_);
            ring_->end_ = 0;
            ring_->size_ = std::min(capacity_, ring_->size_);
            ring_->moveEnd(ring_->size_);
        }

    private:
        Ring* ring_;
        std::uint64_t capacity_;
        std::optional<RingMemory> fresh_;
    };

    explicit Ring(std::uint64_t capacity) : capacity_(capacity) {}

    static constexpr std::uint64_t largestCapacity()
    {
        return std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double);
    }

    std::uint64_t size() const { return size_; }
    std::uint64_t capacity() const { return capacity_; }
    bool empty() const { return size_ == 0; }
    View view() const
    {
        const std::uint64_t inOne = std::min(size_, memory_.room() - place(size_));
        return {{memory_.data() + place(size_), inOne}, {memory_.data(), size_ - inOne}};
    }
    double newest() const { return memory_.data()[place(1)]; }

    /// Makes room for appending `count` values. throws  std::bad_alloc; the ring is then as before
    void reserveFor(std::uint64_t count)
    {
        const std::uint64_t room = memory_.room();
        if (room < capacity_ && count > room - size_)
            grow(roomFor(size_ + std::min(count, capacity_ - size_), room, capacity_));
    }
    /// Appends `count` values that there is room for; what passes the capacity is dropped from the oldest.
    void append(const double* values, std::uint64_t count) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity_);
        values += count - kept;
        if (kPlainKernels || kept == 1) {
            for (std::uint64_t i = 0; i < kept; ++i) {
                memory_.data()[end_] = values[i];
                moveEnd(1);
                size_ = std::min(size_ + 1, capacity_);
            }
            return;
        }
        extend(kept, [values](double* out, std::uint64_t first, std::uint64_t n) {
            std::memcpy(out, values + first, n * sizeof(double));
        });
    }
    void appendFill(std::uint64_t count, double value) noexcept
    {
        extend(std::min(count, capacity_),
               [value](double* out, std::uint64_t, std::uint64_t n) { std::fill_n(out, n, value); });
    }
    /// Overwrites the value `back` places before the end (1 is the newest).
    void setFromEnd(std::uint64_t back, double value) noexcept { memory_.data()[place(back)] = value; }

    /// Drops the newest values, at most all.
    void dropNewest(std::uint64_t count) noexcept
    {
        const std::uint64_t dropped = std::min(count, size_);
        if (dropped == 0)
            return;
        end_ = place(dropped);
        size_ -= dropped;
    }
    /// Drops the oldest values until `count` are left.
    void keepNewest(std::uint64_t count) noexcept { size_ = std::min(size_, count); }
    /// Drops all values and gives their memory back.
    void clear() noexcept
    {
        Ring fresh(capacity_);
        std::swap(*this, fresh);
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

    /// Where the value `back` places before the end is, `back` at most the size.
    std::uint64_t place(std::uint64_t back) const { return back <= end_ ? end_ - back : end_ + memory_.room() - back; }
    void moveEnd(std::uint64_t count) noexcept
    {
        end_ += count;
        if (end_ >= memory_.room())
            end_ -= memory_.room();
    }

    void grow(std::uint64_t room)
    {
        const std::uint64_t before = memory_.room(), first = place(size_);
        memory_.grow(room);
        const std::uint64_t inOne = before - first;
        if (inOne >= size_) // full up to the old end, it goes on behind it
            end_ = first + size_;
        else // the oldest values stay the last ones of the room
            std::memmove(memory_.data() + (room - inOne), memory_.data() + first, inOne * sizeof(double));
    }

    /// Takes `count` more places, and calls put(place, index of its first new value, length) for each stretch of them.
    template <class Put>
    void extend(std::uint64_t count, Put&& put) noexcept
    {
        if (count == 0)
            return;
        const std::uint64_t inOne = std::min(count, memory_.room() - end_);
        put(memory_.data() + end_, 0, inOne);
        if (count > inOne)
            put(memory_.data(), inOne, count - inOne);
        moveEnd(count);
        size_ = std::min(size_ + count, capacity_);
    }

    std::uint64_t capacity_;
    RingMemory memory_;     ///< its room is never above capacity_
    std::uint64_t end_ = 0; ///< where the next value goes, inside the room
    std::uint64_t size_ = 0;
};

} // namespace tracery
