#pragma once

#include "support/Expect.h"

#include <tracery/embedded/EmbeddedHost.h>

#include <functional>

namespace tracery::test {

using namespace hostobj;
using embedded::EmbeddedHost;
using embedded::HostClass;

inline HostArrayPtr number(double value) { return row({value}); }
inline double numberIn(const HostArray* array) { return array != nullptr ? realOf(array).at(0) : getNaN(); }
inline HostOutputs outputs(HostArrayPtr array)
{
    HostOutputs all;
    all.push_back(std::move(array));
    return all;
}

/// The library object of the published classes "lab.Base" (abstract) and "lab.Gauge".
struct Gauge {
    double level = 0;
    std::weak_ptr<COSInterface> self;
};

class GaugePayload final : public InstancePayload {
public:
    explicit GaugePayload(const COSInterfacePtr& self) { gauge_->self = self; }
    std::shared_ptr<void> as(const std::type_info& type) const noexcept override
    {
        return type == typeid(Gauge) ? gauge_ : nullptr;
    }

private:
    std::shared_ptr<Gauge> gauge_ = std::make_shared<Gauge>();
};

inline Gauge& gaugeOf(const COSInterfacePtr& object)
{
    const auto payload = object != nullptr ? object->payload() : nullptr;
    if (payload == nullptr)
        throw Error(errors::InvalidObject);
    return *static_cast<Gauge*>(payload->as(typeid(Gauge)).get());
}

class LevelPropInfo final : public COSPropInfo {
public:
    LevelPropInfo(const char* name, Access get, Access set,
                  COSDataTypePtr type = COSDataType::fromString("double scalar"))
        : name_(name), get_(get), set_(set), type_(std::move(type))
    {}
    COSNameID getName() const override { return name_; }
    std::string getLabel() const override { return std::string("The ") + name_; }
    COSDataTypePtr getDataType() const override { return type_; }
    Access getGetAccess() const override { return get_; }
    Access getSetAccess() const override { return set_; }
    std::uint32_t getAttributes() const override { return 3022; }
    HostArray* getValue(const COSInterfacePtr& object) const override
    {
        return number(gaugeOf(object).level).release();
    }
    void setValue(const COSInterfacePtr& object, const HostArray* value) const override
    {
        gaugeOf(object).level = numberIn(getDataType()->convert(value).get());
    }

private:
    const char* name_;
    Access get_, set_;
    COSDataTypePtr type_;
};

class GaugeMethodInfo final : public COSMethodInfo {
public:
    using Body = HostOutputs (*)(HostInputs);
    GaugeMethodInfo(const char* name, Access access, bool isStatic, Body body)
        : name_(name), access_(access), isStatic_(isStatic), body_(body)
    {}
    COSNameID getName() const override { return name_; }
    COSMethodSignaturePtr getSignature() const override
    {
        const auto type = COSDataType::fromString("double scalar");
        return COSMethodSignature::createMethodSignature(isStatic_ ? nullptr : COSDataType::fromString("object"),
                                                         {type, type}, {{"level", type}}, 1);
    }
    Access getAccess() const override { return access_; }
    bool isAbstract() const override { return body_ == nullptr; }
    HostOutputs invoke(HostInputs inputs, std::size_t) const override { return body_(inputs); }

private:
    const char* name_;
    Access access_;
    bool isStatic_;
    Body body_;
};

/// Library objects made and given back.
struct Census {
    int made = 0, returned = 0;
};

class GaugeClassInfo final : public COSClassInfo {
public:
    GaugeClassInfo(Census& census, const char* name) : census_(census), name_(name) {}
    COSNameID getName() const override { return name_; }
    bool isAbstract() const override { return name_ == "Base"; }
    bool isHidden() const override { return name_ == "Base"; }
    void defineClass(ClassDefinition& c) const override
    {
        const auto method = [](const char* name, Access access, bool isStatic, GaugeMethodInfo::Body body) {
            return std::make_unique<GaugeMethodInfo>(name, access, isStatic, body);
        };
        if (name_ == "Gauge") {
            c.superclass("lab.Base");
            c.addConstructor(method("Gauge", Access::public_, false, [](HostInputs in) {
                gaugeOf(omGetArrayElement(in[0], 0)).level = in.size() > 1 ? numberIn(in[1]) : 1;
                return HostOutputs();
            }));
            c.addMethod(method("onChange", Access::protected_, false, [](HostInputs) { return outputs(number(7)); }));
            c.addMethod(method("twice", Access::public_, true,
                               [](HostInputs in) { return outputs(number(2 * numberIn(in[0]))); }));
            return;
        }
        c.superclass("handle");
        c.addProperty(std::make_unique<LevelPropInfo>("Level", Access::public_, Access::public_));
        c.addProperty(std::make_unique<LevelPropInfo>("Reading", Access::public_, Access::private_));
        c.addProperty(std::make_unique<LevelPropInfo>("Secret", Access::protected_, Access::protected_));
        const auto modes = TypedEnumStringType::createCaseInsensitiveInstance("ModeEnum", {{0, "Auto"}, {2, "Off"}});
        c.addProperty(std::make_unique<LevelPropInfo>("Mode", Access::public_, Access::public_,
                                                      COSDataType::fromEnumeration(modes)));
        c.addMethod(method("onChange", Access::protected_, false, nullptr));
        c.addInheritedMethod("enable");
    }
    std::unique_ptr<InstancePayload> createInstance(const COSInterfacePtr& self) const override
    {
        ++census_.made;
        return std::make_unique<GaugePayload>(self);
    }
    void destroyInstance(std::unique_ptr<InstancePayload> payload) const noexcept override
    {
        EXPECT_NE(payload, nullptr);
        ++census_.returned;
    }

private:
    Census& census_;
    std::string name_;
};

/// A host that knows "lab"; afterwards nothing is left of it.
class EmbeddedTest : public ::testing::Test {
protected:
    EmbeddedTest() { publish(*host); }
    ~EmbeddedTest() override
    {
        host.reset();
        EXPECT_EQ(census.made, census.returned);
        EXPECT_EQ(getNumberOfLiveArrays(), arraysBefore);
    }
    void publish(EmbeddedHost& to)
    {
        COSPackage& lab = to.objects().rootPackage().findOrCreatePackage("lab");
        for (const char* name : {"Gauge", "Base"})
            lab.addClass(std::make_unique<GaugeClassInfo>(census, name));
    }
    double get(const HostObjectRef& object, const char* property)
    {
        return numberIn(host->get(object, property).get());
    }

    std::size_t arraysBefore = getNumberOfLiveArrays();
    Census census;
    std::unique_ptr<EmbeddedHost> host = std::make_unique<EmbeddedHost>();
};

} // namespace tracery::test
