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

TEST(TriggerBaseTest, AutoLevelFollowsTheWindowButNotOnAnEmptyBlock)
{
    // Extremes at which other orders of operations round otherwise.
    const double extrema[] = {0.1, 0.7}, others[] = {1e308, 1.5e308};
    auto edge = make<Edge>({.autoLevel = true, .level = 7});
    EventQueue queue;
    edge.updateEventQueue(static_cast<const double*>(nullptr), 0, extrema, 0, queue);
    EXPECT_EQ(edge.getLevel(), 7.0);
    eventsOf(edge, everySecond({0}), others);
    EXPECT_EQ(edge.getLevel(), INFINITY);
    eventsOf(edge, everySecond({0}), extrema);
    edge.updateEventQueue(static_cast<const std::complex<double>*>(nullptr), 0, others, 0, queue);
    EXPECT_EQ(edge.getLevel(), (0.1 + 0.7) * 0.5);

    const auto expectTwo = [&]<class Detector>(Detector detector) {
        eventsOf(detector, everySecond({0}), extrema);
        EXPECT_EQ(detector.getLowerLevel(), 0.1 + (0.7 - 0.1) * 0.1);
        EXPECT_EQ(detector.getUpperLevel(), 0.1 + (0.7 - 0.1) * 0.9);
    };
    const Settings automatic{.autoLevel = true};
    expectTwo(make<PulseWidth>(automatic)), expectTwo(make<Runt>(automatic));
    expectTwo(make<Transition>(automatic)), expectTwo(make<Window>(automatic));

    auto timeout = make<Timeout>({.level = 7});
    timeout.setAutoLevel(true);
    eventsOf(timeout, everySecond({0}), extrema);
    EXPECT_EQ(timeout.getLevel(), 7.0) << "the timeout detector has no auto level";
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
