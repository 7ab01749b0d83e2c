#pragma once

#include <tracery/ScopesVisualInit.h>
#include <tracery/embedded/EmbeddedHost.h>

#include <chrono>
#include <optional>
#include <string>

namespace scope {

/// The host of a command, attached for its own lifetime, with the library as its module: loaded from its file and
/// started through its entry points, as any host would do it. Main thread only.
class ScopeHost {
public:
    /// Loads the very library that the program is linked with.
    ScopeHost();
    /// Loads a module of any name from a file.
    /// throws  UsageError, one line with the path: no such file, not a module, of another version of the seam
    explicit ScopeHost(const std::string& module);

    operator tracery::embedded::EmbeddedHost&() { return host_; }
    tracery::embedded::EmbeddedHost* operator->() { return &host_; }

    /// Sets the period of redraws through the module's function, which also begins a first period.
    void setRefreshPeriod(double seconds);
    /// Idle time of the host: has the library load what a first display needs. The first call queues the work.
    /// Returns whether some is left.
    bool idle(std::chrono::microseconds slice);

private:
    tracery::embedded::EmbeddedHost host_;
    tracery::HostScope attached_{host_};
    std::optional<tracery::ScopesVisualInit> warmUp_;
};

} // namespace scope
