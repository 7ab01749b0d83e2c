#pragma once

#include <tracery/export.h>
#include <tracery/host/ObjectSystem.h>

namespace tracery {

/// Makes the published classes known to a host: the package "tracery", then the built-in base classes in
/// "veltrashared.scopes.visual". Once a host; a program that loads the library as a module has it done by Module.h.
///
/// All or none: when the host fails in between, its packages are asked to take back what they have, and "tracery" is
/// given up. The next call begins anew; what the attached host could not take back is not added twice.
/// throws  DuplicateClass when the host has one of the classes from elsewhere, and what the host reports
TRACERY_EXPORT void publishClasses(hostobj::ObjectSystem& objects);

} // namespace tracery
