#pragma once

#include <tracery/host/ClassInfo.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tracery::embedded {

using hostobj::Access;
using hostobj::HostInputs;
using hostobj::HostOutputs;

/// The body of a method, a constructor or a function. Inputs belong to the caller and may be null where it passed null;
/// those of a method begin with its object, as an object array of one element.
using HostBody = std::function<HostOutputs(HostInputs inputs, std::size_t wantedOutputs)>;

/// A property of a class defined in the host. Each object has a value of its own.
struct HostProperty {
    /// The member's name, a word of letters, digits and underscores.
    std::string name = {};
    std::string type = "any";                    ///< as COSDataType::fromString; what is set is converted to it
    std::shared_ptr<const HostArray> value = {}; ///< until one is set; null for no value
    /// Who may read and write it, and a line for people.
    Access getAccess = Access::public_;
    Access setAccess = Access::public_; ///< private_ makes the property read-only
    std::string description = {};
};

/// A method of a class defined in the host.
struct HostMethod {
    /// The member's name, a word of letters, digits and underscores.
    std::string name = {};
    HostBody body = {}; ///< without one the method is abstract: subclasses supply it
    /// Who may call it.
    Access access = Access::public_;
    bool isStatic = false; ///< called without an object
};

/// A class defined in the host. Where it inherits from a published class, its objects have a library object of the
/// nearest published ancestor, and all members of the ancestors.
struct HostClass {
    std::string name = {};             ///< with the packages, such as "myscope.Display"
    std::string superclass = "handle"; ///< looked up when the class is first used; empty for none
    /// Only subclasses have objects.
    bool isAbstract = false;
    /// Called with the new object and the inputs, in place of the constructors of the ancestors (those can be called
    /// with callMethod, under their classes' short names). Without one, that of the nearest ancestor is called.
    HostBody constructor = {};
    /// Members, added to those of the ancestors.
    std::vector<HostProperty> properties = {};
    std::vector<HostMethod> methods = {};
};

} // namespace tracery::embedded
