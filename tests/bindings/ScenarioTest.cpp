#include "bindings/Script.h"

#include <cmath>
#include <limits>

using namespace tracery;
using namespace tracery::test;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(HostScenarioTest, ABufferIsBuiltWrittenAndReadThroughTheObjectSystem)
{
    Script script;
    const HostObjectRef buffer =
        script.make("tracery.TimeBuffer", std::vector{8.0, 4.0}, matrix(2, 2, {2, 1, 1, 1}), 2, "multiplerate",
                    HostArrayPtr(createLogicalArray(1, std::array<std::uint64_t, 1>{2}.data())), true);
    EXPECT_EQ(script.text(buffer, "Type"), "MultipleRate");
    EXPECT_EQ(script.number(buffer, "NPorts"), 2);
    EXPECT_TRUE(script.flag(buffer, "IsThreadSafe"));
    EXPECT_EQ(realOf(script.host.get(buffer, "MaxNumTimeSteps").get()), (std::vector{8.0, 4.0}));
    EXPECT_EQ(realOf(script.host.get(buffer, "MaxDimensions").get()), (std::vector{2.0, 1.0, 1.0, 1.0}));

    script.call(0, buffer, "addTimeAndValue", std::vector{1.0, 2.0, 3.0}, matrix(2, 3, {10, 11, 20, 21, 30, 31}));
    script.call(0, buffer, "AddTime", 7.0, 2);
    EXPECT_FALSE(script.flag(buffer, "IsReady"));
    script.call(0, buffer, "AddValue", 70.0, 2);
    EXPECT_TRUE(script.flag(buffer, "IsReady"));
    EXPECT_EQ(script.numbers(buffer, "GetLastTime"), std::vector{7.0});

    const auto read = [&](auto... arguments) {
        const auto results = script.call(2, buffer, "GetTimeAndValue", arguments...);
        return std::pair(realOf(results[0].get()), realOf(results[1].get()));
    };
    using Step = std::pair<std::vector<double>, std::vector<double>>;
    EXPECT_EQ(read(), Step({1, 2, 3}, {10, 11, 20, 21, 30, 31}));
    EXPECT_EQ(read(2), Step({7}, {70}));
    EXPECT_EQ(read(1.5, 2.5, false), Step({2}, {20, 21}));
    EXPECT_EQ(read(1, 1.5, 2.5, 3.0).first, (std::vector{1.0, 2.0, 3.0})) << "anything but 0 widens";

    script.call(0, buffer, "ClearBackTo", 2.0);
    EXPECT_EQ(read().first, (std::vector{1.0, 2.0}));
    script.set(buffer, "MaxNumTimeSteps", 1);
    EXPECT_EQ(read().first, std::vector{2.0});
    EXPECT_TRUE(script.flag(buffer, "IsFull"));
    script.call(0, buffer, "Clear");
    EXPECT_EQ(script.call(1, buffer, "GetTimeAndValue").size(), 1U);
    EXPECT_EQ(script.numbers(buffer, "GetLastTime"), std::vector{-kInfinity});
}

TEST(HostScenarioTest, ARisingEdgeOpensAWindowAndOnlyThenAnother)
{
    Script script;
    const HostObjectRef buffer = script.make("tracery.TimeBuffer", 100);
    const HostObjectRef trigger = script.make("tracery.TimeDomainTriggerController");
    EXPECT_EQ(script.host.takeConsoleText(), "");
    const HostObjectRef chatty = script.make("tracery.TimeDomainTriggerController", 1, "two");
    EXPECT_EQ(script.host.takeConsoleText(), "Error out here - too many inputs");

    script.set(trigger, "Mode", "nORMAL");
    script.set(trigger, "Polarity", "either");
    script.set(trigger, "AutoLevel", false);
    script.set(trigger, "Level", 0.25);
    script.set(trigger, "Position", 0.0);
    EXPECT_EQ(script.text(trigger, "Mode"), "Normal");
    EXPECT_EQ(script.text(trigger, "Polarity"), "Either");
    EXPECT_EQ(script.number(trigger, "SourcePort"), 1);

    script.call(0, buffer, "addTimeAndValue", std::vector{0.0, 1.0, 2.0, 3.0}, matrix(1, 4, {0, 0, 1, 1}));
    const auto window = [&](int port, int channel) {
        const auto edges =
            script.call(2, trigger, "getTriggerWindow", buffer, false, 0.0, port, channel, 0.0, 3.0, 1.0, false);
        return std::pair(realOf(edges[0].get())[0], realOf(edges[1].get())[0]);
    };
    EXPECT_EQ(window(1, 1), std::pair(1.25, 2.25));
    EXPECT_EQ(window(0, 0), std::pair(-kInfinity, -kInfinity)) << "0 is the controller's own source, seen already";
    const auto last = script.call(2, trigger, "getLastTriggerWindow");
    EXPECT_EQ(realOf(last[1].get())[0], 2.25);
    script.call(0, trigger, "reset");
    EXPECT_EQ(realOf(script.call(2, trigger, "getLastTriggerWindow")[0].get())[0], -kInfinity);
    EXPECT_EQ(failure([&] { window(2, 1); }), "InvalidPortID");
    EXPECT_EQ(failure([&] { window(1, 2); }), "InvalidChannelID");
    EXPECT_EQ(failure([&] { script.set(trigger, "SourcePort", 0); }), "InvalidPortID");
}

