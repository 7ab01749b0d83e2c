#include "bindings/Script.h"

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
    const auto hollow = [] {
        HostArrayPtr array = makeMatrix(1, 2);
        setRealData(array.get(), nullptr);
        return array;
    };
    EXPECT_EQ(refused("AddTime", hollow()), "EmptyInput");
    EXPECT_EQ(refused("addTimeAndValue", 1, hollow(), 9), "EmptyInput");
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

} // namespace
