#pragma once

#include <tracery/host/Error.h>
#include <tracery/host/ObjectSystem.h>

#include <memory>
#include <typeinfo>
#include <utility>

namespace tracery::binding {

/// The dotted name under which a library class is published: specialised in src/bindings/classNames.h.
template <class T>
struct Published;

/// A library object of class T behind a host object, reachable as its published bases, too.
template <class T, class... Bases>
class PayloadOf final : public hostobj::InstancePayload {
public:
    explicit PayloadOf(std::shared_ptr<T> object) : object_(std::move(object)) {}
    std::shared_ptr<void> as(const std::type_info& type) const noexcept override
    {
        void* found = type == typeid(T) ? object_.get() : nullptr;
        ((found = type == typeid(Bases) ? static_cast<Bases*>(object_.get()) : found), ...);
        return found != nullptr ? std::shared_ptr<void>(object_, found) : nullptr;
    }

private:
    std::shared_ptr<T> object_;
};

/// The library object behind a host object, kept alive by the result. throws  InvalidObject
template <class T>
std::shared_ptr<T> payloadOf(const HostObjectRef& object)
{
    const std::shared_ptr<hostobj::InstancePayload> payload = object != nullptr ? object->payload() : nullptr;
    std::shared_ptr<void> found = payload != nullptr ? payload->as(typeid(T)) : nullptr;
    if (found == nullptr)
        throw Error(errors::InvalidObject, std::string("needed: ") + Published<T>::name + " scalar");
    return std::static_pointer_cast<T>(std::move(found));
}

/// The same of an object array of one element.
template <class T>
std::shared_ptr<T> payloadOf(const HostArray* array)
{
    if (array == nullptr || getNumberOfContainedElements(array) != 1)
        throw Error(errors::InvalidObject, std::string("needed: ") + Published<T>::name + " scalar");
    return payloadOf<T>(hostobj::omGetArrayElement(array, 0));
}

} // namespace tracery::binding
