#pragma once

#include "support/vectorUnit.h"

#include <cmath>
#include <cstddef>
#include <limits>

/// How lines are thinned, point by point.
namespace tracery {

/// A point of a line, seen where it lies: its time (s) and its value, side by side.
using PointInLine = const double*;
constexpr std::ptrdiff_t kDoublesPerPoint = 2;
inline double timeOf(PointInLine point) { return point[0]; }
inline double valueOf(PointInLine point) { return point[1]; }

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

    bool hasNoStart() const { return start == -std::numeric_limits<double>::infinity() || std::isnan(start); }
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
    TRACERY_INLINE void fold(PointInLine point)
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
    TRACERY_INLINE PointInLine foldStretch(PointInLine point, PointInLine end, const ColumnRule& column)
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
    TRACERY_INLINE void flush(LinePointWriter& writer)
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

} // namespace tracery
