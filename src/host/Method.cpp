#include "host/Method.h"

#include <algorithm>

namespace tracery::binding {

namespace {
const Error noMemory(errors::OutOfMemory);
} // namespace

const Error& outOfMemory() noexcept { return noMemory; }

void requireCounts(std::size_t inputs, std::size_t fewest, std::size_t most, std::size_t wanted, std::size_t outputs)
{
    if (inputs < fewest || inputs > most)
        throw Error(errors::InvalidNumberOfArguments,
                    std::to_string(inputs) + " arguments (the object included), needed: " + std::to_string(fewest) +
                        (most > fewest ? " to " + std::to_string(most) : ""));
    // A host that does not know that a method gives nothing may ask for one result.
    if (wanted > std::max(outputs, std::size_t{1}))
        throw Error(errors::InvalidNumberOfArguments,
                    std::to_string(wanted) + " results wanted of " + std::to_string(outputs));
}

} // namespace tracery::binding
