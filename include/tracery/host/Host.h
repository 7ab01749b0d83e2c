#pragma once

#include <tracery/export.h>

namespace tracery {

namespace hostobj {

/// The host's class registry.
class TRACERY_EXPORT ObjectSystem {
public:
    virtual ~ObjectSystem();
    /// Whether a class of this dotted name is known.
    virtual bool hasClass(const char* dottedName) const = 0;
};

} // namespace hostobj

/// All that the library asks of its surroundings. Main thread only.
class TRACERY_EXPORT Host {
public:
    virtual ~Host();
    virtual hostobj::ObjectSystem& objects() = 0;

    /// The attached host, or null when there is none. The C++ classes work without one: look-ups then find nothing.
    static Host* current() noexcept;
};

/// Attaches a host for its own lifetime; the one before comes back afterwards. Scopes end in reverse order.
class TRACERY_EXPORT HostScope {
public:
    explicit HostScope(Host& host) noexcept;
    ~HostScope();
    HostScope(const HostScope&) = delete;
    HostScope& operator=(const HostScope&) = delete;

private:
    Host* previous_;
};

} // namespace tracery
