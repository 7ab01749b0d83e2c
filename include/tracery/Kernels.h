#pragma once

#include <tracery/export.h>

namespace tracery {

/// The form in which the library's inner loops run: "avx2", on processors that have it, or "baseline". All give the same
/// bits. The environment variable TRACERY_KERNELS may name the one that is wanted; it is read once, when the library is
/// loaded.
///
/// A word that names none is passed over by the operations, which say nothing of it, and refused here. A module's
/// initialisation asks here first, and so should programs that link the library.
/// throws  UnknownKernels, whose text lists those known to this processor. thread  any
TRACERY_EXPORT const char* kernelsInUse();

} // namespace tracery
