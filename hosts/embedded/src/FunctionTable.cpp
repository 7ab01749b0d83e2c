#include "FunctionTable.h"

#include <tracery/embedded/errors.h>

#include <utility>

namespace tracery::embedded {

HostOutputs FunctionTable::call(const std::string& dottedName, HostInputs inputs, std::size_t wantedOutputs)
{
    const auto entry = functions_.find(dottedName);
    if (entry == functions_.end())
        throw Error(errors::UnknownFunction, "there is no function " + dottedName);
    const HostBody body = entry->second.body; // it may define itself anew
    return body(inputs, wantedOutputs);
}

void FunctionTable::define(const std::string& name, HostBody body)
{
    // What goes with the old body may look here: it goes last.
    Function replaced{std::move(body)};
    if (replaced.body != nullptr)
        std::swap(functions_[name], replaced);
    else
        const auto gone = functions_.extract(name);
}

void FunctionTable::lend(const std::string& name, HostBody body, const void* owner)
{
    if (!functions_.try_emplace(name, Function{std::move(body), owner}).second)
        throw Error(errors::DuplicateFunction, "there is a function " + name + " already");
}

void FunctionTable::takeBack(const void* owner)
{
    std::erase_if(functions_, [owner](const auto& entry) { return entry.second.owner == owner; });
}

} // namespace tracery::embedded
