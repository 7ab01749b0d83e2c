#pragma once

#include <tracery/export.h>
#include <tracery/host/DataType.h>
#include <tracery/host/HostArray.h>
#include <tracery/host/HostObject.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tracery::hostobj {

/// Who may read, write or call a member. The codes are those of the host's interface; on the write side of a property
/// private_ makes it read-only.
enum class Access : std::int32_t { public_ = 0, protected_ = 1, private_ = 2 };

/// Arguments of a call, the object first. They belong to the caller and are only read.
using HostInputs = std::span<const HostArray* const>;
/// Results of a call; they belong to the caller. There may be more or fewer than it wanted.
using HostOutputs = std::vector<HostArrayPtr>;

/// A property of a published class.
class TRACERY_EXPORT COSPropInfo {
public:
    virtual ~COSPropInfo();
    /// The name in code.
    virtual COSNameID getName() const = 0;
    /// The name for people.
    virtual std::string getLabel() const;
    /// What values may be.
    virtual COSDataTypePtr getDataType() const = 0;
    /// Who may read and who may write it; public_ by default.
    virtual Access getGetAccess() const;
    virtual Access getSetAccess() const;
    /// A word of flags whose meaning is the host's.
    virtual std::uint32_t getAttributes() const;
    /// A line for people; empty by default.
    virtual std::string getDescription() const;
    /// A new array, or null when there is no value. The host hands it back to destroyValue when it is done with it, or
    /// keeps it for good. throws  InvalidObject, and what the library object reports
    virtual HostArray* getValue(const COSInterfacePtr& object) const = 0;
    /// throws  InvalidObject, InvalidArgumentType, and what the library object reports; the property then is as it was.
    ///         What host code reports that reacts to the change comes after it: the property has changed then
    virtual void setValue(const COSInterfacePtr& object, const HostArray* value) const = 0;
    /// Takes back what getValue gave.
    virtual void destroyValue(HostArray* value) const noexcept;
};

/// A result of a method: its name and its type.
struct COSMethodOutput {
    /// The result's name in code, and what it may be.
    std::string name;
    COSDataTypePtr type;
};

class COSMethodSignature;
using COSMethodSignaturePtr = std::shared_ptr<const COSMethodSignature>;

/// The types of a method's arguments and results, for one way of calling it.
class TRACERY_EXPORT COSMethodSignature {
public:
    /// object    type of the object, the first argument; null for a static method
    /// inputs    types of the further arguments; the last `optional` of them may be left out
    static COSMethodSignaturePtr createMethodSignature(COSDataTypePtr object, std::vector<COSDataTypePtr> inputs,
                                                       std::vector<COSMethodOutput> outputs, std::size_t optional = 0);

    /// What createMethodSignature was given.
    const COSDataTypePtr& getObject() const noexcept { return object_; }
    const std::vector<COSDataTypePtr>& getInputs() const noexcept { return inputs_; }
    const std::vector<COSMethodOutput>& getOutputs() const noexcept { return outputs_; }
    std::size_t getOptional() const noexcept { return optional_; }

private:
    COSMethodSignature() = default;
    COSDataTypePtr object_;
    std::vector<COSDataTypePtr> inputs_;
    std::vector<COSMethodOutput> outputs_;
    std::size_t optional_ = 0;
};

/// A method of a published class, or one that its subclasses are to have.
class TRACERY_EXPORT COSMethodInfo {
public:
    virtual ~COSMethodInfo();
    /// The name, and the types; without a signature the method states none. Of several signatures the first.
    virtual COSNameID getName() const = 0;
    virtual COSMethodSignaturePtr getSignature() const = 0;
    /// All ways of calling the method: their numbers of arguments tell them apart. The one signature, or none, by
    /// default.
    virtual std::vector<COSMethodSignaturePtr> getSignatures() const;
    /// Who may call it; public_ by default.
    virtual Access getAccess() const;
    /// Whether subclasses must supply the method.
    virtual bool isAbstract() const;
    /// Whether subclasses may supply the method: the library calls it when they do, and has no body for it (see
    /// ObjectSystem::hasMethod). A host may also take invoke for a body that does nothing, or says what is missing.
    virtual bool isOptional() const;
    /// A line for people, such as when the library calls the method; empty by default.
    virtual std::string getDescription() const;
    /// throws  InvalidNumberOfArguments, InvalidObject, InvalidArgumentType, and what the library object reports
    virtual HostOutputs invoke(HostInputs inputs, std::size_t wantedOutputs) const = 0;
};

