#include "support/thinKernel.h"

#include "support/lanes.h"
#include "support/lineColumns.h"

#include <algorithm>
#include <limits>

namespace tracery {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

/// No distance below this one opens a column: of 0.5 / x, rounded, even the double below is too far from the quotient for
/// its product with x to be rounded to 0.5. As rounding keeps order, so are all others. The quotient itself may open or not.
double openingDistance(double columnsPerSecond) { return columnsPerSecond > 0 ? 0.5 / columnsPerSecond : kInf; }

/// The first of the points from `from` on that is `distance` or further from the start, or `end`: if times rise, and if not,
/// just some point. Found fastest when it is `guess` doubles ahead or near that, with no branches to mispredict.
TRACERY_INLINE PointInLine findColumnEnd(PointInLine from, std::ptrdiff_t guess, PointInLine end, double start,
                                         double distance)
{
    const auto count = (end - from) / kDoublesPerPoint;
    const auto opensAt = [&](std::ptrdiff_t i) { return timeOf(from + kDoublesPerPoint * i) - start >= distance; };
    const auto near = std::clamp<std::ptrdiff_t>(guess / kDoublesPerPoint, 0, count);
    std::ptrdiff_t low = 0, high = count;
    for (std::ptrdiff_t reach = 1;; reach = 2 * reach + 1) { // a power of two of places
        low = std::max<std::ptrdiff_t>(near - reach, 0);
        high = std::min(near + reach + 1, count);
        if ((low == 0 || !opensAt(low - 1)) && (high == count || opensAt(high)))
            break;
    }
    while (low < high) {
        const std::ptrdiff_t middle = low + (high - low) / 2;
        const bool opens = opensAt(middle);
        high = opens ? middle : high;
        low = opens ? low : middle + 1;
    }
    return from + kDoublesPerPoint * low;
}

constexpr std::ptrdiff_t kCacheLine = 8, kReadAhead = 256; // doubles
constexpr std::ptrdiff_t kLongestReach = 4096 * kDoublesPerPoint;
constexpr std::ptrdiff_t kBlock = 16 * kDoublesPerPoint;

/// The last point of a block with the value that is the greatest or least of some blocks, seen lane by lane. `blocks` says
/// for each lane where the last block starts that has the lane's extreme.
template <class Width>
TRACERY_INLINE PointInLine lastPointOf(double value, PointInLine first, const typename Width::Lanes& extremes,
                                       const typename Width::Mask& blocks)
{
    using Mask = typename Width::Mask;
    constexpr std::ptrdiff_t kLanes = sizeof extremes / sizeof value;
    const Mask having = blocks & (extremes == value);
    const PointInLine block = first + std::max(having[1], having[kLanes - 1]);
    Mask last = Mask{} - kLanes, here{};
    for (std::ptrdiff_t k = 0; k < kBlock; k += kLanes, here += kLanes) {
        typename Width::Lanes x;
        load(x, block + k);
        last = x == value ? here : last;
    }
    return block + std::max(last[1], last[kLanes - 1] + kLanes - kDoublesPerPoint);
}

/// Folds the points from `first` to `end`, at least a block of them, if all are surely inside the column and no gaps. Tells
/// whether it did. The last block laps over the one before.
template <class Width>
TRACERY_INLINE bool foldBlocks(PointInLine first, PointInLine end, double start, double openingAt,
                               ColumnExtremes& extremes)
{
    using Lanes = typename Width::Lanes;
    using Mask = typename Width::Mask;
    constexpr std::ptrdiff_t kLanes = sizeof(Lanes) / sizeof(double);
    Lanes least = Lanes{} + kInf, greatest = Lanes{} - kInf;
    Mask leastAt{}, greatestAt{}, ordered = ~Mask{};
    for (PointInLine next = first; next != end;) {
        const PointInLine block = std::min(next, end - kBlock);
        next = block + kBlock;
        for (std::ptrdiff_t k = 0; k < kBlock; k += kCacheLine)
            __builtin_prefetch(block + k + kReadAhead);
        Lanes low, high;
        load(low, block);
        high = low;
        for (std::ptrdiff_t k = 0; k < kBlock; k += 2 * kLanes) {
            Lanes x, y;
            load(x, block + k);
            load(y, block + k + kLanes);
            low = x < low ? x : low;
            high = high > x ? high : x; // NaN when x is, and stays so with y
            low = low < y ? low : y;    // NaN when y is
            high = y > high ? y : high;
            ordered &= low <= high;
        }
        const Mask at = Mask{} + (block - first);
        leastAt = low <= least ? at : leastAt;
        greatestAt = high >= greatest ? at : greatestAt;
        least = low < least ? low : least;
        greatest = high > greatest ? high : greatest;
    }
    Mask values{};
    for (std::ptrdiff_t k = 1; k < kLanes; k += kDoublesPerPoint)
        values[k] = -1;
    const Mask inside = (least > start) & (greatest - start < openingAt);
    if (!allOf(ordered & (inside | values)))
        return false;
    const double min = std::min(least[1], least[kLanes - 1]), max = std::max(greatest[1], greatest[kLanes - 1]);
    extremes.fold(lastPointOf<Width>(min, first, least, leastAt));
    extremes.fold(lastPointOf<Width>(max, first, greatest, greatestAt));
    return true;
}

template <class Width>
TRACERY_INLINE ThinnedLine thinLineOf(std::span<const double> line, double columnsPerSecond, double columnStart,
                                      std::span<double> out)
{
    const double openingAt = openingDistance(columnsPerSecond);
    LinePointWriter writer(out.data());
    ColumnRule column{columnStart, columnsPerSecond};
    ColumnExtremes extremes;
    PointInLine point = line.data(), opening = point;
    const PointInLine end = point + line.size();
    std::ptrdiff_t lastLength = 2 * kBlock; // of a column
    std::ptrdiff_t reach = kLongestReach;   // of an attempt: no more than twice of what the last one was good for
    while (point != end) {
        if (column.opens(point)) {
            extremes.flush(writer);
            writer.putFinite(point);
            column.start = timeOf(point);
            lastLength = point - opening;
            opening = point;
        } else if (column.passes(point)) {
            writer.put(point);
        } else {
            const std::ptrdiff_t length = point - opening;
            if (!kPlainKernels && std::max(length, lastLength) > kBlock && !extremes.isGap()) {
                const PointInLine stop = findColumnEnd(point, lastLength - length, end, column.start, openingAt);
                const std::ptrdiff_t piece = std::min(stop - point, reach);
                if (piece >= kBlock) {
                    const bool folded = foldBlocks<Width>(point, point + piece, column.start, openingAt, extremes);
                    reach = folded ? std::min(2 * reach, kLongestReach) : kBlock;
                    if (folded) {
                        point += piece;
                        continue;
                    }
                }
            }
            extremes.fold(point);
            if (!kPlainKernels && !extremes.isGap()) {
                point += kDoublesPerPoint;
                point = extremes.foldStretch(point, point + std::min(end - point, kBlock), column);
                continue;
            }
        }
        point += kDoublesPerPoint;
    }
    return {static_cast<std::size_t>(writer.next() - out.data()), column.start};
}

TRACERY_AVX2 ThinnedLine thinLineAvx2(std::span<const double> line, double columnsPerSecond, double columnStart,
                                      std::span<double> out)
{
    return thinLineOf<FourLanes>(line, columnsPerSecond, columnStart, out);
}

} // namespace

ThinnedLine thinLine(std::span<const double> line, double columnsPerSecond, double columnStart, std::span<double> out)
{
    return useAvx2() ? thinLineAvx2(line, columnsPerSecond, columnStart, out)
                     : thinLineOf<TwoLanes>(line, columnsPerSecond, columnStart, out);
}

} // namespace tracery
