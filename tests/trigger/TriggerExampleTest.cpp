#include "trigger/TriggerFixtures.h"

#include <gtest/gtest.h>

using namespace tracery;
using naive::Settings;
using naive::Signal;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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

TEST(EdgeTriggerTest, CrossesAtTheLevelAndRearmsBelowTheHysteresis)
{
    const Settings settings{.hysteresis = 0.5};
    EXPECT_EQ(events<Edge>(settings, {-1, 0.2, 0.4, 0.6}), Events{1 / 1.2});
    EXPECT_EQ(events<Edge>(settings, {-1, 1, -0.5, 1, -0.4, 1}), Events{0.5}) << "on the arming level is not below it";
    EXPECT_EQ(events<Edge>({}, {-1, 0, 0, 1}), Events{2}) << "a sample on the level neither arms nor crosses";
}

TEST(EdgeTriggerTest, EitherPolarityReportsEveryEdgeOfASquareWave)
{
    EXPECT_EQ(events<Edge>({.polarity = 0, .hysteresis = 0.5}, {-1, -1, 1, 1, -1, 1}), (Events{1.5, 3.5, 4.5}));
}

TEST(EdgeTriggerTest, HoldoffCountsFromTheLastAcceptedEvent)
{
    auto detector = make<Edge>({.holdoff = 4});
    const Events found = eventsOf(detector, everySecond({-1, 1, -1, 1, -1, 1, -1, kNaN, -1, 1}));
    EXPECT_EQ(found, (Events{0.5, 4.5, 8.5})) << "2.5 is refused and does not extend the holdoff";
    EXPECT_EQ(detector.getNumAcceptedEvents(), 3U);
    EXPECT_EQ(detector.getNumHoldoffRefusals(), 1U);
}

TEST(EdgeTriggerTest, EventsAtTimesThatAreNotFiniteAreRefusedAndDisarm)
{
    auto detector = make<Edge>({});
    EXPECT_EQ(eventsOf(detector, everySecond({-1, kNaN, 1, 2})), Events{});
    EXPECT_EQ(detector.getNumHoldoffRefusals(), 0U);

    // Auto level drops below a level line: the crossing has no finite time, and later ones must not suffer from it.
    auto automatic = make<Edge>({.autoLevel = true});
    const double high[] = {2, 2}, low[] = {0, 0};
    EXPECT_EQ(eventsOf(automatic, everySecond({1}), high), Events{});
    EXPECT_EQ(eventsOf(automatic, everySecond({1, 1, -1, 1}), low), Events{2.5});
}

TEST(TimeoutTriggerTest, OneEventAStretchWithoutCrossingsAtTheSampleThatShowsIt)
{
    EXPECT_EQ(events<Timeout>({.timeout = 1.5}, {-1, -1, -1, -1, -1, -1}), Events{2});
    EXPECT_EQ(events<Timeout>({.timeout = 2}, {-1, -1, -1, -1, -1, -1}), Events{3}) << "longer than, not as long as";
    EXPECT_EQ(events<Timeout>({.timeout = 2}, {-1, 3, 3, 3, 3, 3}), Events{3}) << "the crossing was at 0.25";
    EXPECT_EQ(events<Timeout>({.timeout = 1.5}, {-1, -1, -1, 1, -1, -1, -1}), (Events{2, 5}));
}

TEST(TimeoutTriggerTest, ARefusedTimeoutWaitsForACrossingToo)
{
    EXPECT_EQ(events<Timeout>({.timeout = 1.5, .holdoff = 4}, {-1, -1, -1, 1, -1, -1, -1, -1, -1}), Events{2});
}

TEST(PulseWidthTriggerTest, ReportsWherePulsesOfTheRightWidthFallThroughTheLowerLevel)
{
    const double middle = (2.1 + 0.2) / 2;
    const double width = crossing(2, 3, 3, 0, middle) - crossing(0, 0, 1, 3, middle);
    const auto found = [&](double minTime, double maxTime) {
        return events<PulseWidth>({.minTime = minTime, .maxTime = maxTime}, {0, 3, 3, 0}).size();
    };
    EXPECT_EQ(events<PulseWidth>({}, {0, 3, 3, 0}), Events{crossing(2, 3, 3, 0, 0.2)});
    EXPECT_EQ(found(width, width), 1U) << "both bounds are inclusive";
    EXPECT_EQ(found(std::nextafter(width, kInf), kInf), 0U);
    EXPECT_EQ(found(0, std::nextafter(width, 0)), 0U);
    EXPECT_EQ(events<PulseWidth>({}, {0, 2, 0}), Events{}) << "it never exceeds the upper level";
    EXPECT_EQ(events<PulseWidth>({}, {0, 2.1, 0}), Events{}) << "reaching the upper level is not enough";
    EXPECT_EQ(events<PulseWidth>({.polarity = -1}, {3, 0, 0, 3}), Events{crossing(2, 0, 3, 3, 2.1)});
}