/// Where a class info says what its class is made of. The host implements it.
class TRACERY_EXPORT ClassDefinition {
public:
    virtual ~ClassDefinition();
    /// Says it of the class that is being defined; members come in the order in which they are shown.
    virtual void superclass(const COSNameID& dottedName) = 0;
    virtual void addProperty(std::unique_ptr<const COSPropInfo> property) = 0;
    virtual void addMethod(std::unique_ptr<const COSMethodInfo> method) = 0;
    /// A method under the class's short name. The host calls it after the payload exists, with the new object and the
    /// constructor's inputs.
    virtual void addConstructor(std::unique_ptr<const COSMethodInfo> constructor) = 0;
    /// Names a method that the class has of the host.
    virtual void addInheritedMethod(const COSNameID& name) = 0;
};

/// A published class.
class TRACERY_EXPORT COSClassInfo {
public:
    virtual ~COSClassInfo();
    /// The short name.
    virtual COSNameID getName() const = 0;
    /// Tells the definition the superclass and all members of the class.
    virtual void defineClass(ClassDefinition& definition) const = 0;
    /// The payload of a new object `self`, which is of this class or of a host class that inherits from it.
    virtual std::unique_ptr<InstancePayload> createInstance(const COSInterfacePtr& self) const = 0;
    /// Takes back what createInstance gave.
    virtual void destroyInstance(std::unique_ptr<InstancePayload> payload) const noexcept;
    /// Only subclasses have objects.
    virtual bool isAbstract() const;
    /// Left out of lists for people.
    virtual bool isHidden() const;
};

class COSPackageInfo;

/// Somebody who uses packages of a host.
class TRACERY_EXPORT COSClient {
public:
    virtual ~COSClient();
    /// Somebody who used an object in the client's name does so no more. Does nothing by default: references to objects
    /// are counted. What is thrown goes no further.
    virtual void release(const COSInterfacePtr& object);
};

/// A package known to the host. The host implements it.
class TRACERY_EXPORT COSPackage {
public:
    virtual ~COSPackage();
    /// The dotted name.
    virtual COSNameID getName() const = 0;
    /// Null is ignored. throws  DuplicateClass when the package has one of this name
    virtual void addClass(std::unique_ptr<const COSClassInfo> info) = 0;
    /// The package inside this one; made when there is none. Lives as long as the host.
    virtual COSPackage& findOrCreatePackage(const COSNameID& shortName) = 0;
    /// Takes back a class that addClass has taken, because one after it failed; other names are ignored. A host that
    /// cannot do so leaves it, as by default: the next registration will not add it again.
    virtual void removeClass(const COSNameID& shortName);
    /// The client takes leave of the package. With the public client the host gives the package up: neither it nor its
    /// published classes are found any more, and there will be no new objects of them; those that live go on, with
    /// their classes. It can be added again.
    virtual void removeClient(COSClient& client) = 0;

    /// Makes a package known to the attached host. throws  NoHost, DuplicateClass
    static void addPackage(std::unique_ptr<const COSPackageInfo> info);
    /// A package of the attached host; null when the host does not have it or has given it up, or there is no host.
    static COSPackage* getPackageInterface(const COSNameID& dottedName);
};

/// A package to publish.
class TRACERY_EXPORT COSPackageInfo {
public:
    virtual ~COSPackageInfo();
    /// The short name of the package, and its classes, added when the host has made it.
    virtual COSNameID getName() const = 0;
    virtual void addClasses(COSPackage& package) const = 0;
};

} // namespace tracery::hostobj
