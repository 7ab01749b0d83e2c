#pragma once

#include "ClassRecord.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>

namespace tracery::embedded {

class Object;

/// The objects of one host by their numbers. Objects share it, so it may outlive the host.
class ObjectTable : public std::enable_shared_from_this<ObjectTable> {
public:
    /// What an object leaves when it is deleted.
    struct Remains {
        std::shared_ptr<hostobj::InstancePayload> payload;
        std::map<std::string, HostArrayPtr> values;
    };

    /// throws  InvalidObject after close
    std::shared_ptr<Object> create(ClassPtr cls);
    /// Whether the reference is to an object of this host that is not deleted.
    bool isAlive(const HostObjectRef& object) const noexcept;
    /// Whether the reference is to an object of this host that is deleted.
    bool isDeleted(const HostObjectRef& object) const noexcept;
    /// throws  InvalidObject unless the reference is to an object of this host that is not deleted
    std::shared_ptr<Object> require(const HostObjectRef& object) const;
    /// The object of a number; null when there is none or it is deleted.
    std::shared_ptr<Object> ofNumber(double number) const noexcept;
    /// How many objects somebody refers to.
    std::size_t size() const noexcept { return objects_.size(); }
    /// Deletes all objects, and makes no further ones.
    void close();

private:
    friend Object;
    /// The object behind a reference, or null when it is of another host; deleted ones too.
    std::shared_ptr<Object> find(const HostObjectRef& object) const noexcept;
    /// Releases remains, and with them maybe other objects: at once, or, where such is going on many times over already,
    /// by the first of them, so that a chain of objects of any length needs little stack.
    void release(std::list<Remains>& remains) noexcept;

    std::map<std::uint64_t, Object*> objects_;
    std::list<Remains> waiting_;
    int releasing_ = 0;
    std::uint64_t lastNumber_ = 0;
    bool closed_ = false;
};

} // namespace tracery::embedded
