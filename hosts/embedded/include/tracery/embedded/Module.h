#pragma once

#include <tracery/host/Host.h>
#include <tracery/host/Module.h>

#include <string>

namespace tracery::embedded {

class EmbeddedHost;

/// A module in a host; see EmbeddedHost::loadModule, which makes it.
///
/// Its code is never unloaded, so objects, class infos and threads of the module may outlive it and the host.
class Module {
public:
    /// Loads and initialises. throws  as EmbeddedHost::loadModule
    Module(EmbeddedHost& host, std::string path, const std::string& name);
    /// Terminates the module unless that is done; what it reports then is dropped.
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    const std::string& getPath() const noexcept { return path_; }
    std::string getName() const { return table_->name; }
    std::string getVersion() const { return table_->version; }

    /// Ends the use of the module, once: its functions are unknown then, and the classes of its packages too. Objects
    /// that live go on. throws  what the module reports; it is terminated then
    void terminate();
    bool isTerminated() const noexcept { return terminated_; }

private:
    void defineFunctions() const;

    EmbeddedHost& host_;
    std::string path_;
    const ModuleTable* table_ = nullptr;
    void (*terminate_)() = nullptr;
    bool terminated_ = false;
};

} // namespace tracery::embedded
