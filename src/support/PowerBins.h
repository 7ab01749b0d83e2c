#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// Bins of equal width on a logarithmic scale of power: bin i holds the powers p with ⌈ln(p) · binsPerNeper⌉ = i.
namespace tracery {

/// The index of a power that has none: of 0, negative, NaN, or too far out for an int.
constexpr std::int64_t kNoPowerIndex = std::numeric_limits<std::int32_t>::min();

/// The formula itself.
inline std::int64_t powerIndex(double power, double binsPerNeper)
{
    const double index = std::ceil(std::log(power) * binsPerNeper);
    return std::abs(index) <= std::numeric_limits<std::int32_t>::max() ? static_cast<std::int64_t>(index)
                                                                       : kNoPowerIndex;
}

/// The highest power of a bin.
inline double powerOfIndex(std::int64_t index, double binsPerNeper)
{
    return std::exp(static_cast<double>(index) / binsPerNeper);
}

/// Finds indexes without logarithms. Cells of doubles with the same exponent and leading mantissa bits hold one edge
/// between bins at most. Near an edge, where the formula's own rounding decides, the table does not answer.
class PowerBinTable {
public:
    /// How far (relatively) from an edge answers are certain. The formula and the edges are each right to 2^-41 or so:
    /// to an ulp of a logarithm as large as 745.
    static constexpr double kEdgeGuard = 0x1p-32;

    /// The powers with the same leading bits. Places in a cell count 2^-32 of it.
    struct Cell {
        std::uint32_t guardStart; ///< where doubt about its edge begins; the last place without an edge
        std::int32_t indexAbove;  ///< of the powers past the edge
    };

    /// What a look-up reads, by value, so that loops keep it in registers. Valid until the table covers more.
    struct View {
        const Cell* cells = nullptr;
        std::uint64_t cellCount = 0;
        std::int64_t firstCell = 0;
        int cellShift = 52;
        std::int64_t doubt = 0; ///< width, in places

        std::int64_t cellOf(double power) const
        {
            return (std::bit_cast<std::int64_t>(power) >> cellShift) - firstCell;
        }
        std::int64_t placeOf(double power) const
        {
            return static_cast<std::uint32_t>(std::bit_cast<std::int64_t>(power) >> (cellShift - 32));
        }
        /// True only of finite, positive powers.
        bool reaches(double power) const { return static_cast<std::uint64_t>(cellOf(power)) < cellCount; }
        /// powerIndex of a power that the table reaches, or kAsk or more.
        std::int64_t find(double power) const
        {
            const Cell cell = cells[cellOf(power)];
            const std::int64_t past = placeOf(power) - static_cast<std::int64_t>(cell.guardStart);
            if (static_cast<std::uint64_t>(past) <= static_cast<std::uint64_t>(doubt))
                return kAsk;
            return std::int64_t{cell.indexAbove} + (past >> 63);
        }
    };
    /// From here on, no index: ask the formula.
    static constexpr std::int32_t kAsk = std::numeric_limits<std::int32_t>::max() - 1;

    PowerBinTable() = default;
    PowerBinTable(PowerBinTable&&) = default;
    PowerBinTable& operator=(PowerBinTable&&) = default;

    /// Prepares for the indexes from `first` to `last` (which a power has), as far down as a table of 2^17 cells reaches.
    /// throws  std::bad_alloc; the table is then as before
    void cover(double binsPerNeper, std::int64_t first, std::int64_t last);
    View view() const { return view_; }

private:
    void fill(int mantissaBits);

    double binsPerNeper_ = 0;
    std::int64_t first_ = 0, last_ = -1; ///< the indexes that are covered
    std::vector<Cell> cells_;
    View view_; ///< of cells_
};

} // namespace tracery
