#include "buffers/RingMemory.h"

#include "support/vectorUnit.h"

#include <cstring>
#include <limits>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tracery {

namespace {

constexpr std::uint64_t kMostRoom = std::numeric_limits<std::ptrdiff_t>::max() / sizeof(double);

#if defined(__linux__)

/// From this many doubles on, room has pages of its own: a copy of less takes no longer than the calls.
constexpr std::uint64_t kLeastPagedRoom = 1 << 13;

bool isPaged(std::uint64_t room) { return !kPlainKernels && room >= kLeastPagedRoom; }

/// `data` are the pages of room for `room` doubles, or null.
double* morePages(double* data, std::uint64_t room, std::uint64_t newRoom)
{
    void* pages = data != nullptr ? mremap(data, room * sizeof(double), newRoom * sizeof(double), MREMAP_MAYMOVE)
                                  : mmap(nullptr, newRoom * sizeof(double), PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        throw std::bad_alloc();
    return static_cast<double*>(pages);
}
void releasePages(double* data, std::uint64_t room) noexcept { munmap(data, room * sizeof(double)); }

#else

bool isPaged(std::uint64_t) { return false; }
double* morePages(double*, std::uint64_t, std::uint64_t) { throw std::bad_alloc(); }
void releasePages(double*, std::uint64_t) noexcept {}

#endif

void release(double* data, std::uint64_t room) noexcept
{
    if (isPaged(room))
        releasePages(data, room);
    else
        delete[] data;
}

} // namespace

RingMemory::~RingMemory() { release(data_, room_); }

void RingMemory::grow(std::uint64_t room)
{
    if (room <= room_)
        return;
    if (room > kMostRoom)
        throw std::bad_alloc();
    if (isPaged(room_)) {
        data_ = morePages(data_, room_, room);
    } else {
        double* fresh = isPaged(room) ? morePages(nullptr, 0, room) : new double[room]; // not filled
        if (room_ > 0)
            std::memcpy(fresh, data_, room_ * sizeof(double));
        release(data_, room_);
        data_ = fresh;
    }
    room_ = room;
}

} // namespace tracery
