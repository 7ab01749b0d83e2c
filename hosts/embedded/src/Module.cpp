#include "FunctionTable.h"

#include <tracery/embedded/EmbeddedHost.h>
#include <tracery/embedded/Module.h>

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace tracery::embedded {

namespace {

void* open(const std::string& path)
{
    if (path.empty()) // would be the program itself
        throw Error(errors::ModuleNotFound, "the path of the module is empty");
    if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
        return library;
    const char* reason = dlerror();
    throw Error(errors::ModuleNotFound,
                path + " cannot be loaded: " + (reason != nullptr ? reason : "no reason given"));
}

/// Whether the symbol is of the library itself, not of one that it is linked with.
bool isOf(void* library, void* symbol)
{
    const link_map* map = nullptr;
    Dl_info info{};
    return dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 && dladdr(symbol, &info) != 0 &&
           reinterpret_cast<std::uintptr_t>(info.dli_fbase) == map->l_addr;
}

template <class Function>
Function* resolve(void* library, const std::string& path, const std::string& symbol)
{
    void* found = dlsym(library, symbol.c_str());
    if (found != nullptr && isOf(library, found))
        return reinterpret_cast<Function*>(found);
    throw Error(errors::InvalidModule, path + " is no such module: it has no " + symbol);
}

std::span<const ModuleFunction> functionsOf(const ModuleTable& table)
{
    return {table.functions, table.numberOfFunctions};
}

/// What is missing in a table; null when it is whole.
const char* findFault(const ModuleTable* table, const std::string& name)
{
    if (table == nullptr)
        return "it has no table";
    if (table->name == nullptr || table->name != name || table->version == nullptr)
        return "its table has another name, or no version";
    if (table->attach == nullptr || table->detach == nullptr)
        return "hosts cannot be attached to it";
    const auto isWhole = [](const ModuleFunction& f) { return f.name != nullptr && f.body != nullptr; };
    if (table->numberOfFunctions > 0 &&
        (table->functions == nullptr || !std::ranges::all_of(functionsOf(*table), isWhole)))
        return "its table lacks functions";
    return nullptr;
}

/// A module's function as the host calls its own.
HostOutputs callFunction(ModuleFunctionBody body, HostInputs inputs, std::size_t wanted)
{
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    if (inputs.size() > kMost || wanted > kMost)
        throw Error(errors::InvalidNumberOfArguments);
    std::vector<const HostArray*> given(inputs.begin(), inputs.end());
    std::vector<HostArray*> results(std::max<std::size_t>(wanted, 1));
    HostOutputs outputs(results.size());
    const auto own = [&] {
        for (std::size_t i = 0; i < results.size(); ++i)
            outputs[i].reset(results[i]);
    };
    try {
        body(static_cast<int>(wanted), results.data(), static_cast<int>(given.size()), given.data());
    } catch (...) {
        own();
        throw;
    }
    own();
    while (!outputs.empty() && outputs.back() == nullptr)
        outputs.pop_back();
    return outputs;
}

} // namespace

Module::Module(EmbeddedHost& host, FunctionTable& functions, std::string path, const std::string& name)
    : host_(host), functions_(functions), path_(std::move(path))
{
    void* library = open(path_);
    const auto query = resolve<const ModuleTable*()>(library, path_, "QueryVTFcnTable_" + name);
    const auto initialize = resolve<void()>(library, path_, "VTInitialize_" + name);
    terminate_ = resolve<void()>(library, path_, "VTTerminate_" + name);
    table_ = query();
    if (table_ != nullptr && table_->seamVersion != kSeamVersion)
        throw Error(errors::ModuleVersion, path_ + " was built with version " + std::to_string(table_->seamVersion) +
                                               " of the seam, the host with " + std::to_string(kSeamVersion));
    if (const char* fault = findFault(table_, name))
        throw Error(errors::InvalidModule, path_ + " is no such module: " + fault);
    start(initialize);
}

void Module::start(void (*initialize)())
{
    const HostScope scope(host_);
    table_->attach(&host_);
    try {
        for (const auto& [name, body] : functionsOf(*table_))
            functions_.lend(
                name,
                [body = body](HostInputs inputs, std::size_t wanted) { return callFunction(body, inputs, wanted); },
                this);
        initialize();
    } catch (...) {
        functions_.takeBack(this);
        table_->detach(&host_);
        throw;
    }
}

Module::~Module()
{
    try {
        terminate();
    } catch (...) {
    }
    table_->detach(&host_);
}

void Module::terminate()
{
    if (std::exchange(terminated_, true))
        return;
    const HostScope scope(host_);
    functions_.takeBack(this);
    terminate_();
}

} // namespace tracery::embedded
