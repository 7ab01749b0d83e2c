#include "ObjectTable.h"

#include "Object.h"

#include <tracery/embedded/errors.h>

#include <iterator>
#include <string>
#include <utility>

namespace tracery::embedded {

std::shared_ptr<Object> ObjectTable::create(ClassPtr cls)
{
    if (closed_)
        throw Error(errors::InvalidObject, "the host is going");
    auto object = std::make_shared<Object>(shared_from_this(), std::move(cls), lastNumber_ + 1);
    objects_.emplace(object->getNumber(), object.get());
    ++lastNumber_;
    return object;
}

std::shared_ptr<Object> ObjectTable::find(const HostObjectRef& object) const noexcept
{
    auto own = std::dynamic_pointer_cast<Object>(object);
    return own != nullptr && &own->getTable() == this ? own : nullptr;
}

bool ObjectTable::isAlive(const HostObjectRef& object) const noexcept
{
    const auto own = find(object);
    return own != nullptr && own->isAlive();
}

bool ObjectTable::isDeleted(const HostObjectRef& object) const noexcept
{
    const auto own = find(object);
    return own != nullptr && !own->isAlive();
}

std::shared_ptr<Object> ObjectTable::require(const HostObjectRef& object) const
{
    auto own = find(object);
    if (own == nullptr)
        throw Error(errors::InvalidObject, object == nullptr ? "there is no object" : "the object is of another host");
    if (!own->isAlive())
        throw Error(errors::InvalidObject, std::string("the ") + own->className() + " is deleted");
    return own;
}

std::shared_ptr<Object> ObjectTable::ofNumber(double number) const noexcept
{
    if (!(number >= 1 && number <= static_cast<double>(lastNumber_)))
        return nullptr;
    const auto whole = static_cast<std::uint64_t>(number);
    const auto entry = objects_.find(whole);
    if (static_cast<double>(whole) != number || entry == objects_.end() || !entry->second->isAlive())
        return nullptr;
    return entry->second->weak_from_this().lock();
}

void ObjectTable::release(std::list<Remains>& remains) noexcept
{
    constexpr int kDeepest = 50;
    std::list<Remains> mine;
    mine.swap(remains);
    if (releasing_ >= kDeepest) {
        waiting_.splice(waiting_.end(), mine);
        return;
    }
    ++releasing_;
    mine.clear();
    while (releasing_ == kDeepest && !waiting_.empty())
        mine.splice(mine.end(), waiting_, waiting_.begin()), mine.clear();
    --releasing_;
}

void ObjectTable::close()
{
    closed_ = true;
    // By number, the newest first, as deleting one may be the end of others.
    for (std::uint64_t number = lastNumber_; number > 0; --number) {
        const auto after = objects_.upper_bound(number);
        if (after == objects_.begin())
            break;
        number = std::prev(after)->first;
        if (const auto object = std::prev(after)->second->weak_from_this().lock())
            object->remove();
    }
}

} // namespace tracery::embedded
