#pragma once

#include <tracery/host/ClassInfo.h>
#include <tracery/host/DataType.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tracery::embedded {

/// A property, as its COSPropInfo tells.
struct PropertyListing {
    /// The name in code, and for people.
    std::string name;
    std::string label;
    /// As COSDataType::getText.
    std::string type;
    hostobj::TypedEnumStringType::Entries enumeration; ///< empty unless the type is an enumeration
    /// As COSPropInfo.
    hostobj::Access getAccess = hostobj::Access::public_;
    hostobj::Access setAccess = hostobj::Access::public_;
    std::uint32_t attributes = 0;
    std::string description;
};

/// A result of a method.
struct OutputListing {
    /// Its name, and its type as COSDataType::getText.
    std::string name;
    std::string type;
};

/// One way of calling a method, as a COSMethodSignature tells.
struct SignatureListing {
    std::vector<std::string> inputs; ///< types of those after the object
    std::size_t optional = 0;        ///< how many of the last inputs may be left out
    /// Results, in their order.
    std::vector<OutputListing> outputs;
};

/// A method or a constructor, as its COSMethodInfo tells.
struct MethodListing {
    /// As COSMethodInfo.
    std::string name;
    hostobj::Access access = hostobj::Access::public_;
    bool isAbstract = false;
    bool isOptional = false;
    bool isStatic = false;
    /// None for methods that state no types, as those of classes defined in the host.
    std::vector<SignatureListing> signatures;
    /// As COSMethodInfo.
    std::string description;
};

/// What a class is made of: its own members, not those of its ancestors, in the order they were added.
struct ClassListing {
    std::string name;       ///< with the packages
    std::string superclass; ///< empty for none
    /// As COSClassInfo.
    bool isAbstract = false;
    bool isHidden = false;
    bool isPublished = false; ///< by the library; else defined in the host
    /// The members; none for a class without a constructor of its own.
    std::optional<MethodListing> constructor;
    std::vector<PropertyListing> properties;
    std::vector<MethodListing> methods;
    std::vector<std::string> inheritedMethods; ///< named as methods that the class has of the host
};

/// The class as a table for people, lines ended by '\n'.
std::string formatClass(const ClassListing& listing);

} // namespace tracery::embedded
