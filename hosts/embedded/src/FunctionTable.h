#pragma once

#include <tracery/embedded/HostClass.h>
#include <tracery/host/Services.h>

#include <map>
#include <string>

namespace tracery::embedded {

/// Functions by dotted name.
class FunctionTable final : public Functions {
public:
    HostOutputs call(const std::string& dottedName, HostInputs inputs, std::size_t wantedOutputs) override;
    void define(const std::string& name, HostBody body);

private:
    std::map<std::string, HostBody> functions_;
};

} // namespace tracery::embedded
