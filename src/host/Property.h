#pragma once

#include "host/Accessor.h"
#include "host/Payload.h"
#include "host/Value.h"
#include "host/guarded.h"

#include <tracery/host/ClassInfo.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace tracery::binding {

/// What a class table says of a property.
struct PropertyRow {
    hostobj::COSNameID name;
    std::string label; ///< the name for people
    hostobj::COSDataTypePtr type;
    hostobj::Access getAccess = hostobj::Access::public_;
    hostobj::Access setAccess = hostobj::Access::public_;
    std::uint32_t attributes = 0;
    std::string description;
};

/// A property of payload class Class, read and written through functions of the payload.
template <class Class>
class PayloadProperty : public hostobj::COSPropInfo {
public:
    using Get = HostArrayPtr (*)(Class&);
    using Set = void (*)(Class&, const HostArray*);

    /// set  null for a read-only property
    PayloadProperty(PropertyRow row, Get get, Set set) : row_(std::move(row)), get_(get), set_(set) {}

    hostobj::COSNameID getName() const override { return row_.name; }
    std::string getLabel() const override { return row_.label; }
    hostobj::COSDataTypePtr getDataType() const override { return row_.type; }
    hostobj::Access getGetAccess() const override { return row_.getAccess; }
    hostobj::Access getSetAccess() const override { return row_.setAccess; }
    std::uint32_t getAttributes() const override { return row_.attributes; }
    std::string getDescription() const override { return row_.description; }
    HostArray* getValue(const HostObjectRef& object) const override
    {
        return guarded([&] { return get_(*payloadOf<Class>(object)).release(); });
    }
    void setValue(const HostObjectRef& object, const HostArray* value) const override
    {
        guarded([&] {
            const std::shared_ptr<Class> payload = payloadOf<Class>(object);
            if (set_ == nullptr)
                throw Error(errors::ReadOnlyProperty, row_.name.text() + " cannot be set");
            set_(*payload, value);
        });
    }

private:
    PropertyRow row_;
    Get get_;
    Set set_;
};

/// Access codes of class tables.
inline constexpr int kPublic = 0;
inline constexpr int kReadOnly = 2; ///< on the set side
/// Attribute words, as hosts know them: of stored properties, and of computed ones.
inline constexpr std::uint32_t kStored = 3022;
inline constexpr std::uint32_t kComputed = 10272;

/// A property bound directly to a getter and a setter.
template <class Class, class ValueType>
class COSPropCPPT : public PayloadProperty<Class> {
public:
    /// secondName  the name for people
    COSPropCPPT(const char* name, const char* secondName, hostobj::COSDataTypePtr type, int getAccess, int setAccess,
                std::uint32_t attributes, const char* description, typename PayloadProperty<Class>::Get get,
                typename PayloadProperty<Class>::Set set)
        : PayloadProperty<Class>({name, secondName, std::move(type), static_cast<hostobj::Access>(getAccess),
                                  static_cast<hostobj::Access>(setAccess), attributes, description},
                                 get, set)
    {}
};

template <auto get>
HostArrayPtr readThrough(typename Accessor<decltype(get)>::Object& object)
{
    return Value<typename Accessor<decltype(get)>::Result>::write(std::invoke(get, object));
}
template <auto set>
void writeThrough(typename Accessor<decltype(set)>::Object& object, const HostArray* array)
{
    using Argument = std::tuple_element_t<0, typename Accessor<decltype(set)>::Arguments>;
    std::invoke(set, object, Value<Argument>::read(array));
}

/// A row of a class table: the payload's class and the type follow from the getter. No setter makes it read-only.
template <auto get, auto set = nullptr>
auto property(const char* name, int getAccess, int setAccess, std::uint32_t attributes, const char* description,
              const char* secondName = nullptr)
{
    using Class = typename Accessor<decltype(get)>::Object;
    using Type = typename Accessor<decltype(get)>::Result;
    typename PayloadProperty<Class>::Set setter = nullptr;
    if constexpr (!std::is_null_pointer_v<decltype(set)>)
        setter = &writeThrough<set>;
    return std::make_unique<COSPropCPPT<Class, Type>>(name, secondName != nullptr ? secondName : name,
                                                      dataTypeOf<Value<Type>>(), getAccess, setAccess, attributes,
                                                      description, &readThrough<get>, setter);
}

} // namespace tracery::binding