TEST(RuntTriggerTest, ReportsPulsesThatFailToReachTheOtherLevel)
{
    EXPECT_EQ(events<Runt>({}, {0, 1, 0}), Events{crossing(1, 1, 2, 0, 0.2)});
    EXPECT_EQ(events<Runt>({}, {0, 1, 2.1, 1, 0}), Events{}) << "it reached the upper level";
    EXPECT_EQ(events<Runt>({.polarity = -1}, {3, 1, 3}), Events{crossing(1, 1, 2, 3, 2.1)});
    EXPECT_EQ(events<Runt>({.polarity = 0}, {0, 1, 0, 3, 1, 3}).size(), 2U);
    EXPECT_EQ(events<Runt>({.minTime = 1.7}, {0, 1, 0}), Events{}) << "0.2 s to 1.8 s";
    EXPECT_EQ(events<Runt>({}, {1, 0}), Events{}) << "it is not known where this one came from";
}

TEST(TransitionTriggerTest, ReportsWhenTheFarLevelIsReached)
{
    EXPECT_EQ(events<Transition>({}, {0, 3}), Events{crossing(0, 0, 1, 3, 2.1)});
    EXPECT_EQ(events<Transition>({}, {0, 2.1}), Events{1}) << "reaching the level is enough";
    EXPECT_EQ(events<Transition>({.polarity = -1}, {3, 1, 0, 3}), Events{crossing(1, 1, 2, 0, 0.2)});
    EXPECT_EQ(events<Transition>({}, {0, 1, 0, 0}), Events{}) << "it turned back";
    EXPECT_EQ(events<Transition>({.maxTime = 1}, {0, 1, 1, 3}), Events{}) << "too slow";
}

TEST(WindowTriggerTest, PositiveReportsStaysInsideNegativeExcursionsOutsideAndEitherBoth)
{
    const double back = crossing(2, 1, 3, 3, 2.1), stay = back - crossing(0, 3, 1, 1, 2.1);
    EXPECT_EQ(events<Window>({}, {3, 1, 1, 3}), Events{back});
    EXPECT_EQ(events<Window>({.minTime = stay, .maxTime = stay}, {3, 1, 1, 3}), Events{back});
    EXPECT_EQ(events<Window>({.polarity = -1}, {1, 3, 1}), Events{crossing(1, 3, 2, 1, 2.1)});
    EXPECT_EQ(events<Window>({.polarity = 0}, {3, 1, 1, 3, 1}), (Events{back, crossing(3, 3, 4, 1, 2.1)}));
}

TEST(WindowTriggerTest, AnExcursionOfNegativePolarityNeedsMoreThanReachingTheLevelOnPurpose)
{
    EXPECT_EQ(events<Window>({.polarity = -1}, {1, 2.1, 1}), Events{});
    EXPECT_EQ(events<Window>({.polarity = 0, .maxTime = 0}, {0.5, 2.1, 1}), Events{1}) << "reached and left at 1 s";
}

TEST(WindowTriggerTest, AStayWithoutACrossingStartsAtTheSampleValueOnPurpose)
{
    const Signal signal{{100, 1}, {101, 1}, {102, 2.1}};
    auto exact = make<Window>({.minTime = 101, .maxTime = 101});
    EXPECT_EQ(eventsOf(exact, signal), Events{102}) << "102 s less the value 1";
    auto shorter = make<Window>({.maxTime = 100});
    EXPECT_EQ(eventsOf(shorter, signal), Events{});
    EXPECT_EQ(shorter.getNumOutOfTimeBounds(), 1U);
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

    const auto followsTwo = [&]<class Detector>(Detector detector) {
        eventsOf(detector, everySecond({0}), extrema);
        return detector.getLowerLevel() == 0.1 + (0.7 - 0.1) * 0.1 &&
               detector.getUpperLevel() == 0.1 + (0.7 - 0.1) * 0.9;
    };
    const Settings automatic{.autoLevel = true};
    EXPECT_TRUE(followsTwo(make<PulseWidth>(automatic)));
    EXPECT_TRUE(followsTwo(make<Runt>(automatic)));
    EXPECT_TRUE(followsTwo(make<Transition>(automatic)));
    EXPECT_TRUE(followsTwo(make<Window>(automatic)));

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
