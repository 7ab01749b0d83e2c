#pragma once

#include <tracery/export.h>
#include <tracery/host/ClassInfo.h>
#include <tracery/host/HostArray.h>
#include <tracery/host/HostObject.h>

#include <cstdint>
#include <memory>

namespace tracery::hostobj {

/// A class known to the host.
class TRACERY_EXPORT COSClass {
public:
    virtual ~COSClass();
    /// The dotted name.
    virtual COSNameID getName() const = 0;
};
using COSClassPtr = std::shared_ptr<const COSClass>;

/// The host's classes and objects.
class TRACERY_EXPORT ObjectSystem {
public:
    virtual ~ObjectSystem();

    /// Null when there is no class of this dotted name.
    virtual COSClassPtr findClass(const COSNameID& dottedName) const = 0;
    /// The outermost package, of no name.
    virtual COSPackage& rootPackage() = 0;
    /// Makes a package of what the info says. Null is ignored. throws  DuplicateClass
    virtual void addPackage(std::unique_ptr<const COSPackageInfo> info) = 0;
    /// Null when there is no package of this name, or it was given up.
    virtual COSPackage* findPackage(const COSNameID& dottedName) = 0;
    /// The client that stands for all users of the host.
    virtual COSClient& publicClient() = 0;

    /// Calls a method of an object, protected ones too. `inputs` are those after the object. throws  what the host and
    /// the method report
    virtual HostOutputs callMethod(const COSInterfacePtr& object, const COSNameID& method, HostInputs inputs,
                                   std::size_t wantedOutputs) = 0;
    /// Calls a static method of a class.
    virtual HostOutputs callStaticMethod(const COSNameID& dottedClassName, const COSNameID& method, HostInputs inputs,
                                         std::size_t wantedOutputs) = 0;
    /// Whether the object's class has a body for this method.
    virtual bool hasMethod(const COSInterfacePtr& object, const COSNameID& method) const = 0;
    /// The value of a property; null when it has none. throws  what the host reports, as for an unknown property
    virtual HostArrayPtr getProperty(const COSInterfacePtr& object, const COSNameID& property) = 0;
    /// The object that a numeric handle stands for; null when there is none.
    virtual COSInterfacePtr objectOfHandle(double handle) = 0;
    /// A new object around a library object that exists already. throws  what the host reports
    virtual COSInterfacePtr wrapPayload(const COSNameID& dottedClassName, std::unique_ptr<InstancePayload> payload) = 0;
};

/// The public client of the attached host. throws  NoHost
TRACERY_EXPORT COSClient& COSGetPublicClient();
/// Calls a method of an object at the attached host. throws  NoHost, and as ObjectSystem::callMethod
TRACERY_EXPORT HostOutputs omCallMethod(const COSInterfacePtr& object, const COSNameID& method, HostInputs inputs,
                                        std::size_t wantedOutputs);
/// Calls a static method at the attached host. throws  NoHost, and as ObjectSystem::callStaticMethod
TRACERY_EXPORT HostOutputs omCallMethod(const COSNameID& dottedClassName, const COSNameID& method, HostInputs inputs,
                                        std::size_t wantedOutputs);
/// The reference at `index` of an object array; null when it is unset, outside, or no object array.
TRACERY_EXPORT COSInterfacePtr omGetArrayElement(const HostArray* array, std::uint64_t index);
/// throws  InvalidArray when `array` is no object array or the index is outside it
TRACERY_EXPORT void omSetArrayElement(HostArray* array, std::uint64_t index, COSInterfacePtr object);
/// A new 1-by-1 object array of the object's class. throws  InvalidObject for null
TRACERY_EXPORT HostArrayPtr omCreateScalar(const COSInterfacePtr& object);

} // namespace tracery::hostobj
