#pragma once

#include <tracery/host/Error.h>

/// The failures that the embedded host reports itself, beside those of the library that fit (InvalidObject,
/// DuplicateClass, ReadOnlyProperty, InvalidNumberOfArguments, InvalidArgumentType).
namespace tracery::embedded::errors {
using namespace tracery::errors;

/// The component of the embedded host's own failures.
inline constexpr const char* kComponent = "tracery:embedded";

// clang-format off
inline constexpr ErrorKind AbstractClass{kComponent, "AbstractClass", "an abstract class has no objects"};
inline constexpr ErrorKind AccessDenied{kComponent, "AccessDenied", "the member is not public"};
inline constexpr ErrorKind DuplicateFunction{kComponent, "DuplicateFunction", "the host has a function of this name already"};
inline constexpr ErrorKind DuplicateMember{kComponent, "DuplicateMember", "the class has a member of this name already"};
inline constexpr ErrorKind DuplicateModule{kComponent, "DuplicateModule", "the host has a module of this name already"};
inline constexpr ErrorKind InheritanceCycle{kComponent, "InheritanceCycle", "the class inherits from itself"};
inline constexpr ErrorKind InvalidModule{kComponent, "InvalidModule", "the library is no module of this name"};
inline constexpr ErrorKind InvalidName{kComponent, "InvalidName", "names are words of letters, digits and underscores, joined by dots"};
inline constexpr ErrorKind MissingMethod{kComponent, "MissingMethod", "the class declares the method and has no body for it"};
inline constexpr ErrorKind ModuleNotFound{kComponent, "ModuleNotFound", "the library cannot be loaded"};
inline constexpr ErrorKind ModuleVersion{kComponent, "ModuleVersion", "the module was built with another version of the seam"};
inline constexpr ErrorKind UnknownClass{kComponent, "UnknownClass", "there is no such class"};
inline constexpr ErrorKind UnknownFunction{kComponent, "UnknownFunction", "there is no such function"};
inline constexpr ErrorKind UnknownMethod{kComponent, "UnknownMethod", "the class has no such method"};
inline constexpr ErrorKind UnknownProperty{kComponent, "UnknownProperty", "the class has no such property"};
// clang-format on

} // namespace tracery::embedded::errors
