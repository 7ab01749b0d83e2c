#pragma once

#include <tracery/export.h>
#include <tracery/host/ObjectSystem.h>
#include <tracery/host/Services.h>
#include <tracery/host/Tasks.h>

#include <memory>
#include <string>
#include <vector>

namespace tracery {

/// All that the library asks of its surroundings. Main thread only. A change here or in a header beside it that breaks
/// what was built before takes a new kSeamVersion (Module.h).
///
/// What a host throws, of any type, passes through the library as it is and leaves it in order; a plain std::bad_alloc
/// alone becomes an OutOfMemory. Only warm-up (ScopesVisualInitTask) and the end of a line drop it.
///
/// With no host attached the C++ classes work all the same: look-ups find nothing, features are not registered,
/// commits do nothing, and what truly needs the host, such as adding a package, throws NoHost.
class TRACERY_EXPORT Host {
public:
    Host();
    virtual ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// The roles of a host; references stay valid while it lives.
    virtual hostobj::ObjectSystem& objects() = 0;
    virtual Features& features() = 0;
    virtual Graphics& graphics() = 0;
    virtual Console& console() = 0;
    virtual Functions& functions() = 0;
    virtual Performance::CooperativeTaskManager::TaskManager& tasks() = 0;
    /// Dotted names of the classes that a warm-up task of this name is to load; none by default.
    virtual std::vector<std::string> warmUpClasses(const std::string& taskName);

    /// Expires with the host, and so tells it from a later one at its address. What lock() gives does not keep the
    /// host.
    std::weak_ptr<Host> watch() const noexcept { return self_; }

    /// Whether it is attached, by a HostScope or for longer, also when it is not the current one.
    bool isAttached() const noexcept;

    /// Attaches a host until it is detached as often, or destroyed; for loaders of modules. Programs use a HostScope.
    static void attach(Host& host) noexcept;
    static void detach(Host& host) noexcept;
    /// The host of the innermost HostScope whose host lives; outside all scopes the last one that was attached and is
    /// not detached; null when there is none.
    static Host* current() noexcept;
    /// throws  NoHost
    static Host& require();

private:
    void unlink() noexcept;
    std::shared_ptr<Host> self_;
    unsigned attachments_ = 0;
    Host* attachedBefore_ = nullptr;
};

/// Attaches a host for its own lifetime, or that of the host; the one before comes back afterwards. Scopes end in
/// reverse order.
class TRACERY_EXPORT HostScope {
public:
    /// Attaches the host.
    explicit HostScope(Host& host) noexcept;
    ~HostScope();
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;

private:
    friend Host;
    Host* host_; ///< null when it is gone
    HostScope* outer_;
};

} // namespace tracery
