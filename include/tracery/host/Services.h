#pragma once

#include <tracery/export.h>
#include <tracery/host/ClassInfo.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tracery {

/// Called when a feature changes, with the new value and what was registered with it.
using FeatureCallback = void (*)(int value, void* userData);

/// The host's feature switches.
class TRACERY_EXPORT Features {
public:
    virtual ~Features();
    /// Makes a feature known; one that is known already keeps its value. `changed` may be null, else it is called at
    /// every change from now on.
    virtual void registerFeature(const std::string& name, int defaultValue, FeatureCallback changed,
                                 void* userData) = 0;
    /// Nothing for a feature that is not registered.
    virtual std::optional<int> getFeature(const std::string& name) const = 0;
};

/// Registers a feature at the attached host; does nothing without one.
TRACERY_EXPORT void svRegisterFeature(const char* name, int defaultValue, FeatureCallback changed, void* userData);

/// The host's graphics, as far as redraws need it.
class TRACERY_EXPORT Graphics {
public:
    /// Told of every commit, with its type.
    using CommitHook = std::function<void(int type)>;
    /// Keeps a hook registered; its destruction takes the hook out, also while hooks run. It may outlive the host: its
    /// destruction then does nothing.
    class TRACERY_EXPORT HookRegistration {
    public:
        virtual ~HookRegistration();
    };

    virtual ~Graphics();
    /// Calls the hook at every commit while the registration lives.
    virtual std::unique_ptr<HookRegistration> addCommitHook(CommitHook hook) = 0;
    /// Shows what has changed, and tells the hooks.
    virtual void commitDatabaseUpdates(int type) = 0;
};

/// The host's console.
class TRACERY_EXPORT Console {
public:
    virtual ~Console();
    /// Shows the text as it is; line ends are the caller's.
    virtual void print(const std::string& text) = 0;
};

/// The host's functions.
class TRACERY_EXPORT Functions {
public:
    virtual ~Functions();
    /// throws  what the host and the function report, as for an unknown name
    virtual hostobj::HostOutputs call(const std::string& dottedName, hostobj::HostInputs inputs,
                                      std::size_t wantedOutputs) = 0;
};

} // namespace tracery
