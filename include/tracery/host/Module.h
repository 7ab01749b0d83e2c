#pragma once

#include <tracery/export.h>

#include <cstddef>
#include <cstdint>

/// How a host loads modules, of which this library is one.
///
/// A module NAME is a shared library with three functions of C linkage, all called on the main thread:
///     const tracery::ModuleTable* QueryVTFcnTable_NAME();
///     void VTInitialize_NAME();    // publishes the module's classes to the host
///     void VTTerminate_NAME();     // ends their use
/// A host asks for the table, compares its seam version with its own, attaches itself through it, makes the table's
/// functions known to its language, and initialises. In the end it terminates the module and detaches itself. What
/// goes wrong is thrown: the library's own failures as an Error, what the host throws as it is. The host keeps the
/// library's code for as long as the process lives: classes, objects and threads of the module are made of it.

namespace tracery {

class Host;
class HostArray;

/// Version of the seam, the headers in tracery/host. A module and a host work together when they were built with the
/// same one, and with compilers of one ABI.
inline constexpr std::uint32_t kSeamVersion = 2;

/// A function of a module that the host offers to its language.
/// outputs  one array or null for each result wanted, at least one; filled with arrays that the caller then owns
/// inputs   belong to the caller; null where it passed nothing
using ModuleFunctionBody = void (*)(int numOutputs, HostArray** outputs, int numInputs, const HostArray** inputs);

/// A function by the name under which the host makes it known.
struct ModuleFunction {
    /// The name, and what is called.
    const char* name;
    ModuleFunctionBody body;
};

/// What a module tells its host. Lives as long as the module.
struct ModuleTable {
    std::uint32_t seamVersion; ///< first in every version: the rest is read only when it is the host's own
    /// NAME of the entry points, and four numbers joined by dots.
    const char* name;
    const char* version;
    /// The module uses this host from attach until it is detached.
    void (*attach)(Host* host);
    void (*detach)(Host* host);
    /// The functions for the host's language.
    const ModuleFunction* functions;
    std::size_t numberOfFunctions;
};

/// Whether blocks use the line animator: the host's feature "TimeScopeBlockUsesSLA", true at first.
TRACERY_EXPORT bool timeScopeBlockUsesSLA() noexcept;

} // namespace tracery

extern "C" {

/// Publishes the classes (publishClasses) and registers the features, once a host, and arms the draw scheduler, which
/// listens to the host's commits: the host has the roles objects, features and graphics. What failed is tried again by
/// the next call. Does nothing without a host, and can be called again when there is one.
/// throws  DuplicateClass when the host has the classes from elsewhere, and what the host reports
TRACERY_EXPORT void VTInitialize_tracery();
/// Once a host, after VTInitialize_tracery: takes leave of the package "tracery" in the name of the host's public
/// client; when that fails, the next call tries again. A draw scheduler that listened to this host goes on with another that
/// uses the module, or is shut down. Without a host attached it is shut down unless one that lives uses it.
TRACERY_EXPORT void VTTerminate_tracery();
/// The function of the table is SetScopeRefreshRateImpl.
TRACERY_EXPORT const tracery::ModuleTable* QueryVTFcnTable_tracery();
/// Sets the scopes' refresh interval to the first element of a single input, in seconds, and restarts the draw
/// scheduler. With more inputs or none, and with one that is no double array or is empty, the interval is 0.05 s. No
/// results.
TRACERY_EXPORT void SetScopeRefreshRateImpl(int numOutputs, tracery::HostArray** outputs, int numInputs,
                                            const tracery::HostArray** inputs);

/// Four numbers joined by dots.
TRACERY_EXPORT extern const char* const tracery_version;
/// Such as "Mar 09 2026"; of the time that SOURCE_DATE_EPOCH names, if it was set when the build was configured.
TRACERY_EXPORT extern const char* const tracery_build_date;
/// The module's folder below the host's root.
TRACERY_EXPORT extern const char* const tracery_relative_path;
}
