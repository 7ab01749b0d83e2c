#pragma once

#include "host/ClassTable.h"

#include <tracery/host/Error.h>

namespace tracery::binding {

/// throws  AbstractMethod, naming the method
[[noreturn]] inline void throwNoBody(const char* method)
{
    throw Error(errors::AbstractMethod, method + (": " + std::string(errors::AbstractMethod.text)));
}

/// A property of a scope base class that is a type of its own, of type text `type`.
template <FixedText name, FixedText type, std::uint32_t attributes, auto get, auto set, FixedText label = name>
class ScopePropInfo : public PayloadProperty<typename Accessor<decltype(get)>::Object> {
    using Base = PayloadProperty<typename Accessor<decltype(get)>::Object>;
    static constexpr bool kSettable = !std::is_null_pointer_v<decltype(set)>;
    static constexpr typename Base::Set setter()
    {
        if constexpr (kSettable)
            return &writeThrough<set>;
        else
            return nullptr;
    }

public:
    ScopePropInfo()
        : Base({name.text,
                label.text,
                hostobj::COSDataType::fromString(type.text),
                hostobj::Access::public_,
                kSettable ? hostobj::Access::public_ : hostobj::Access::private_,
                attributes,
                {}},
               &readThrough<get>, setter())
    {}
};

/// Whose value is an object, or nothing.
template <FixedText name, auto get, auto set = nullptr>
class AbstractScopeCOSPropInfo : public ScopePropInfo<name, "object", kStored, get, set> {};
/// Whose value is of any type.
template <FixedText name, auto get, auto set = nullptr>
class AbstractScopeDataTypeAnyPropInfo : public ScopePropInfo<name, "any", kStored, get, set> {};

/// A method of class Declarer that subclasses supply and only they and the library call.
/// when  what the library calls it for; empty when it does not
template <class Declarer, FixedText name, FixedText when>
class SubclassMethodInfo : public hostobj::COSMethodInfo {
public:
    hostobj::COSNameID getName() const override { return name.text; }
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        static const hostobj::COSMethodSignaturePtr signature =
            hostobj::COSMethodSignature::createMethodSignature(dataTypeOf<Value<std::shared_ptr<Declarer>>>(), {}, {});
        return signature;
    }
    hostobj::Access getAccess() const override { return hostobj::Access::protected_; }
    std::string getDescription() const override { return when.text; }
};

/// One that subclasses must supply.
template <class Declarer, FixedText name, FixedText when = "">
class AbstractScopeProtectedAbstractMethodInfo : public SubclassMethodInfo<Declarer, name, when> {
public:
    bool isAbstract() const override { return true; }
    hostobj::HostOutputs invoke(hostobj::HostInputs, std::size_t) const override
    {
        throw Error(errors::AbstractMethod);
    }
};

/// One that subclasses may supply, called when something has changed.
template <class Declarer, FixedText name, FixedText when>
class ReactionMethodInfo : public SubclassMethodInfo<Declarer, name, when> {
public:
    bool isOptional() const override { return true; }
    hostobj::HostOutputs invoke(hostobj::HostInputs, std::size_t) const override { return {}; }
};

/// One that subclasses may supply, which gives a value that they keep.
template <class Declarer, FixedText name, FixedText when>
class KeptGetterMethodInfo : public ReactionMethodInfo<Declarer, name, when> {
public:
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        static const hostobj::COSMethodSignaturePtr signature = hostobj::COSMethodSignature::createMethodSignature(
            dataTypeOf<Value<std::shared_ptr<Declarer>>>(), {}, {{"value", dataTypeOf<Value<HostArray*>>()}});
        return signature;
    }
};

/// One that subclasses may supply, which takes a value that they keep: without it the value cannot be set.
template <class Declarer, FixedText name, FixedText when>
class KeptSetterMethodInfo : public ReactionMethodInfo<Declarer, name, when> {
public:
    hostobj::COSMethodSignaturePtr getSignature() const override
    {
        static const hostobj::COSMethodSignaturePtr signature = hostobj::COSMethodSignature::createMethodSignature(
            dataTypeOf<Value<std::shared_ptr<Declarer>>>(), {dataTypeOf<Value<HostArray*>>()}, {});
        return signature;
    }
    hostobj::HostOutputs invoke(hostobj::HostInputs, std::size_t) const override { throwNoBody(name.text); }
};

} // namespace tracery::binding
