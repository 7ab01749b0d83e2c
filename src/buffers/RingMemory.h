#pragma once

#include <cstdint>
#include <utility>

namespace tracery {

/// Uninitialised room for doubles, which grows without losing them. Large room is made of pages of its own, which Linux
/// hands over to larger room without a copy: growth then takes as long for a gigabyte as for a megabyte. New pages become
/// real memory when they are first written.
class RingMemory {
public:
    RingMemory() = default;
    explicit RingMemory(std::uint64_t room) { grow(room); }
    RingMemory(RingMemory&& other) noexcept { swap(other); }
    RingMemory& operator=(RingMemory&& other) noexcept
    {
        swap(other);
        return *this;
    }
    ~RingMemory();

    double* data() const { return data_; }
    std::uint64_t room() const { return room_; }
    /// Makes room for `room` doubles, no fewer than there is room for already. They may move, and keep their order.
    /// throws  std::bad_alloc; nothing has changed then
    void grow(std::uint64_t room);
    void swap(RingMemory& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(room_, other.room_);
    }

private:
    double* data_ = nullptr; // kept by hand: no standard owner knows of pages
    std::uint64_t room_ = 0;
};

} // namespace tracery
