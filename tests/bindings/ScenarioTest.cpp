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

TEST(HostScenarioTest, ADisplayKeepsLinesAndShapesAndCallsItsSubclass)
{
    Script script;
    const std::string base = "veltrashared.scopes.visual.AbstractTimeDomainPlotter";
    EXPECT_EQ(failure([&] { script.make(base.c_str()); }), "AbstractClass");
    script.host.defineClass({.name = "demo.Unfinished", .superclass = base});
    EXPECT_EQ(failure([&] { script.make("demo.Unfinished"); }), "MissingMethod");
    const HostObjectRef display = script.make(script.subclass(base, {"updateChannelNumbers", "setXGrid"}).c_str());
    EXPECT_EQ(script.numbers(display, "getNumLines"), std::vector{0.0});
    script.set(display, "Lines", script.make("tracery.TimeScopeLine"));
    EXPECT_EQ(script.numbers(display, "getNumLines"), std::vector{1.0});
    EXPECT_EQ(script.calls, (std::vector<std::string>{"onNewLines", "updateChannelNumbers"}));
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
    EXPECT_EQ(script.host.get(display, "XGrid"), nullptr);
    script.set(display, "XGrid", true);
    EXPECT_EQ(script.calls.back(), "setXGrid");
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
