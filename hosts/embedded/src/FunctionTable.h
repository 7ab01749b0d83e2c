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
    /// A function that `owner` takes back. throws  DuplicateFunction when there is one of this name
    void lend(const std::string& name, HostBody body, const void* owner);
    /// Forgets what this owner has lent and nobody has defined anew.
    void takeBack(const void* owner);

private:
    struct Function {
        HostBody body;
        const void* owner = nullptr; ///< null: the program
    };
    std::map<std::string, Function> functions_;
};

} // namespace tracery::embedded
