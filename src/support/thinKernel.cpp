#include "support/thinKernel.h"

#include "support/lanes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace tracery {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

/// A point of a line, seen where it lies: its time (s) and its value, side by side.
using PointInLine = const double*;
constexpr std::ptrdiff_t kDoublesPerPoint = 2;
double timeOf(PointInLine point) { return point[0]; }
double valueOf(PointInLine point) { return point[1]; }

/// Writes points one behind the other into room that is known to suffice.
class LinePointWriter {
public:
    explicit LinePointWriter(double* out) : next_(out) {}
    void put(double time, double value)
    {
        next_[0] = time;
        next_[1] = value;
        next_ += kDoublesPerPoint;
    }
    void put(PointInLine point) { put(timeOf(point), valueOf(point)); }
    /// Infinities become NaN: no display can place them.
    void putFinite(PointInLine point) { put(finite(timeOf(point)), finite(valueOf(point))); }
    double* next() const { return next_; }

private:
    static double finite(double x) { return std::isinf(x) ? std::numeric_limits<double>::quiet_NaN() : x; }

    double* next_;
};

/// What a point is to the current column, by its time.
struct ColumnRule {
    double start;
    double columnsPerSecond;

    bool hasNoStart() const { return start == -kInf || std::isnan(start); }
    double distance(PointInLine point) const { return timeOf(point) - start; }
    bool opens(PointInLine point) const { return distance(point) * columnsPerSecond >= 0.5 || hasNoStart(); }
    /// Of points that do not open: whether one is drawn as it stands, without a time or at the column's start.
    bool passes(PointInLine point) const { return std::isnan(timeOf(point)) || distance(point) == 0; }
    /// True only for points that neither open nor pass, given that the column has a start; false for all that
    /// need a closer look. One comparison serves for the column's end and for NaN.
    bool surelyInside(PointInLine point) const
    {
        const double d = distance(point);
        return d * columnsPerSecond < 0.5 && std::abs(d) > 0;
    }
};

/// The extremes of the points folded since the column opened. Ties go to the later point. A NaN value becomes
/// both extremes, and only another NaN replaces it, because nothing compares with it.
class ColumnExtremes {
public:
    void fold(PointInLine point)
    {
        const double value = valueOf(point);
        if (min_ == nullptr || std::isnan(value)) {
            min_ = max_ = point;
            return;
        }
        if (valueOf(max_) <= value)
            max_ = point;
        if (value <= valueOf(min_))
            min_ = point;
    }

    /// Folds the points from `point` on that are surely inside the column and no gaps; returns the first that
    /// is not. There must be extremes, and no NaN among them. The same as fold point by point, but the
    /// extremes are selected without branches, which noise would mispredict, and stay in registers.
    PointInLine foldStretch(PointInLine point, PointInLine end, const ColumnRule& column)
    {
        PointInLine min = min_, max = max_;
        double least = valueOf(min), greatest = valueOf(max);
        for (; point != end && column.surelyInside(point); point += kDoublesPerPoint) {
            const double value = valueOf(point);
            if (std::isnan(value))
                break;
            max = greatest > value ? max : point;
            greatest = greatest > value ? greatest : value;
            min = least < value ? min : point;
            least = least < value ? least : value;
        }
        min_ = min;
        max_ = max;
        return point;
    }

    bool isGap() const { return min_ != nullptr && std::isnan(valueOf(min_)); }

    /// Hands the extremes over in time order, the minimum first at equal times but then only one of them.
    void flush(LinePointWriter& writer)
    {
        if (min_ == nullptr)
            return;
        const PointInLine extremes[] = {min_, max_}; // to be picked from without a branch
        const bool maxFirst = timeOf(max_) < timeOf(min_);
        const PointInLine first = extremes[maxFirst], second = extremes[!maxFirst];
        writer.putFinite(first);
        if (timeOf(second) != timeOf(first))
            writer.putFinite(second);
        min_ = max_ = nullptr;
    }

private:
    PointInLine min_ = nullptr;
    PointInLine max_ = nullptr;
};

/// The shortest distance that opens a column; +inf when none surely does. Distances grow with time and products with
/// distances, rounded or not, so that all greater ones open it too.
double openingDistance(double columnsPerSecond)
{
    if (!(columnsPerSecond > 0))
        return kInf;
    const auto opens = [&](double distance) { return distance * columnsPerSecond >= 0.5; };
    double distance = 0.5 / columnsPerSecond;
    for (double less; opens(less = std::nextafter(distance, 0.0));)
        distance = less;
    while (!opens(distance))
        distance = std::nextafter(distance, kInf);
    return distance;
}

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
