#pragma once

#include <stdexcept>

namespace scope {

/// What is wrong with the command line or its values, in one line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace scope
