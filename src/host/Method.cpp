#include "host/Method.h"

#include <algorithm>
#include <typeinfo>

namespace tracery::binding {

namespace {
// Never destroyed: a host may go later than the variables of this library.
const Error& noMemory = *new Error(errors::OutOfMemory);
} // namespace

const Error& outOfMemory() noexcept { return noMemory; }
bool isPlain(const std::bad_alloc& error) noexcept
{
    return typeid(error) == typeid(std::bad_alloc) || typeid(error) == typeid(std::bad_array_new_length);
}

void requireInputs(std::size_t inputs, std::span<const ArgumentCounts> taken)
{
    if (std::ranges::any_of(taken, [&](const ArgumentCounts& counts) { return counts.include(inputs); }))
        return;
    std::string needed;
    for (const ArgumentCounts& counts : taken)
        needed += (needed.empty() ? "" : ", or ") + std::to_string(counts.fewest) +
                  (counts.most > counts.fewest ? " to " + std::to_string(counts.most) : "");
    throw Error(errors::InvalidNumberOfArguments,
                std::to_string(inputs) + " arguments (the object included), needed: " + needed);
}

void requireOutputs(std::size_t wanted, std::size_t outputs)
{
    // A host that does not know that a method gives nothing may ask for one result.
    if (wanted > std::max(outputs, std::size_t{1}))
        throw Error(errors::InvalidNumberOfArguments,
                    std::to_string(wanted) + " results wanted of " + std::to_string(outputs));
}

} // namespace tracery::binding
