#pragma once

#include <stdexcept>

namespace tracery {

/// The errors of standard containers, in the words that hosts show. Types of our own tell them from those of others.
struct InvalidSubscript : std::out_of_range {
    InvalidSubscript() : std::out_of_range("invalid vector<T> subscript") {}
};
struct TooLong : std::length_error {
    TooLong() : std::length_error("vector<T> too long") {}
};

} // namespace tracery
