// Work of the library that is measured. No guard: Subjects.cpp is compiled twice, against the library and against a build
// of its sources with plain kernels, in which `tracery` is called `tracery_plain`. PlainSubjects.h declares that one.

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace tracery::bench {

/// A detector by its name, such as "edge" or "window either", at work on (time, value) pairs.
std::function<void()> detection(const std::string& name, std::span<const double> pairs);

} // namespace tracery::bench