TEST(HostScenarioTest, ASpectrumBufferHandsOutSegmentsAndStatistics)
{
    Script script;
    const HostObjectRef buffer = script.make("tracery.SpectrumBuffer", 4, 50, false, 1);
    EXPECT_EQ(script.text(buffer, "Complexity"), "Real");
    EXPECT_EQ(script.numbers(buffer, "getSegments"), std::vector<double>());
    script.call(0, buffer, "setReduceUpdates", false);
    script.set(buffer, "SegmentsPerBlock", 2);
    script.call(0, buffer, "addTime", 3.0, 1);
    script.call(0, buffer, "addValue", matrix(5, 1, {1, 2, 3, 4, 5}), 1);
    EXPECT_EQ(script.numbers(buffer, "getNumProcessedSamples"), std::vector{5.0});
    EXPECT_EQ(script.numbers(buffer, "getNumUnprocessedSamples"), std::vector{1.0});
    EXPECT_EQ(script.numbers(buffer, "getLastTime"), std::vector{3.0});
    EXPECT_TRUE(*getLogicals(script.call(1, buffer, "IsReady")[0].get()) != 0);
    const std::vector<double> segments{0, 0, 1, 2, 1, 2, 3, 4};
    EXPECT_EQ(script.numbers(buffer, "getSegments"), segments);
    const auto handedOut = script.call(2, buffer, "getTimeAndValue", 0, 0, 0, 0);
    EXPECT_TRUE(isEmpty(handedOut[0].get()));
    EXPECT_EQ(realOf(handedOut[1].get()), segments);
    script.call(0, buffer, "addValue", matrix(3, 1, {6, 7, 8}), 1);
    EXPECT_EQ(script.numbers(buffer, "getSegments"), (std::vector<double>{3, 4, 5, 6, 5, 6, 7, 8}));
    script.call(0, buffer, "clear");
    EXPECT_EQ(script.numbers(buffer, "getLastFrameSize"), std::vector{0.0});
    script.set(buffer, "NPorts", 7);
    EXPECT_EQ(script.number(buffer, "NPorts"), 1);

    const auto statistics = script.call(4, buffer, "updateCCDF", matrix(4, 1, {1, 1, 1, 10}), 30.5, 0.5);
    EXPECT_EQ(realOf(statistics[0].get()), std::vector{10.0});
    EXPECT_EQ(realOf(statistics[1].get()), std::vector{3.25});
    EXPECT_EQ(realOf(statistics[2].get()), std::vector{4.0});
    EXPECT_EQ(getDimensions(getCell(statistics[3].get(), 0))[1], 2U);
    const HostArrayPtr histogram = script.host.get(buffer, "CCDFHistogram");
    EXPECT_EQ(getNumberOfElements(histogram.get()), 30U) << "bins are truncated";
    for (const double bins : {0.9, -3.0, getNaN(), getInf()})
        EXPECT_EQ(failure([&] { script.call(4, buffer, "updateCCDF", 1.0, bins, 0.5); }), "InvalidArgumentType");
    EXPECT_EQ(failure([&] { script.call(4, buffer, "updateCCDF", 1.0, 31, 0.5); }), "InvalidSubscript");

    const HostObjectRef other = script.make("tracery.SpectrumBuffer", 8, 25, true, 2);
    EXPECT_EQ(script.number(other, "SegmentLength"), 8);
    EXPECT_EQ(script.number(other, "OverlapPercent"), 25);
    EXPECT_EQ(script.number(other, "NumChannels"), 2);
    EXPECT_EQ(script.text(other, "Complexity"), "Complex");
    EXPECT_EQ(failure([&] { script.call(0, other, "addValue", 1.0, 1); }), "InvalidSubscript") << "one channel of two";
}

