#include "buffers/StepLayout.h"

#include <tracery/host/Error.h>

#include <algorithm>
#include <bit>
#include <numeric>

namespace tracery {

namespace {

/// Fills the places of a step that the input does not cover.
const double kFill = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});

/// Below this share of the maximum block, values are written one by one into a block of NaN.
constexpr double kSparseShare = 0.1;

/// throws  InvalidMaxDimensions when the product passes 64 bits
std::uint64_t checkedProduct(const StepLayout::Counts& factors)
{
    std::uint64_t result = 1;
    bool overflow = false;
    for (const std::uint64_t factor : factors) {
        if (factor == 0)
            return 0;
        overflow |= __builtin_mul_overflow(result, factor, &result);
    }
    if (overflow)
        throw Error(errors::InvalidMaxDimensions);
    return result;
}

} // namespace

std::uint64_t elementsOf(std::span<const std::uint64_t> extents)
{
    return std::accumulate(extents.begin(), extents.end(), std::uint64_t{1}, std::multiplies<>());
}

StepLayout::StepLayout(Counts extents) : extents_(std::move(extents)), elements_(checkedProduct(extents_)) {}

StepLayout::Input StepLayout::inputOf(std::span<const std::uint64_t> dims) const
{
    Input input;
    if (std::find(dims.begin(), dims.end(), 0U) != dims.end())
        return input;
    const std::size_t numExtents = extents_.size();
    // Short dims of a port that ends in 1 go on with as many 1.
    const std::size_t numDims = dims.size() < numExtents && extents_.back() == 1 ? numExtents : dims.size();
    const auto dim = [dims](std::size_t d) { return d < dims.size() ? dims[d] : 1; };
    if (numDims > 0 && dim(0) == elements_ && numDims < 3) {
        input.steps = dim(1);
        input.elements = dim(0) * input.steps;
        return input;
    }
    if (numDims != numExtents && numDims != numExtents + 1)
        throw Error(errors::AddValueInputFormatError);
    input.steps = dim(numExtents);
    input.extents.resize(2 * numExtents);
    std::uint64_t elementsPerStep = 1;
    for (std::size_t d = 0; d < numExtents; ++d) {
        if ((input.extents[d] = dim(d)) > extents_[d])
            throw Error(errors::AddValueInputFormatError);
        elementsPerStep *= dim(d);
    }
    input.elements = elementsPerStep * input.steps;
    input.whole = elementsPerStep == elements_;
    return input;
}

void StepLayout::appendParts(Ring& ring, Input& input, const double* values) const noexcept
{
    const std::uint64_t inputStep = input.elements / input.steps;
    const bool sparse = static_cast<double>(inputStep) / static_cast<double>(elements_) < kSparseShare;
    for (std::uint64_t i = input.steps - kept(ring, input); i < input.steps; ++i)
        sparse ? fillSparse(ring, input, values + i * inputStep) : fillDense(ring, input, values + i * inputStep);
}

/// Walks the columns of one step of the input: calls visit(offset of the column's first element in the block) in storage
/// order.
template <class Visit>
void StepLayout::forEachColumn(Input& input, Visit&& visit) const
{
    const auto extents = std::span(input.extents).first(extents_.size()),
               subscripts = std::span(input.extents).subspan(extents_.size());
    while (true) {
        std::uint64_t offset = 0;
        std::uint64_t stride = 1;
        for (std::size_t d = 0; d < extents.size(); ++d) {
            offset += subscripts[d] * stride;
            stride *= extents_[d];
        }
        visit(offset);
        std::size_t d = 1;
        while (d < extents.size() && ++subscripts[d] == extents[d])
            subscripts[d++] = 0;
        if (d >= extents.size())
            return;
    }
}

/// Appends one smaller step column by column, with NaN up to where the next column starts.
void StepLayout::fillDense(Ring& ring, Input& input, const double* values) const noexcept
{
    const std::uint64_t column = input.extents[0];
    std::uint64_t filled = 0;
    forEachColumn(input, [&](std::uint64_t offset) {
        ring.appendFill(offset - filled, kFill);
        ring.append(values, column);
        values += column;
        filled = offset + column;
    });
    ring.appendFill(elements_ - filled, kFill);
}

/// Appends one smaller step as a block of NaN and then sets the few values in it.
void StepLayout::fillSparse(Ring& ring, Input& input, const double* values) const noexcept
{
    ring.appendFill(elements_, kFill);
    forEachColumn(input, [&](std::uint64_t offset) {
        for (std::uint64_t i = 0; i < input.extents[0]; ++i)
            ring.setFromEnd(elements_ - (offset + i), *values++);
    });
}

} // namespace tracery
