#pragma once

#include <stdexcept>

namespace tracery {

/// The errors of standard containers, in the words that hosts show.
[[noreturn]] inline void throwInvalidSubscript() { throw std::out_of_range("invalid vector<T> subscript"); }
[[noreturn]] inline void throwTooLong() { throw std::length_error("vector<T> too long"); }

} // namespace tracery
