#include "bindings/Script.h"

#include <array>
#include <limits>
#include <random>

using namespace tracery;
using namespace tracery::test;

namespace {

TEST(BadInputTest, IsRefusedWithTheErrorOfTheClassAndChangesNothing)
{
    Script script;
    const HostObjectRef buffer = script.make("tracery.TimeBuffer", 10, matrix(2, 1, {1, 1}));
    const HostObjectRef timer = script.make("tracery.OneShotTimer");
    const double nan = getNaN();
    const auto refused = [&](const char* method, auto&&... arguments) {
        return failure([&] { script.call(0, buffer, method, std::forward<decltype(arguments)>(arguments)...); });
    };
    const auto none = [] { return HostArrayPtr(createDoubleMatrix(0, 0, HostComplexity::real)); };
    // In the order in which they are checked: count, time, value, port.
    EXPECT_EQ(refused("addTimeAndValue", true), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("addTimeAndValue", 1, 1, 1, 1), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("addTimeAndValue", true, "x", 9), "AddTimeError");
    HostArrayPtr bufferOnly = none();
    setRealData(bufferOnly.get(), static_cast<double*>(allocateMemory(8)));
    EXPECT_EQ(refused("AddTime", std::move(bufferOnly)), "EmptyInput");
    EXPECT_EQ(refused("addTimeAndValue", none(), "x", 9), "EmptyInput");
    EXPECT_EQ(refused("addTimeAndValue", 1, HostArrayPtr(), 9), "EmptyInput");
    EXPECT_EQ(refused("addTimeAndValue", 1, "x", 9), "AddValueDataTypeError");
    for (const double port : {3.0, 0.0, -1.0, 1.5, nan, 1e300})
        EXPECT_EQ(refused("addTimeAndValue", 1, 1, port), "InvalidPortID") << port;
    EXPECT_EQ(refused("addTimeAndValue", 1, std::vector{1.0, 2.0}), "AddValueError");
    EXPECT_EQ(refused("AddTime", false), "AddTimeError");
    EXPECT_EQ(refused("AddTime", none()), "EmptyInput");
    EXPECT_EQ(refused("AddValue", "x"), "AddValueDataTypeError");
    EXPECT_EQ(refused("ClearBackTo"), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("ClearBackTo", std::vector{1.0, 2.0}), "InvalidArgumentType");
    EXPECT_EQ(refused("GetLastTime", 1), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("GetTimeAndValue", 1, 2), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("GetTimeAndValue", 1, 2, 3, 4, 5), "InvalidNumberOfArguments");
    EXPECT_EQ(refused("GetTimeAndValue", 3), "InvalidPortID");
    EXPECT_EQ(failure([&] { script.set(buffer, "NPorts", 1); }), "ReadOnlyProperty");
    EXPECT_EQ(failure([&] { script.set(buffer, "MaxNumTimeSteps", -1.5); }), "InvalidArgumentType");
    EXPECT_EQ(failure([&] { script.set(buffer, "MaxDimensions", "wide"); }), "InvalidMaxDimensions");
    EXPECT_EQ(script.call(2, buffer, "GetTimeAndValue").size(), 2U);
    EXPECT_EQ(script.numbers(buffer, "GetTimeAndValue"), std::vector<double>()) << "nothing was written";

    const HostObjectRef trigger = script.make("tracery.TimeDomainTriggerController");
    for (const char* name : {"", "Normally", "N\xc3\xb6rmal", "normal "})
        EXPECT_EQ(failure([&] { script.set(trigger, "Mode", name); }), "InvalidArgumentType") << name;
    EXPECT_EQ(failure([&] { script.set(trigger, "Mode", 1); }), "InvalidArgumentType");
    EXPECT_EQ(script.text(trigger, "Mode"), "Off");
    const auto asWindow = [&](const HostObjectRef& object) {
        return failure([&] { script.call(2, trigger, "getTriggerWindow", object, false, 0, 1, 1, 0, 0, 1, false); });
    };
    EXPECT_EQ(asWindow(timer), "InvalidObject") << "of another class";
    script.host.deleteObject(buffer);
    EXPECT_EQ(asWindow(buffer), "InvalidObject") << "deleted";
    embedded::EmbeddedHost other;
    publishClasses(other.objects());
    EXPECT_EQ(failure([&] { script.host.call(other.construct("tracery.TimeBuffer"), "Clear"); }), "InvalidObject");
}

TEST(BadInputTest, TheConstructorOfABufferNamesWhatIsWrong)
{
    Script script;
    const auto refused = [&](auto&&... arguments) {
        return failure([&] { script.make("tracery.TimeBuffer", std::forward<decltype(arguments)>(arguments)...); });
    };
    const auto twoPorts = [] { return matrix(2, 1, {1, 1}); };
    EXPECT_EQ(refused(), "none");
    EXPECT_EQ(refused(5), "none");
    for (const double capacity : {0.0, -1.0, 2.5, getNaN(), 1e300})
        EXPECT_EQ(refused(capacity), "InvalidNumTimeSteps") << capacity;
    EXPECT_EQ(refused(std::vector{1.0, 2.0, 3.0}, twoPorts()), "InvalidNumTimeSteps");
    EXPECT_EQ(refused(5, twoPorts(), 3), "InvalidMaxDimensionsForNPorts");
    EXPECT_EQ(refused(5, twoPorts(), 2, "Rate"), "InvalidBufferType");
    EXPECT_EQ(refused(5, twoPorts(), 2, 1), "InvalidBufferType");
    EXPECT_EQ(refused(5, twoPorts(), 2, "SingleRate", std::vector{1.0, 0.0, 1.0}), "InvalidComplexityDimension");
    EXPECT_EQ(refused(5, twoPorts(), 4294967295.0), "InvalidMaxDimensionsForNPorts");
    EXPECT_EQ(refused(5, matrix(2, 0, {}), 2), "InitializeError");
    EXPECT_EQ(refused(5, 0), "InitializeError");
    EXPECT_EQ(refused(5, "x"), "InitializeError");
    EXPECT_EQ(refused(5, 1e15), "InitializeError");
    EXPECT_EQ(refused(5, 1, 1, "SingleRate", false, false, 1), "InvalidNumberOfArguments");
}

/// Values of every class, shape and oddity.
HostArrayPtr oddValue(std::mt19937& random, const std::vector<HostObjectRef>& objects)
{
    const std::uint64_t empty[] = {0, 3};
    const double numbers[] = {0, 1, 2, -1, 0.5, 1e300, 4294967296.0, getNaN(), getInf(), -getInf()};
    const auto number = [&] { return numbers[random() % std::size(numbers)]; };
    switch (random() % 12) {
    case 0:
        return nullptr;
    case 1:
        return HostArrayPtr(createNumericArray(2, empty, HostClassID::double_, HostComplexity::complex));
    case 2:
        return HostArrayPtr(createString(random() % 2 != 0 ? "Scroll" : "\x01\xff%n"));
    case 3:
        return HostArrayPtr(createLogicalScalar(random() % 2 != 0));
    case 4:
        return HostArrayPtr(createLogicalArray(2, empty));
    case 5:
        return HostArrayPtr(createCellMatrix(1, random() % 3));
    case 6:
        return HostArrayPtr(createObjectArray("tracery.TimeBuffer", 2, std::array<std::uint64_t, 2>{1, 1}.data()));
    case 7: {
        HostArrayPtr array(createDoubleMatrix(2, 2, HostComplexity::real));
        setRealData(array.get(), nullptr);
        return array;
    }
    case 8:
        return matrix(2, 3, {number(), number(), number(), 1, 2, 3});
    case 9:
        return row({number(), number()});
    case 10:
        return hostobj::omCreateScalar(objects[random() % objects.size()]);
    default:
        return row({number()});
    }
}

TEST(BadInputTest, WhateverIsPassedToAnyMemberIsTakenOrRefusedWithAnIdentifier)
{
    Script script;
    std::mt19937 random(7);
    const std::vector<embedded::ClassListing> classes = script.host.listClasses();
    const std::string subclass = script.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter");
    std::vector<HostObjectRef> objects;
    for (const embedded::ClassListing& listing : classes)
        if (!listing.isAbstract)
            objects.push_back(script.makeAny(listing.name));
    objects.push_back(script.host.construct(subclass));
    std::size_t taken = 0;
    std::size_t refused = 0;
    const auto attempt = [&](auto&& body) {
        try {
            body();
            ++taken;
        } catch (const Error&) {
            ++refused;
        }
    };
    for (int round = 0; round < 20000; ++round) {
        HostObjectRef& object = objects[random() % objects.size()];
        const embedded::ClassListing& members = classes[random() % classes.size()];
        Script::Values values;
        std::vector<const HostArray*> inputs;
        for (std::size_t i = random() % 8; i > 0; --i) {
            values.push_back(oddValue(random, objects));
            inputs.push_back(values.back().get());
        }
        if (random() % 100 == 0) {
            const std::string name = object->className();
            script.host.deleteObject(object);
            object = script.makeAny(name);
        } else if (random() % 20 == 0) {
            attempt([&] { script.host.construct(object->className(), inputs); });
        } else if (random() % 3 == 0 && !members.methods.empty()) {
            const std::string& name = members.methods[random() % members.methods.size()].name;
            attempt([&] { script.host.call(object, name, inputs, random() % 4); });
        } else if (!members.properties.empty()) {
            const std::string& name = members.properties[random() % members.properties.size()].name;
            attempt([&] { script.host.get(object, name); });
            attempt([&] { script.host.set(object, name, inputs.empty() ? nullptr : inputs[0]); });
        }
    }
    EXPECT_GT(taken, 500U);
    EXPECT_GT(refused, 500U);
}

} // namespace