TEST(HostScenarioTest, ALineIsThinnedAndKnowsItsAnimator)
{
    Script script;
    const HostObjectRef animated = script.make("veltra.graphics.animation.ScopeLineAnimator");
    const HostObjectRef line = script.make("tracery.TimeScopeLine", animated);
    script.set(line, "DisplayID", 2);
    script.set(line, "ShouldThinData", true);
    EXPECT_EQ(script.number(line, "DisplayID"), 2);
    EXPECT_TRUE(script.flag(line, "ShouldThinData"));
    const auto sla = script.call(1, line, "getSLA");
    EXPECT_EQ(hostobj::omGetArrayElement(sla[0].get(), 0), animated);
    // One column from 0 to 0.4 with a peak at 0.2; the next opens at 0.5.
    const std::vector<double> points{0, 1, 0.1, -3, 0.2, 9, 0.3, 2, 0.5, 1};
    EXPECT_EQ(script.numbers(line, "getThinData", matrix(2, 5, points), 5, 1.0),
              (std::vector<double>{0, 1, 0.1, -3, 0.2, 9, 0.5, 1}));
    EXPECT_EQ(script.call(1, script.make("tracery.TimeScopeLine"), "getSLA").at(0), nullptr);
}

TEST(HostScenarioTest, ADisplayScrollsAndWraps)
{
    Script script;
    const std::string base = "veltrashared.scopes.visual.AbstractTimeDomainPlotter";
    const HostObjectRef display = script.make(script.subclass(base, {"resetLines"}).c_str());
    EXPECT_EQ(script.object(display, "TimeOverrunModeController"), nullptr);
    script.set(display, "TimeSpan", 10);
    script.set(display, "TimeSpan", 10);
    script.set(display, "OriginTime", 0);
    script.set(display, "EndTime", 20);
    script.set(display, "PlotMagPhase", true);
    script.set(display, "SettingProperties", true);
    script.set(display, "PlotMagPhase", false);
    EXPECT_EQ(script.calls, (std::vector<std::string>{"resetLines"})) << "a span of 10 is no change";
    script.set(display, "SettingProperties", false);
    script.set(display, "TimeSpan", 8);
    EXPECT_EQ(script.calls.back(), "onNewTimeSpan");
    script.set(display, "TimeSpan", 10);

    script.set(display, "TimeOverrunMode", "WRAP");
    const double handle = script.host.handleOf(script.object(display, "TimeOverrunModeController"));
    const HostObjectRef controller = script.object(display, "TimeOverrunModeController");
    EXPECT_EQ(script.host.handleOf(controller), handle) << "one object a controller, kept by the display";
    EXPECT_EQ(script.object(controller, "Plotter"), display);
    EXPECT_EQ(script.numbers(controller, "calculateStartTime"), std::vector{10.0}) << "the boundary is the old sweep's";
    script.set(display, "TimeWrap", 4);
    EXPECT_EQ(script.numbers(controller, "calculateStartTime"), std::vector{20.0});
    EXPECT_EQ(script.numbers(controller, "calculateAsynchronousEndTime", 20), std::vector{16.0});
    EXPECT_EQ(failure([&] { script.call(0, controller, "enable"); }), "MissingMethod") << "named only";

    script.set(display, "TimeOverrunMode", "Scroll");
    EXPECT_EQ(script.numbers(script.object(display, "TimeOverrunModeController"), "calculateStartTime"),
              std::vector{10.0});
    const HostObjectRef own = script.make("veltrashared.scopes.visual.ScrollingTimeDomainController", display);
    script.set(display, "TimeOverrunModeController", own);
    EXPECT_EQ(script.object(display, "TimeOverrunModeController"), own);
    script.host.deleteObject(display);
    EXPECT_EQ(failure([&] { script.numbers(own, "calculateStartTime"); }), "NoPlotter");
    EXPECT_EQ(script.object(own, "Plotter"), nullptr);
    EXPECT_EQ(failure([&] { script.number(display, "TimeSpan"); }), "InvalidObject") << "deleted";
}

