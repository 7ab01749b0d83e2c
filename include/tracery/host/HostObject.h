#pragma once

#include <tracery/export.h>

#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace tracery::hostobj {

/// A name of the host: of a class, a property or a method. Empty names mean nothing.
class COSNameID {
public:
    COSNameID() = default;
    /// A name of this text; null counts as empty.
    COSNameID(const char* text) : text_(text != nullptr ? text : "") {}
    COSNameID(std::string_view text) : text_(text) {}
    COSNameID(std::string text) : text_(std::move(text)) {}

    /// The text, and whether there is any.
    const std::string& text() const noexcept { return text_; }
    bool isEmpty() const noexcept { return text_.empty(); }
    /// By their texts.
    friend bool operator==(const COSNameID& a, const COSNameID& b) = default;

private:
    std::string text_;
};

/// The library object behind a host object: made and destroyed by the class info (see COSClassInfo).
class TRACERY_EXPORT InstancePayload {
public:
    virtual ~InstancePayload();
    /// The library object as `type`: its own class or one of its published bases; null when it is neither. Whoever
    /// holds the result keeps the library object alive, also when the host object is deleted meanwhile.
    virtual std::shared_ptr<void> as(const std::type_info& type) const noexcept = 0;
};

/// An object of the host's class system.
class TRACERY_EXPORT COSInterface {
public:
    virtual ~COSInterface();
    /// The dotted name of the object's class, valid while the object lives.
    virtual const char* className() const = 0;
    /// Whether the object's class has this dotted name or inherits from one that has.
    virtual bool isA(const COSNameID& className) const = 0;
    /// Null for an object without one, and after the object's deletion.
    virtual std::shared_ptr<InstancePayload> payload() const = 0;
};

/// A counted reference to a host object; null means no object.
using COSInterfacePtr = std::shared_ptr<COSInterface>;

} // namespace tracery::hostobj

namespace tracery {
/// A counted reference to a host object; null means no object.
using HostObjectRef = hostobj::COSInterfacePtr;
} // namespace tracery
