#pragma once

#include "host/Method.h"
#include "host/Property.h"

#include <tracery/host/ClassInfo.h>

#include <memory>
#include <string_view>

namespace tracery::binding {

/// What follows the last dot.
constexpr std::string_view shortName(std::string_view dotted) { return dotted.substr(dotted.rfind('.') + 1); }

/// The class info of a library class: its payload is a new object of the class, known as its published bases, too.
template <class Payload, class... Bases>
class ClassInfo : public hostobj::COSClassInfo {
public:
    hostobj::COSNameID getName() const override { return shortName(Published<Payload>::name); }
    std::unique_ptr<hostobj::InstancePayload> createInstance(const HostObjectRef& self) const override
    {
        return guarded([&] {
            auto object = std::make_shared<Payload>();
            if constexpr (requires { object->setCOSInterface(self); })
                object->setCOSInterface(self);
            return std::make_unique<PayloadOf<Payload, Bases...>>(std::move(object));
        });
    }
};

/// The constructor object of a class: a method under the class's short name that sets up the new object and gives it
/// back.
template <auto operation>
class Constructor : public Method<"", operation> {
    using Base = Method<"", operation>;

public:
    hostobj::COSNameID getName() const override { return shortName(Published<typename Base::Class>::name); }
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        static const hostobj::COSMethodSignaturePtr signature = [this] {
            const hostobj::COSMethodSignaturePtr inputs = Base::getSignature();
            return hostobj::COSMethodSignature::createMethodSignature(
                inputs->getObject(), inputs->getInputs(), {{"obj", inputs->getObject()}}, inputs->getOptional());
        }();
        return signature;
    }
    hostobj::HostOutputs invoke(hostobj::HostInputs inputs, std::size_t wanted) const override
    {
        return guarded([&] {
            hostobj::HostOutputs outputs = Base::invoke(inputs, wanted);
            HostArrayPtr self(duplicateArray(inputs[0]));
            outputs.push_back(std::move(self));
            return outputs;
        });
    }
};

template <class... Properties>
void addProperties(hostobj::ClassDefinition& definition)
{
    (definition.addProperty(std::make_unique<Properties>()), ...);
}
template <class... Methods>
void addMethods(hostobj::ClassDefinition& definition)
{
    (definition.addMethod(std::make_unique<Methods>()), ...);
}

/// An enumeration property: its texts are those of an enumeration type, its values those of a C++ enumeration.
template <FixedText name, auto type, auto get, auto set>
class EnumerationPropInfo : public PayloadProperty<typename Accessor<decltype(get)>::Object> {
    using Class = typename Accessor<decltype(get)>::Object;
    using Enum = typename Accessor<decltype(get)>::Result;

public:
    EnumerationPropInfo()
        : PayloadProperty<Class>({name.text, name.text, dataType(), {}, {}, kStored, {}}, &read, &write)
    {}

private:
    static const hostobj::COSDataTypePtr& dataType()
    {
        static const hostobj::COSDataTypePtr made = hostobj::COSDataType::fromEnumeration(type());
        return made;
    }
    static HostArrayPtr read(Class& object)
    {
        const std::string* text = dataType()->getEnumeration()->nameOf(static_cast<int>(std::invoke(get, object)));
        return HostArrayPtr(createString(text != nullptr ? text->c_str() : ""));
    }
    static void write(Class& object, const HostArray* array)
    {
        std::invoke(set, object, static_cast<Enum>(readEnumeration(*dataType(), array)));
    }
};

} // namespace tracery::binding
