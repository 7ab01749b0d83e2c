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
/// Room grows as values come: it doubles, with a fifth of it to spare, up to the capacity. A ring that is held has room
/// for its whole capacity, whatever it stores.
///
/// Memory is taken in reserveFor and by changes alone: an append that was reserved for cannot fail, and neither can
/// dropping values. So several rings that belong together change together or not at all.
class Ring {
public:
    using Storage = boost::circular_buffer_space_optimized<double>;
    using Control = Storage::capacity_type; ///< the capacity, and the room that there is, of which none is given back

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

    /// A capacity to come, of a ring that is then held or not. Takes the memory for it, if any; apply() cannot fail.
    class Change {
    public:
        Change(Ring& ring, std::uint64_t capacity, bool held) : ring_(&ring), control_(capacity), held_(held)
        {
            const std::uint64_t kept = std::min(capacity, ring.size());
            const std::uint64_t before = ring.room() <= capacity ? ring.room() : 0; // more would let it outgrow that
            control_ = {capacity, held ? capacity : roomFor(kept, before, capacity)};
            if (control_.min_capacity() != ring.room())
                fresh_ = ring.newestIn(control_, kept);
        }
        /// Makes the change; the newest values stay.
        void apply() noexcept
        {
            if (fresh_)
                ring_->storage_.swap(*fresh_);
            else
                ring_->storage_.rset_capacity(control_); // moves nothing: there is room enough, and some to spare
            ring_->held_ = held_;
        }

    private:
        Ring* ring_;
        Control control_;
        bool held_;
        std::optional<Storage> fresh_;
    };

    explicit Ring(std::uint64_t capacity) : storage_(Control(capacity)) {}

    static std::uint64_t largestCapacity() { return Storage().max_size(); }

    std::uint64_t size() const { return storage_.size(); }
    std::uint64_t capacity() const { return storage_.capacity().capacity(); }
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
        if (room() != capacity())
            moveInto(roomFor(size() + std::min(count, capacity() - size()), room(), capacity()));
    }
    /// Makes room for the whole capacity. throws  std::bad_alloc; the ring is then as before
    void hold() { Change(*this, capacity(), true).apply(); }
    /// Appends `count` values that there is room for; what passes the capacity is dropped from the oldest.
    void append(const double* values, std::uint64_t count) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity());
        values += count - kept;
        if (kPlainKernels || kept == 1) {
            for (std::uint64_t i = 0; i < kept; ++i)
                plain().push_back(values[i]);
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
            plain().insert(plain().end(), values, values + kept);
        }
    }
    void appendFill(std::uint64_t count, double value) noexcept
    {
        const std::uint64_t kept = std::min(count, capacity());
        if (kept > 0)
            plain().insert(plain().end(), kept, value);
    }
    /// Overwrites the value `back` places before the end (1 is the newest).
    void setFromEnd(std::uint64_t back, double value) noexcept { storage_[storage_.size() - back] = value; }

    /// Drops the newest values, at most all.
    void dropNewest(std::uint64_t count) noexcept { plain().erase_end(std::min(count, size())); }
    /// Drops the oldest values until `count` are left.
    void keepNewest(std::uint64_t count) noexcept { plain().erase_begin(size() - std::min(count, size())); }
    /// Gives the room back that is not needed, when it is two thirds of all, there is memory to move to, and the ring is
    /// not held.
    void giveBack() noexcept
    {
        if (held_ || room() / 3 < size())
            return;
        try {
            moveInto(roomFor(size(), 0, capacity()));
        } catch (const std::bad_alloc&) { // it keeps what it has
        }
    }
    /// Drops all values, and gives their room back unless the ring is held.
    void clear() noexcept
    {
        if (held_)
            return plain().clear();
        Storage fresh{Control(capacity())};
        storage_.swap(fresh);
    }

private:
    /// Room for `size` values, with a fifth of it to spare, doubled from `room`; `capacity` at most.
    static std::uint64_t roomFor(std::uint64_t size, std::uint64_t room, std::uint64_t capacity)
    {
        if (size == 0)
            return room;
        room = std::max<std::uint64_t>(room, 1);
        while (size + room / 5 >= room)
            room *= 2;
        return std::min(room, capacity);
    }

    /// The ring within the container. It never asks for memory, and takes half the time of the container, which looks for
    /// room in each operation. Casts of this form alone may reach it.
    boost::circular_buffer<double>& plain() { return (boost::circular_buffer<double>&)storage_; }
    std::uint64_t room() const { return storage_.capacity().min_capacity(); }
    /// The newest `count` values in another container.
    Storage newestIn(Control control, std::uint64_t count) const
    {
        const auto one = storage_.array_one(), two = storage_.array_two();
        const std::uint64_t ofTwo = std::min<std::uint64_t>(count, two.second), ofOne = count - ofTwo;
        Storage other(control, one.first + (one.second - ofOne), one.first + one.second);
        other.insert(other.end(), two.first + (two.second - ofTwo), two.first + two.second);
        return other;
    }
    /// Takes other room. throws  std::bad_alloc; the ring is then as before
    void moveInto(std::uint64_t room)
    {
        if (room == this->room())
            return;
        Storage other = newestIn({capacity(), room}, size());
        storage_.swap(other);
    }

    Storage storage_;
    bool held_ = false;
};

} // namespace tracery
