#pragma once

#include "buffers/Ring.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace tracery {

/// How one step lies in a ring: the whole block of a port's maximum extents, column-major, with NaN where an input does
/// not reach.
class StepLayout {
public:
    using Counts = std::vector<std::uint64_t>;

    /// throws  InvalidMaxDimensions when the product of the extents passes 64 bits
    explicit StepLayout(Counts extents);

    const Counts& extents() const { return extents_; }
    std::uint64_t elements() const { return elements_; }

    /// What an input comes to: `steps` steps, either whole ones end to end or smaller ones of `extents`.
    struct Input {
        std::uint64_t steps = 0;
        std::uint64_t elements = 0; ///< of the whole input
        bool whole = true;
        Counts extents; ///< of one step of the input; behind them as many zeros, room to walk them
    };
    /// dims  as AddValue takes them; with a 0 they are no steps. throws  AddValueInputFormatError
    Input inputOf(std::span<const std::uint64_t> dims) const;
    /// Makes room in a ring. throws  std::bad_alloc; the ring is then as before
    void reserve(Ring& ring, const Input& input) const
    {
        ring.reserveFor(input.whole ? input.elements : kept(ring, input) * elements_);
    }
    /// Appends the steps that a ring with room can keep.
    void append(Ring& ring, Input& input, const double* values) const noexcept
    {
        input.whole ? ring.append(values, input.elements) : appendParts(ring, input, values);
    }

private:
    /// Steps that a ring could not keep beside the newer ones are not laid out at all.
    std::uint64_t kept(const Ring& ring, const Input& input) const
    {
        return std::min(input.steps, ring.capacity() / elements_);
    }
    void appendParts(Ring& ring, Input& input, const double* values) const noexcept;
    template <class Visit>
    void forEachColumn(Input& input, Visit&& visit) const;
    void fillDense(Ring& ring, Input& input, const double* values) const noexcept;
    void fillSparse(Ring& ring, Input& input, const double* values) const noexcept;

    Counts extents_;
    std::uint64_t elements_;
};

/// Product of extents that fit memory, so that nothing overflows.
std::uint64_t elementsOf(std::span<const std::uint64_t> extents);

} // namespace tracery
