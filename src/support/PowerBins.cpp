#include "support/PowerBins.h"

#include <algorithm>

namespace tracery {

namespace {

constexpr std::int64_t kMostCells = 1 << 17;     // a megabyte
constexpr std::uint32_t kLastPlace = 0xFFFFFFFF; // in a cell
constexpr int kMostMantissaBits = 16;            // of a cell; finer bins are left to the formula

/// Leading mantissa bits that make cells narrower than bins; more than there may be when bins are too narrow.
int mantissaBitsFor(double binsPerNeper)
{
    int bits = 0;
    while (bits <= kMostMantissaBits && std::log1p(std::ldexp(1.0, -bits)) * binsPerNeper > 0.99)
        ++bits;
    return bits;
}

} // namespace

void PowerBinTable::cover(double binsPerNeper, std::int64_t first, std::int64_t last)
{
    if (binsPerNeper == binsPerNeper_) {
        if (first_ <= first && last <= last_)
            return;
        first = std::min(first, first_);
        last = std::max(last, last_);
    }
    PowerBinTable fresh;
    fresh.binsPerNeper_ = binsPerNeper;
    fresh.first_ = first;
    fresh.last_ = last;
    const int bits = mantissaBitsFor(binsPerNeper);
    if (bits <= kMostMantissaBits)
        fresh.fill(bits);
    *this = std::move(fresh);
}

void PowerBinTable::fill(int mantissaBits)
{
    view_.cellShift = 52 - mantissaBits;
    const std::int64_t guard = (std::int64_t{1} << mantissaBits) + 1; // kEdgeGuard in places, rounded up
    view_.doubt = 2 * guard;
    // An octave to spare at the top, so that a rising peak does not take a table a bin. No subnormal powers: the cells
    // of one exponent would be of all widths.
    constexpr double kLeast = std::numeric_limits<double>::min(), kMost = std::numeric_limits<double>::max();
    const double highest = std::clamp(2 * powerOfIndex(last_, binsPerNeper_), kLeast, kMost);
    const double lowest = std::clamp(powerOfIndex(first_ - 1, binsPerNeper_), kLeast, kMost);
    last_ = std::max(last_, powerIndex(highest, binsPerNeper_));
    const std::int64_t count = std::min(view_.cellOf(highest) - view_.cellOf(lowest) + 1, kMostCells);
    view_.firstCell = view_.cellOf(highest) + 1 - count;

    cells_.reserve(static_cast<std::size_t>(count) + 1);
    std::vector<std::int64_t> unsure; // cells with two edges, or that a neighbour's edge reaches into
    const double start = std::bit_cast<double>(view_.firstCell << view_.cellShift);
    std::int64_t index = powerIndex(start, binsPerNeper_) - 2;
    for (std::int64_t cell = 0; cell < count; ++index) {
        const double edge = powerOfIndex(index, binsPerNeper_);
        const std::int64_t place = view_.placeOf(edge);
        const auto above = static_cast<std::int32_t>(index + 1);
        cell = view_.cellOf(edge);
        if (cell < static_cast<std::int64_t>(cells_.size()))
            unsure.push_back(cell);
        while (static_cast<std::int64_t>(cells_.size()) < std::min(cell, count)) // cells below their edge
            cells_.push_back({kLastPlace, above});
        if (cell == static_cast<std::int64_t>(cells_.size()))
            cells_.push_back({static_cast<std::uint32_t>(std::max<std::int64_t>(place - guard, 0)), above});
        if (place <= guard)
            unsure.push_back(cell - 1);
        if (place >= kLastPlace - guard)
            unsure.push_back(cell + 1);
    }
    cells_.resize(static_cast<std::size_t>(count)); // without the one that the last edge may have added
    for (const std::int64_t cell : unsure)
        if (cell >= 0 && cell < count)
            cells_[static_cast<std::size_t>(cell)].indexAbove = kAsk + 1;
    view_.cells = cells_.data();
    view_.cellCount = cells_.size();
}

} // namespace tracery
