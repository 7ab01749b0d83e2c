#include "Object.h"

#include <tracery/embedded/errors.h>

#include <utility>

namespace tracery::embedded {

using namespace hostobj;

Object::Object(std::shared_ptr<ObjectTable> table, ClassPtr cls, std::uint64_t number)
    : table_(std::move(table)), class_(std::move(cls)), number_(number)
{}

Object::~Object()
{
    table_->objects_.erase(number_);
    remove();
}

void Object::attach(std::shared_ptr<const COSClassInfo> info, std::unique_ptr<InstancePayload> payload)
{
    if (payload == nullptr)
        return;
    const auto giveBack = [info = std::move(info)](InstancePayload* last) {
        info->destroyInstance(std::unique_ptr<InstancePayload>(last));
    };
    std::shared_ptr<InstancePayload> held(payload.release(), giveBack);
    if (!alive_)
        throw Error(errors::InvalidObject, "the object was deleted while it was made");
    payload_.swap(held);
}

void Object::remove() noexcept
{
    // Out of the object first: what goes may look at the object, or delete it again.
    alive_ = false;
    if (remains_.empty())
        return;
    remains_.front().payload.swap(payload_);
    remains_.front().values.swap(values_);
    const auto table = table_; // the object may go with what it leaves
    table->release(remains_);
}

const HostArrayPtr* Object::findValue(const std::string& property) const
{
    const auto entry = values_.find(property);
    return entry != values_.end() ? &entry->second : nullptr;
}

void Object::setValue(const std::string& property, HostArrayPtr value) { values_[property].swap(value); }

} // namespace tracery::embedded
