#include "trigger/TriggerFixtures.h"

#include <gtest/gtest.h>

using namespace tracery;
using naive::Settings;
using naive::Signal;

namespace {

using Events = std::vector<double>;

/// One value a second, from 0 s.
Signal everySecond(std::initializer_list<double> values)
{
    Signal signal;
    for (const double value : values)
        signal.push_back({static_cast<double>(signal.size()), value});
    return signal;
}

template <class Detector>
Events eventsOf(Detector& detector, const Signal& signal, const double* extrema = nullptr)
{
    EventQueue queue;
    feed(detector, signal, 0, signal.size(), queue, extrema);
    return {queue.begin(), queue.end()};
}

template <class Detector>
Events events(const Settings& settings, std::initializer_list<double> values)
{
    auto detector = make<Detector>(settings);
    return eventsOf(detector, everySecond(values));
}

/// The formula of a crossing, for expectations that are not round numbers.
double crossing(double ta, double xa, double tb, double xb, double level)
{
    return (tb - ta) / (xb - xa) * (level - xa) + ta;
}

using Edge = EdgeTimeDomainTrigger;
using Timeout = TimeoutTimeDomainTrigger;
using PulseWidth = PulseWidthTimeDomainTrigger;
using Runt = RuntTimeDomainTrigger;
using Transition = TransitionTimeDomainTrigger;
using Window = WindowTimeDomainTrigger;

// One known signal a type; the rules beside which TriggerPropertyTest runs the detectors say the rest.
TEST(TriggerExampleTest, EachTypeFindsItsEvents)
{
    EXPECT_EQ(events<Edge>({.hysteresis = 0.5}, {-1, 1, -0.5, 1, -0.4, 1}), Events{0.5});
    EXPECT_EQ(events<Edge>({.holdoff = 4}, {-1, 1, -1, 1, -1, 1, -1, 1, -1, 1}), (Events{0.5, 4.5, 8.5}));
    EXPECT_EQ(events<Timeout>({.timeout = 1.5}, {-1, -1, -1, 1, -1, -1, -1}), (Events{2, 5}));
    EXPECT_EQ(events<PulseWidth>({}, {0, 3, 3, 0}), Events{crossing(2, 3, 3, 0, 0.2)});
    EXPECT_EQ(events<Runt>({}, {0, 1, 0}), Events{crossing(1, 1, 2, 0, 0.2)});
    EXPECT_EQ(events<Transition>({}, {0, 3}), Events{crossing(0, 0, 1, 3, 2.1)});
    EXPECT_EQ(events<Window>({.polarity = 0}, {3, 1, 1, 3, 1}),
              (Events{crossing(2, 1, 3, 3, 2.1), crossing(3, 3, 4, 1, 2.1)}));
}

TEST(EdgeTriggerTest, ACrossingAtNoFiniteTimeLeavesLaterOnesAlone)
{
    // Auto level drops below a level line.
    auto automatic = make<Edge>({.autoLevel = true});
    const double high[] = {2, 2}, low[] = {0, 0};
    EXPECT_EQ(eventsOf(automatic, everySecond({1}), high), Events{});
    EXPECT_EQ(eventsOf(automatic, everySecond({1, 1, -1, 1}), low), Events{2.5});
}

TEST(TriggerBaseTest, ResetForgetsTheChoiceOfPartInEdgeAndTimeoutOnlyOnPurpose)
{
    const std::complex<double> samples[] = {{0, 0}, {0, 0}, {1, 2}, {1, 1}};
    const auto timeAfterReset = [&](auto detector) {
        detector.shouldProcessImagPart(true);
        detector.reset();
        return detector.interpTime(samples, 1, 1);
    };
    EXPECT_EQ(timeAfterReset(make<Edge>({})) + timeAfterReset(make<Timeout>({})), 1 + 1);
    EXPECT_EQ(timeAfterReset(make<PulseWidth>({})) + timeAfterReset(make<Runt>({})), 2 + 2);
    EXPECT_EQ(timeAfterReset(make<Transition>({})) + timeAfterReset(make<Window>({})), 2 + 2);
}

TEST(TriggerBaseTest, InterpolationReachesBackToTheCachedSample)
{
    const auto check = []<class Element>(Element) {
        auto detector = make<Edge>({});
        const Element before[] = {0., 7., 1., -1., 2., -3.}, now[] = {3., 1.};
        EXPECT_EQ(detector.interpTime(before, 1, 5), 0.25);
        EXPECT_TRUE(std::isnan(detector.interpTime(now, 0, 0)));
        detector.cacheLastSample(before, 2);
        detector.cacheLastSample(before + 2, 0);
        EXPECT_EQ(detector.interpTime(now, 0, 0), 2.0);
        detector.resetEvents();
        EXPECT_TRUE(std::isnan(detector.interpTime(now, 0, 0)));
    };
    check(double{});
    check(std::complex<double>{});
}

} // namespace
