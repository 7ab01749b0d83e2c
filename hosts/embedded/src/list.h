#pragma once

#include "ClassRecord.h"

#include <tracery/embedded/ClassListing.h>

namespace tracery::embedded {

/// Asks the descriptors of a class what they are.
ClassListing listClass(const ClassRecord& cls);

} // namespace tracery::embedded
