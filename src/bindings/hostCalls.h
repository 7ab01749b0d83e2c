#pragma once

#include "host/ScopeMembers.h"

#include <tracery/host/Host.h>

#include <initializer_list>

namespace tracery::binding {

/// Calls those of the methods that the object's class has a body for, in their order, without arguments.
void callIfPresent(const HostObjectRef& object, std::initializer_list<const char*> methods);
/// Calls a method of the object with one argument (none when it is null); its first result, or null.
/// throws  AbstractMethod when the object's class has no body for it
HostArrayPtr callNeeded(const HostObjectRef& object, const char* method, const HostArray* argument);
/// Whether two arrays, or null, are the same bit by bit.
bool sameValue(const HostArray* a, const HostArray* b);

/// Whether the object is a time-domain plotter whose flag says that several properties are being set.
bool isSettingProperties(const HostObjectRef& object);

/// A property whose setting makes the object's class react: host methods that it has are called when the value has
/// changed, unless the plotter is having several properties set.
template <class PropInfo, FixedText... methods>
struct Reacting : PropInfo {
    using PropInfo::PropInfo;
    void setValue(const HostObjectRef& object, const HostArray* value) const override
    {
        guarded([&] {
            const HostArrayPtr before(PropInfo::getValue(object));
            PropInfo::setValue(object, value);
            if (!stillIs(before.get(), object) && !isSettingProperties(object))
                callIfPresent(object, {methods.text...});
        });
    }

private:
    /// Without memory to tell, it has changed: the class rather reacts in vain than never.
    bool stillIs(const HostArray* before, const HostObjectRef& object) const
    {
        try {
            const HostArrayPtr after(PropInfo::getValue(object));
            return sameValue(before, after.get());
        } catch (...) {
            return false;
        }
    }
};

/// A property of any type that the host's subclass keeps: read and written through methods of it, with `reaction` called
/// afterwards when there is one. Reads as nothing while the subclass has no getter.
template <class Class, FixedText name, FixedText getter, FixedText setter, FixedText... reaction>
class AbstractScopeDataTypeAnyDependentPropInfo : public hostobj::COSPropInfo {
public:
    hostobj::COSNameID getName() const override { return name.text; }
    hostobj::COSDataTypePtr getDataType() const override { return dataTypeOf<Value<HostArray*>>(); }
    std::uint32_t getAttributes() const override { return kComputed; }
    std::string getDescription() const override
    {
        return std::string("kept by the subclass: ") + getter.text + ", " + setter.text;
    }
    HostArray* getValue(const HostObjectRef& object) const override
    {
        return guarded([&] {
            payloadOf<Class>(object);
            const bool kept = Host::require().objects().hasMethod(object, getter.text);
            return kept ? callNeeded(object, getter.text, nullptr).release() : nullptr;
        });
    }
    void setValue(const HostObjectRef& object, const HostArray* value) const override
    {
        guarded([&] {
            payloadOf<Class>(object);
            if (value == nullptr)
                throw Error(errors::InvalidArgumentType, "needed: a value");
            callNeeded(object, setter.text, value);
            callIfPresent(object, {reaction.text...});
        });
    }
};

} // namespace tracery::binding
