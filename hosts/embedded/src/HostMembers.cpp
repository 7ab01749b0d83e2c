#include "HostMembers.h"

#include "Object.h"

#include <tracery/embedded/errors.h>

#include <utility>

namespace tracery::embedded {

using namespace hostobj;

namespace {

Object& objectOf(const HostObjectRef& object)
{
    auto* own = dynamic_cast<Object*>(object.get());
    if (own == nullptr || !own->isAlive())
        throw Error(errors::InvalidObject);
    return *own;
}

} // namespace

HostPropInfo::HostPropInfo(HostProperty property)
    : property_(std::move(property)), type_(COSDataType::fromString(property_.type))
{
    if (property_.value != nullptr)
        property_.value = type_->convert(property_.value.get());
}

HostArray* HostPropInfo::getValue(const HostObjectRef& object) const
{
    const HostArrayPtr* set = objectOf(object).findValue(property_.name);
    const HostArray* value = set != nullptr ? set->get() : property_.value.get();
    return value != nullptr ? duplicateArray(value) : nullptr;
}

void HostPropInfo::setValue(const HostObjectRef& object, const HostArray* value) const
{
    Object& own = objectOf(object);
    HostArrayPtr converted = type_->convert(value);
    if (converted != nullptr)
        setArrayScope(converted.get(), HostArrayScope::persistent);
    own.setValue(property_.name, std::move(converted));
}

HostMethodInfo::HostMethodInfo(HostMethod method)
    : method_(std::move(method)), signature_(COSMethodSignature::createMethodSignature(
                                      method_.isStatic ? nullptr : COSDataType::fromString("object"), {}, {}))
{}

std::shared_ptr<ClassRecord> makeRecord(HostClass definition)
{
    auto cls = std::make_shared<ClassRecord>(std::move(definition.name));
    cls->superclassName = std::move(definition.superclass);
    cls->isAbstract = definition.isAbstract;
    for (HostProperty& property : definition.properties)
        cls->properties.add(std::make_shared<HostPropInfo>(std::move(property)));
    for (HostMethod& method : definition.methods)
        cls->methods.add(std::make_shared<HostMethodInfo>(std::move(method)));
    if (definition.constructor)
        cls->constructor = std::make_shared<HostMethodInfo>(
            HostMethod{.name = cls->shortName(), .body = std::move(definition.constructor)});
    return cls;
}

} // namespace tracery::embedded