TEST(HostScenarioTest, AControllerStaysTheObjectThatTheDisplayWasGiven)
{
    Script script;
    const std::string wrapping = "veltrashared.scopes.visual.WrappingTimeDomainController";
    const HostObjectRef display =
        script.make(script.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter").c_str());
    script.host.defineClass({.name = "demo.Controller", .superclass = wrapping});
    script.set(display, "TimeOverrunModeController", script.make("demo.Controller"));
    const auto controller = [&] { return script.object(display, "TimeOverrunModeController"); };
    EXPECT_STREQ(controller()->className(), "demo.Controller");
    EXPECT_EQ(script.object(controller(), "Plotter"), display);

    // A start makes the next asynchronous update a partial one, which is drawn to its own time.
    const auto update = [&](double time) {
        return script.numbers(controller(), "calculateAsynchronousEndTime", time)[0];
    };
    const HostObjectRef starters[] = {display, controller()};
    for (const HostObjectRef& starter : starters) {
        EXPECT_EQ(update(100), 90);
        EXPECT_EQ(update(200), 190);
        script.call(0, starter, "start");
        EXPECT_EQ(update(201), 201);
        EXPECT_EQ(update(300), 290);
    }
    script.call(0, display, "stop");

    script.host.deleteObject(controller());
    EXPECT_EQ(controller()->className(), wrapping) << "a new object around the controller, which lives on";
    EXPECT_EQ(update(301), 291);
    script.set(controller(), "Plotter", std::vector<double>{});
    EXPECT_EQ(script.object(controller(), "Plotter"), nullptr) << "reading binds nothing";
    script.set(display, "TimeOverrunModeController", HostArrayPtr());
    EXPECT_EQ(controller(), nullptr);
}

TEST(HostScenarioTest, SettingADisplayCallsTheMethodsOfItsSubclass)
{
    Script script;
    const std::string base = "veltrashared.scopes.visual.AbstractTimeDomainPlotter";
    const HostObjectRef display = script.make(script.subclass(base, Script::Supplying::all).c_str());
    using Calls = std::vector<std::string>;
    struct Case {
        const char* property;
        HostArrayPtr value;
        Calls expected;
    };
    const Case cases[] = {
        {"StartTime", Script::value(1), {"startTimeSetFcnUpdateLines", "updateTimeOffsetReadout"}},
        {"StartTime", Script::value(1), {}},
        {"SampleTimes", Script::value(2), {"reactToSampleTimes"}},
        {"TimeSpan", Script::value(3), {"onNewTimeSpan"}},
        {"TimeDisplayOffset", Script::value(4), {"updateTimeOffsetReadout"}},
        {"PlotMagPhase", Script::value(true), {"onSetPlotMagPhase", "resetLines"}},
        {"IsComplex", Script::value(true), {"resetLines", "updateLineProperties"}},
        {"EndTime", Script::value(5), {}},
        {"Lines", Script::value(6), {"onNewLines", "updateChannelNumbers"}},
        {"Lines", HostArrayPtr(), {}},
        {"XGrid", Script::value(true), {"setXGrid"}},
        {"YGrid", Script::value(true), {"setYGrid"}},
        {"AxesColor", Script::value(7), {"setAxesColor", "onNewAxesColor"}},
        {"AxesTickColor", Script::value(8), {"setAxesTickColor", "onNewAxesTickColor"}},
    };
    for (const auto& [property, value, expected] : cases) {
        script.calls.clear();
        script.host.set(display, property, value.get());
        EXPECT_EQ(script.calls, expected) << property;
    }
    script.calls.clear();
    script.host.get(display, "XGrid");
    script.call(0, display, "setStartTime", 9);
    EXPECT_EQ(script.calls, Calls{"getXGrid"});
    EXPECT_EQ(script.number(display, "StartTime"), 9);
}

TEST(HostScenarioTest, WhatReactsToAChangeComesAfterIt)
{
    Script script;
    const HostObjectRef display = script.make(
        script.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter", Script::Supplying::all).c_str());
    script.whenCalled = [] { throw std::bad_alloc(); };
    for (const char* property : {"StartTime", "SampleTimes", "TimeSpan", "TimeDisplayOffset"}) {
        EXPECT_EQ(failure([&] { script.set(display, property, 3); }), "OutOfMemory");
        EXPECT_EQ(script.number(display, property), 3);
    }
}

TEST(HostScenarioTest, EveryPropertyKeepsAValueOfItsOwn)
{
    Script script;
    const std::vector<embedded::ClassListing> classes = script.host.listClasses();
    const std::string display = script.subclass("veltrashared.scopes.visual.AbstractTimeDomainPlotter");
    std::size_t checked = 0;
    for (const bool odd : {false, true})
        for (const embedded::ClassListing& listing : classes) {
            const HostObjectRef object = script.makeAny(listing.isAbstract ? display : listing.name);
            std::vector<std::pair<std::string, HostArrayPtr>> values;
            for (const embedded::PropertyListing& property : listing.properties) {
                const double next = 2.0 + static_cast<double>(values.size());
                if (property.setAccess != hostobj::Access::public_ || property.type == "any" ||
                    (property.name == "MaxNumTimeSteps" && property.type == "double vector") ||
                    property.name == "NPorts")
                    continue;
                if (property.type == "double scalar" || property.type == "uint32 scalar")
                    values.emplace_back(property.name, Script::value(next));
                else if (property.type == "double vector")
                    values.emplace_back(property.name, row({next, 0.5, 7, -1}));
                else if (property.type == "logical scalar")
                    values.emplace_back(property.name, Script::value((values.size() % 2 != 0) == odd));
            }
            for (const auto& [name, value] : values)
                script.host.set(object, name, value.get());
            for (const auto& [name, value] : values) {
                const HostArrayPtr read = script.host.get(object, name);
                EXPECT_EQ(realOf(read.get()), realOf(value.get())) << listing.name << ' ' << name;
                if (getLogicals(value.get()) != nullptr) {
                    EXPECT_EQ(*getLogicals(read.get()), *getLogicals(value.get())) << listing.name << ' ' << name;
                }
                ++checked;
            }
        }
    EXPECT_GT(checked, 70U);
}

TEST(HostScenarioTest, ADisplayIsASubclassThatKeepsLinesAndShapes)
{
    Script script;
    const std::string base = "veltrashared.scopes.visual.AbstractTimeDomainPlotter";
    EXPECT_EQ(failure([&] { script.make(base.c_str()); }), "AbstractClass");
    script.host.defineClass({.name = "demo.Unfinished", .superclass = base});
    EXPECT_EQ(failure([&] { script.make("demo.Unfinished"); }), "MissingMethod");
    const HostObjectRef display = script.make(script.subclass(base, {"updateChannelNumbers"}).c_str());
    EXPECT_EQ(script.numbers(display, "getNumLines"), std::vector{0.0});
    script.set(display, "Lines", script.make("tracery.TimeScopeLine"));
    EXPECT_EQ(script.numbers(display, "getNumLines"), std::vector{1.0});
    EXPECT_STREQ(getObjectClassName(script.call(1, display, "getAllLines")[0].get()), "tracery.TimeScopeLine");

    EXPECT_EQ(realOf(script.host.get(display, "MaxDimensions").get()), (std::vector{0.0, 0.0}));
    script.set(display, "MaxDimensions", matrix(2, 2, {4, 1, 1, 1}));
    script.set(display, "LengthOfChannels", std::vector{4.0, 1.0});
    script.set(display, "SampleTimes", std::vector{1.0, 0.1});
    script.set(display, "SampleTimes", std::vector<double>{});
    EXPECT_EQ(realOf(script.host.get(display, "TimeStepWidth").get()), (std::vector{0.75, 0.0}));
    script.set(display, "YExtents", std::vector{1.0, 2.0, 3.0, 4.0});
    script.call(0, display, "resetYExtents");
    EXPECT_TRUE(std::isnan(script.number(display, "YExtents")));
    EXPECT_EQ(failure([&] { script.set(display, "YGrid", true); }), "AbstractMethod");
}

TEST(HostScenarioTest, ATimerTellsThatItsTimeIsUp)
{
    Script script;
    const HostObjectRef timer = script.make("tracery.OneShotTimer");
    script.set(timer, "TimeoutDuration", -1);
    EXPECT_EQ(script.number(timer, "TimeoutDuration"), 0);
    script.set(timer, "TimeoutDuration", 3600);
    EXPECT_EQ(script.number(timer, "TimeoutDuration"), 3600);
    EXPECT_TRUE(script.flag(timer, "isTimeUp")) << "setting the timeout stops the timer";
    EXPECT_EQ(script.number(timer, "Counter"), 1);
}

} // namespace
