#include "FunctionTable.h"

#include <tracery/embedded/errors.h>

#include <utility>

namespace tracery::embedded {

HostOutputs FunctionTable::call(const std::string& dottedName, HostInputs inputs, std::size_t wantedOutputs)
{
    const auto entry = functions_.find(dottedName);
    if (entry == functions_.end())
        throw Error(errors::UnknownFunction, "there is no function " + dottedName);
    const HostBody body = entry->second; // it may define itself anew
    return body(inputs, wantedOutputs);
}

void FunctionTable::define(const std::string& name, HostBody body)
{
    if (body != nullptr)
        std::swap(functions_[name], body);
    else
        functions_.erase(name);
}

} // namespace tracery::embedded
