#include "bindings/Script.h"
#include "support/TestHost.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <span>
#include <sstream>

using namespace tracery;
using namespace tracery::test;

namespace {

/// The checked-in listing is what hosts rely on; tracery-scope classes prints what it would be.
TEST(ListingTest, EveryPublishedClassIsAsListed)
{
    embedded::EmbeddedHost host;
    const std::size_t ofTheHost = host.listClasses().size();
    publishClasses(host.objects());
    const std::vector<embedded::ClassListing> classes = host.listClasses();
    std::string listing;
    for (const embedded::ClassListing& published : std::span(classes).subspan(ofTheHost))
        listing += (listing.empty() ? "" : "\n") + formatClass(published);
    std::ifstream file(TRACERY_CLASS_LISTING);
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(listing, expected.str());
}

/// What is called is told: each number of arguments that a signature states is taken, every other is refused.
TEST(ListingTest, SignaturesStateTheNumbersOfArguments)
{
    Script script;
    const std::string display =
        script.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter", Script::Supplying::all);
    for (const embedded::ClassListing& listing : script.host.listClasses())
        for (const embedded::MethodListing& method : listing.methods) {
            if (!listing.isPublished || method.isAbstract || method.isOptional || method.isStatic)
                continue;
            const HostObjectRef object = script.makeAny(listing.isAbstract ? display : listing.name);
            const HostArrayPtr one = row({1});
            for (std::size_t count = 0; count < 12; ++count) {
                const bool stated = std::ranges::any_of(method.signatures, [&](const auto& signature) {
                    return count <= signature.inputs.size() && count + signature.optional >= signature.inputs.size();
                });
                const std::vector<const HostArray*> inputs(count, one.get());
                const std::string error = failure([&] { script.host.call(object, method.name, inputs, 0); });
                EXPECT_EQ(error != "InvalidNumberOfArguments", stated)
                    << listing.name << ' ' << method.name << ' ' << count << ' ' << error;
            }
        }
}

/// A host that answers nothing, but for the display that has whatever method it is asked for.
struct CuriousHost : TestHost, ClassDefinition {
    struct Display : COSInterface {
        const char* className() const override { return "display"; }
        bool isA(const COSNameID&) const override { return true; }
        std::shared_ptr<InstancePayload> payload() const override { return plotter; }
        std::shared_ptr<InstancePayload> plotter;
    };

    void addClass(std::unique_ptr<const COSClassInfo> info) override
    {
        const std::string name = info->getName().text();
        if (name.find("Plotter") == std::string::npos)
            return;
        info->defineClass(*this);
        infos.push_back(std::move(info));
    }
    void superclass(const COSNameID&) override {}
    void addProperty(std::unique_ptr<const COSPropInfo> info) override { properties.push_back(std::move(info)); }
    void addMethod(std::unique_ptr<const COSMethodInfo> info) override { methods.push_back(std::move(info)); }
    void addConstructor(std::unique_ptr<const COSMethodInfo>) override {}
    void addInheritedMethod(const COSNameID&) override {}
    bool hasMethod(const COSInterfacePtr&, const COSNameID& name) const override
    {
        asked.insert(name.text());
        return true;
    }
    HostOutputs callMethod(const COSInterfacePtr&, const COSNameID& name, HostInputs inputs, std::size_t) override
    {
        asked.insert(name.text());
        calls[name.text()] = inputs.size();
        return {};
    }

    COSInterfacePtr wrapPayload(const COSNameID&, std::unique_ptr<InstancePayload>) override { return nullptr; }

    std::vector<std::unique_ptr<const COSClassInfo>> infos;
    std::vector<std::unique_ptr<const COSPropInfo>> properties;
    std::vector<std::unique_ptr<const COSMethodInfo>> methods;
    mutable std::set<std::string> asked;
    std::map<std::string, std::size_t> calls;
};

TEST(ListingTest, WhatTheLibraryCallsOnADisplayIsToldAndNothingElse)
{
    CuriousHost host;
    const HostScope attached(host);
    publishClasses(host);
    const auto display = std::make_shared<CuriousHost::Display>();
    display->plotter = host.infos.back()->createInstance(display);
    for (const auto& property : host.properties) {
        HostArrayPtr(property->getValue(display));
        for (const double number : {1.0, 2.0})
            for (const HostArrayPtr& value : Script::list(number, number == 1, "Scroll"))
                failure([&] { property->setValue(display, value.get()); });
    }
    std::set<std::string> told;
    for (const auto& method : host.methods) {
        const std::string name = method->getName().text();
        if (!method->getDescription().empty())
            told.insert(name);
        EXPECT_TRUE(!method->isOptional() || told.contains(name)) << name;
        if (const auto call = host.calls.find(name); call != host.calls.end()) {
            EXPECT_EQ(method->getSignature()->getInputs().size(), call->second) << name;
            EXPECT_EQ(method->getAccess(), Access::protected_) << name;
            EXPECT_TRUE(method->isAbstract() || method->isOptional()) << name;
        }
        const std::string asBody = method->isOptional() && name.starts_with("set") ? "AbstractMethod" : "none";
        if (method->isOptional()) { // a host may take it for a body
            EXPECT_EQ(failure([&] { EXPECT_TRUE(method->invoke({}, 0).empty()); }), asBody) << name;
        }
    }
    EXPECT_EQ(host.asked, told);
    EXPECT_EQ(host.calls.size(), told.size());
}

} // namespace
