// Work of the library that is measured. No guard: Subjects.cpp is compiled twice, against the library and against a build
// of its sources with plain kernels, in which `tracery` is called `tracery_plain`. PlainSubjects.h declares that one.

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace tracery::bench {

/// A detector by its name, such as "edge" or "window either", at work on (time, value) pairs.
std::function<void()> detection(const std::string& name, std::span<const double> pairs);

/// Batch thinning of a line of (time, value) pairs, which is copied; the result is released within the call.
std::function<void()> thinning(std::span<const double> pairs, double columnsPerSecond);

} // namespace tracery::bench
