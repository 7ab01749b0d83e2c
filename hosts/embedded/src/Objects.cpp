#include "Objects.h"

#include "HostMembers.h"
#include "Object.h"
#include "list.h"

#include <tracery/embedded/errors.h>

#include <utility>

namespace tracery::embedded {

using namespace hostobj;

namespace {

constexpr const char* kHandle = "handle";
constexpr const char* kDelete = "delete";

[[noreturn]] void refuse(const ErrorKind& kind, const ClassRecord& cls, const std::string& member)
{
    throw Error(kind, cls.name + '.' + member + ": " + kind.text);
}

/// Calls a method with the object before the further inputs.
HostOutputs invokeOn(const HostObjectRef& object, const COSMethodInfo& method, HostInputs further, std::size_t wanted)
{
    const HostArrayPtr self = omCreateScalar(object);
    std::vector<const HostArray*> inputs{self.get()};
    inputs.insert(inputs.end(), further.begin(), further.end());
    return method.invoke(inputs, wanted);
}

} // namespace

Objects::Objects()
{
    const auto body = [this](HostInputs inputs, std::size_t) {
        remove(omGetArrayElement(inputs.front(), 0));
        return HostOutputs();
    };
    HostClass handle{.name = kHandle, .superclass = "", .isAbstract = true};
    handle.methods.push_back({.name = kDelete, .body = body});
    define(std::move(handle));
}

COSClassPtr Objects::findClass(const COSNameID& dottedName) const { return classes_.find(dottedName.text()); }

void Objects::addPackage(std::unique_ptr<const COSPackageInfo> info)
{
    if (info != nullptr)
        classes_.addPackage(*info);
}

HostOutputs Objects::callMethod(const HostObjectRef& object, const COSNameID& method, HostInputs inputs,
                                std::size_t wantedOutputs)
{
    return call(object, method.text(), inputs, wantedOutputs, Caller::inside);
}

HostOutputs Objects::callStaticMethod(const COSNameID& dottedClassName, const COSNameID& method, HostInputs inputs,
                                      std::size_t wantedOutputs)
{
    return callStatic(dottedClassName.text(), method.text(), inputs, wantedOutputs, Caller::inside);
}

bool Objects::hasMethod(const HostObjectRef& object, const COSNameID& method) const
{
    return table_->isAlive(object) && table_->require(object)->getClass().findMethod(method.text()) != nullptr;
}

HostArrayPtr Objects::getProperty(const HostObjectRef& object, const COSNameID& property)
{
    return get(object, property.text(), Caller::inside);
}

HostObjectRef Objects::objectOfHandle(double handle) { return table_->ofNumber(handle); }

HostObjectRef Objects::wrapPayload(const COSNameID& dottedClassName, std::unique_ptr<InstancePayload> payload)
{
    const ClassPtr cls = classes_.use(dottedClassName.text());
    const auto info = cls->nearestInfo();
    if (payload == nullptr || info == nullptr)
        throw Error(errors::InvalidObject, "objects of " + cls->name + " cannot be made around a library object");
    const auto object = table_->create(cls);
    object->attach(info, std::move(payload));
    return object;
}

void Objects::define(HostClass definition) { classes_.add(makeRecord(std::move(definition))); }

std::vector<ClassListing> Objects::list() const
{
    std::vector<ClassListing> listings;
    for (const auto& cls : classes_.all())
        listings.push_back(listClass(*cls));
    return listings;
}

HostObjectRef Objects::construct(const std::string& dottedClass, HostInputs inputs)
{
    const ClassPtr cls = classes_.use(dottedClass);
    cls->requireConstructible();
    const auto constructor = cls->nearestConstructor();
    if (constructor == nullptr && !inputs.empty())
        throw Error(errors::InvalidNumberOfArguments, cls->name + " has no constructor to take inputs");
    const auto object = table_->create(cls);
    try {
        if (const auto info = cls->nearestInfo())
            object->attach(info, info->createInstance(object));
        if (constructor != nullptr)
            invokeOn(object, *constructor, inputs, 0);
    } catch (...) {
        object->remove();
        throw;
    }
    return object;
}

void Objects::remove(const HostObjectRef& object)
{
    if (!table_->isDeleted(object))
        table_->require(object)->remove();
}

HostArrayPtr Objects::get(const HostObjectRef& object, const std::string& property, Caller caller)
{
    const auto own = table_->require(object);
    const auto found = requireProperty(own->getClass(), property);
    if (caller == Caller::outside && found->getGetAccess() != Access::public_)
        refuse(errors::AccessDenied, own->getClass(), property);
    return HostArrayPtr(found->getValue(own));
}

void Objects::set(const HostObjectRef& object, const std::string& property, const HostArray* value, Caller caller)
{
    const auto own = table_->require(object);
    const auto found = requireProperty(own->getClass(), property);
    const Access access = found->getSetAccess();
    if (caller == Caller::outside && access != Access::public_)
        refuse(access == Access::private_ ? errors::ReadOnlyProperty : errors::AccessDenied, own->getClass(), property);
    found->setValue(own, value);
}

HostOutputs Objects::call(HostObjectRef object, const std::string& method, HostInputs further, std::size_t wanted,
                          Caller caller)
{
    if (method == kDelete && table_->isDeleted(object) && object->isA(kHandle))
        return {};
    const auto own = table_->require(object);
    const auto found = requireMethod(own->getClass(), method, caller);
    return takesObject(*found) ? invokeOn(own, *found, further, wanted) : found->invoke(further, wanted);
}

HostOutputs Objects::callStatic(const std::string& dottedClass, const std::string& method, HostInputs inputs,
                                std::size_t wanted, Caller caller)
{
    const ClassPtr cls = classes_.use(dottedClass);
    const auto found = requireMethod(*cls, method, caller);
    if (!isStatic(*found))
        throw Error(errors::UnknownMethod, cls->name + '.' + method + " needs an object");
    return found->invoke(inputs, wanted);
}

void Objects::close()
{
    table_->close();
    classes_.clear();
}

ClassRecord::PropertyPtr Objects::requireProperty(const ClassRecord& cls, const std::string& property) const
{
    auto found = cls.findProperty(property);
    if (found == nullptr)
        refuse(errors::UnknownProperty, cls, property);
    return found;
}

ClassRecord::MethodPtr Objects::requireMethod(const ClassRecord& cls, const std::string& method, Caller caller) const
{
    auto found = cls.findMethod(method);
    if (found == nullptr && caller == Caller::inside)
        found = cls.findConstructor(method);
    if (found == nullptr)
        refuse(cls.declares(method) ? errors::MissingMethod : errors::UnknownMethod, cls, method);
    if (caller == Caller::outside && found->getAccess() != Access::public_)
        refuse(errors::AccessDenied, cls, method);
    return found;
}

} // namespace tracery::embedded
