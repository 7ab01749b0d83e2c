#pragma once

#include "support/Expect.h"

#include <tracery/embedded/EmbeddedHost.h>

#include <functional>

namespace tracery::test {

using namespace hostobj;
using embedded::EmbeddedHost;
using embedded::HostClass;

inline HostArrayPtr number(double value) { return makeScalar(value); }
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

struct GaugePayload final : InstancePayload {
    explicit GaugePayload(const COSInterfacePtr& self) { gauge->self = self; }
    std::shared_ptr<void> as(const std::type_info& type) const noexcept override
    {
        return type == typeid(Gauge) ? gauge : nullptr;
    }
    std::shared_ptr<Gauge> gauge = std::make_shared<Gauge>();
};

inline Gauge& gaugeOf(const COSInterfacePtr& object)
{
    const auto payload = object != nullptr ? object->payload() : nullptr;
    if (payload == nullptr)
        throw Error(errors::InvalidObject);
    return *static_cast<Gauge*>(payload->as(typeid(Gauge)).get());
}

inline const COSDataTypePtr kNumber = COSDataType::fromString("double scalar");

struct LevelPropInfo final : COSPropInfo {
    LevelPropInfo(const char* n, Access g, Access s, COSDataTypePtr t = kNumber) : name(n), get(g), set(s), type(t) {}
    COSNameID getName() const override { return name; }
    std::string getLabel() const override { return std::string("The ") + name; }
    COSDataTypePtr getDataType() const override { return type; }
    Access getGetAccess() const override { return get; }
    Access getSetAccess() const override { return set; }
    std::uint32_t getAttributes() const override { return 3022; }
    HostArray* getValue(const COSInterfacePtr& o) const override { return number(gaugeOf(o).level).release(); }
    void setValue(const COSInterfacePtr& object, const HostArray* value) const override
    {
        gaugeOf(object).level = numberIn(type->convert(value).get());
    }
    const char* name;
    Access get, set;
    COSDataTypePtr type;
};

/// Abstract without a body.
struct GaugeMethodInfo final : COSMethodInfo {
    using Body = HostOutputs (*)(HostInputs);
    GaugeMethodInfo(const char* n, Access a, bool s, Body b) : name(n), access(a), isStatic(s), body(b) {}
    COSNameID getName() const override { return name; }
    COSMethodSignaturePtr getSignature() const override
    {
        return COSMethodSignature::createMethodSignature(isStatic ? nullptr : COSDataType::fromString("object"),
                                                         {kNumber, kNumber}, {{"level", kNumber}}, 1);
    }
    std::vector<COSMethodSignaturePtr> getSignatures() const override
    {
        std::vector<COSMethodSignaturePtr> all{getSignature()};
        if (isStatic) // with an object, its level takes the number's place
            all.push_back(
                COSMethodSignature::createMethodSignature(COSDataType::fromString("object"), {}, {{"level", kNumber}}));
        return all;
    }
    Access getAccess() const override { return access; }
    bool isAbstract() const override { return body == nullptr; }
    HostOutputs invoke(HostInputs inputs, std::size_t) const override { return body(inputs); }
    const char* name;
    Access access;
    bool isStatic;
    Body body;
};

/// Library objects made and given back.
struct Census {
    int made = 0, returned = 0;
};

struct GaugeClassInfo final : COSClassInfo {
    GaugeClassInfo(Census& all, const char* n) : census(all), name(n) {}
    COSNameID getName() const override { return name; }
    bool isAbstract() const override { return name == "Base"; }
    bool isHidden() const override { return name == "Base"; }
    void defineClass(ClassDefinition& c) const override
    {
        using enum Access;
        const auto method = [&](const char* n, Access access, bool isStatic, GaugeMethodInfo::Body body) {
            c.addMethod(std::make_unique<GaugeMethodInfo>(n, access, isStatic, body));
        };
        if (name == "Gauge") {
            c.superclass("lab.Base");
            c.addConstructor(std::make_unique<GaugeMethodInfo>("Gauge", public_, false, [](HostInputs in) {
                gaugeOf(omGetArrayElement(in[0], 0)).level = in.size() > 1 ? numberIn(in[1]) : 1;
                return HostOutputs();
            }));
            method("onChange", protected_, false, [](HostInputs) { return outputs(number(7)); });
            method("twice", public_, true, [](HostInputs in) {
                return outputs(
                    number(2 * (isDouble(in[0]) ? numberIn(in[0]) : gaugeOf(omGetArrayElement(in[0], 0)).level)));
            });
            return;
        }
        c.superclass("handle");
        const auto modes = TypedEnumStringType::createCaseInsensitiveInstance("ModeEnum", {{0, "Auto"}, {2, "Off"}});
        c.addProperty(std::make_unique<LevelPropInfo>("Level", public_, public_));
        c.addProperty(std::make_unique<LevelPropInfo>("Reading", public_, private_));
        c.addProperty(std::make_unique<LevelPropInfo>("Secret", protected_, protected_));
        c.addProperty(std::make_unique<LevelPropInfo>("Mode", public_, public_, COSDataType::fromEnumeration(modes)));
        method("onChange", protected_, false, nullptr);
        c.addInheritedMethod("enable");
    }
    std::unique_ptr<InstancePayload> createInstance(const COSInterfacePtr& self) const override
    {
        return ++census.made, std::make_unique<GaugePayload>(self);
    }
    void destroyInstance(std::unique_ptr<InstancePayload> payload) const noexcept override
    {
        EXPECT_NE(payload, nullptr);
        ++census.returned;
    }
    Census& census;
    std::string name;
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
