#pragma once

#include <tracery/export.h>
#include <tracery/host/ObjectSystem.h>

namespace tracery {

/// Makes the published classes known to a host: the package "tracery", then the built-in base classes in
/// "veltrashared.scopes.visual". Once a host; a program that loads the library as a module has it done by Module.h.
/// throws  DuplicateClass
TRACERY_EXPORT void publishClasses(hostobj::ObjectSystem& objects);

} // namespace tracery
