#pragma once

#include <tracery/host/Host.h>
#include <tracery/host/Module.h>

#include <string>

namespace tracery::embedded {

class EmbeddedHost;
class FunctionTable;

/// A module in a host; see EmbeddedHost::loadModule, which makes it.
///
/// Its code is never unloaded, so objects, class infos and threads of the module may outlive it and the host.
class Module {
public:
    /// Terminates the module unless that is done; what it reports then is dropped.
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    /// The path it was loaded from, and the name and version in its table.
    const std::string& getPath() const noexcept { return path_; }
    std::string getName() const { return table_->name; }
    std::string getVersion() const { return table_->version; }

    /// Ends the use of the module, once: its functions are unknown then, save those that the program has defined anew,
    /// and the classes of its packages too. Objects that live go on. throws  what the module reports; it is terminated
    /// then
    void terminate();
    /// Whether its use has ended.
    bool isTerminated() const noexcept { return terminated_; }

private:
    friend EmbeddedHost;
    /// Loads and initialises. throws  as EmbeddedHost::loadModule
    Module(EmbeddedHost& host, FunctionTable& functions, std::string path, const std::string& name);
    void start(void (*initialize)());

    EmbeddedHost& host_;
    FunctionTable& functions_;
    std::string path_;
    const ModuleTable* table_ = nullptr;
    void (*terminate_)() = nullptr;
    bool terminated_ = false;
};

} // namespace tracery::embedded
