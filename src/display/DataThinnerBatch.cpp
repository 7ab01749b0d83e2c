#include "support/thinKernel.h"

#include <tracery/DataThinner.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

namespace tracery {

namespace {

std::span<const double> lineIn(const HostArray* data, int numPoints)
{
    if (data == nullptr || getRealData(data) == nullptr || numPoints <= 0)
        return {};
    const std::uint64_t points = std::min(static_cast<std::uint64_t>(numPoints), getNumberOfElements(data) / 2);
    return {getRealData(data), static_cast<std::size_t>(2 * points)};
}

/// A result that fills less than one part in this many of its room is copied out of it; others keep it.
constexpr std::size_t kMostRoomKept = 8;

/// A 2-by-m array of the first `written` of the `capacity` doubles in `room`.
HostArrayPtr asMatrix(HostDoubles room, std::size_t capacity, std::size_t written)
{
    if (written < capacity / kMostRoomKept) {
        HostDoubles exact(static_cast<double*>(allocateMemory(written * sizeof(double))));
        std::memcpy(exact.get(), room.get(), written * sizeof(double));
        room.swap(exact);
    }
    return HostArrayPtr(adoptDoubleMatrix(2, written / 2, std::move(room), nullptr));
}

} // namespace

HostArray* DataThinner::getArrayThinData(const HostArray* data, int numPoints, double pixelTimeRatio,
                                         bool continuePrevious)
{
    const std::span<const double> line = lineIn(data, numPoints);
    // Untouched, most of the room never becomes real memory.
    HostDoubles room(static_cast<double*>(allocateMemory(line.size_bytes())));
    const ThinnedLine thinned = thinLine(line, pixelTimeRatio, continuePrevious ? arrayThinningPixelStart_ : -getInf(),
                                         {room.get(), line.size()});
    HostArrayPtr result = asMatrix(std::move(room), line.size(), thinned.written);
    arrayThinningPixelStart_ = thinned.columnStart;
    return result.release();
}

} // namespace tracery
