#pragma once

#include "ObjectTable.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>

namespace tracery::embedded {

/// An object of the embedded host: a library object when its class has one, and the values of the properties that were
/// defined in the host.
class Object final : public hostobj::COSInterface, public std::enable_shared_from_this<Object> {
public:
    /// Made by the table.
    Object(std::shared_ptr<ObjectTable> table, ClassPtr cls, std::uint64_t number);
    ~Object() override;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    const char* className() const override { return class_->name.c_str(); }
    bool isA(const hostobj::COSNameID& className) const override { return class_->isA(className.text()); }
    std::shared_ptr<hostobj::InstancePayload> payload() const override { return payload_; }

    const ClassRecord& getClass() const noexcept { return *class_; }
    const ObjectTable& getTable() const noexcept { return *table_; }
    std::uint64_t getNumber() const noexcept { return number_; }
    bool isAlive() const noexcept { return alive_; }
    /// Takes a library object, which goes back to `info` when nobody holds it any more. Null is ignored.
    /// throws  InvalidObject when the object was deleted meanwhile
    void attach(std::shared_ptr<const hostobj::COSClassInfo> info, std::unique_ptr<hostobj::InstancePayload> payload);
    /// Drops the library object and the values; where the stack is deep in such, once it is not.
    void remove() noexcept;

    /// Null when the property was not set; may point to null.
    const HostArrayPtr* findValue(const std::string& property) const;
    void setValue(const std::string& property, HostArrayPtr value);

private:
    std::shared_ptr<ObjectTable> table_;
    ClassPtr class_;
    std::uint64_t number_;
    bool alive_ = true;
    std::shared_ptr<hostobj::InstancePayload> payload_;
    std::map<std::string, HostArrayPtr> values_;
    std::list<ObjectTable::Remains> remains_{1}; ///< room for what is left, as there may be no memory then
};

} // namespace tracery::embedded
